// Files that hold a bare stream of AC-3, Enhanced AC-3, Dolby TrueHD or MLP.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the stream. Of AC-3 the first sync frame tells all, the play time by its bit rate; the
// other kinds have analysers of their own, which this one calls. Returns 0, or 1 when no frame
// could be described.
int ac3_file(FileRecord* file, const Output& out);

} // namespace zat
