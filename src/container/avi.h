// Audio Video Interleave: Microsoft's AVI RIFF file and its OpenDML extensions (OpenDML AVI File
// Format Extensions 1.02).
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes an open AVI file. Returns 0, or 1 when nothing can be read.
int AnalyzeAviFile(FileRecord* file, const Output& out);

} // namespace zat
