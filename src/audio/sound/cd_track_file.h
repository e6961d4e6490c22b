// CD audio tracks as Windows shows them: RIFF files of 44 bytes that say where the track stands on
// its disc.
#pragma once

#include "common/file/file_access.h"
#include "common/record/output.h"

namespace zat {

// Describes the track in one audio line, with the chain of chunks and its place as extra lines.
// Returns 0.
int AnalyzeCdTrackFile(FileRecord* file, const Output& out);

} // namespace zat
