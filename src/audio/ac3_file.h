// Files that hold a bare AC-3 stream.
#pragma once

#include "zat/zat.h"

namespace zat {

// Describes the first sync frame of record->path and computes the play time from its bit rate.
// Returns 0, or 1 when no frame could be described.
int ac3_file(InfoRecord* record);

} // namespace zat
