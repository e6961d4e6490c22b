// RIFF WAVE files, with whatever their chunks announce: PCM, compressed audio named through the
// codec catalogue, DTS and MPEG audio streams, Broadcast Wave and lossyWAV; and the forms for more
// than 4 GB, RF64, BW64 and Wave64.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the file in one audio line, with the chain of chunks as an extra line. Returns 0, or 1
// when a DTS stream's header is damaged; the record then holds what was found before.
int AnalyzeWavFile(FileRecord* file, const Output& out);

} // namespace zat
