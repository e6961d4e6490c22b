// RIFF files of form "RMP3": an MPEG audio stream in the "data" chunk.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the first frame of the "data" chunk. Always returns 0.
int AnalyzeRmp3File(FileRecord* file, const Output& out);

} // namespace zat
