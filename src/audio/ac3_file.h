// Files that hold a bare AC-3 stream.
#pragma once

#include "common/file_access.h"
#include "common/output.h"

namespace zat {

// Describes the first sync frame of the file and computes the play time from its bit rate.
// Returns 0, or 1 when no frame could be described.
int ac3_file(FileRecord* file, const Output& out);

} // namespace zat
