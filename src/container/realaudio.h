// RealAudio files without RealMedia's chunks: a ".ra" header, then the sound.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the file in one audio line. Returns 0, or 1 when the header is cut off.
int AnalyzeRealAudioFile(FileRecord* file, const Output& out);

} // namespace zat
