// Files that hold a bare DTS stream, in any packing.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the frame with which the file begins and computes the play time from its bit rate.
// Returns 0, or 1 when there is none.
int dts_file(FileRecord* file, const Output& out);

} // namespace zat
