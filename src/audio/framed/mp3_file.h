// Files that hold a bare MPEG audio stream.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the MPEG audio stream of the file, computes the play time and lists the tags around
// it. Returns 0, or 1 when no stream could be described.
int AnalyzeMp3File(FileRecord* file, const Output& out);

} // namespace zat
