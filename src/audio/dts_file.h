// Files that hold a bare DTS stream, in any packing.
#pragma once

#include "zat/zat.h"

namespace zat {

// Describes the frame with which record->path begins and computes the play time from its bit rate.
// Returns 0, or 1 when there is none.
int dts_file(InfoRecord* record);

} // namespace zat
