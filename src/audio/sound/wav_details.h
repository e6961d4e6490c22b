// The typed details of a RIFF WAVE file.
#pragma once

#include "audio/sound/wav_chunks.h"
#include "common/record/details.h"

namespace zat {

// Completes the facts of the one stream, which are those of the first frame where the data begin
// with one that has a header, and fills in the file's.
void write_wav_details(
    Reader* reader, const WavChunks& chunks, ZatStream* stream, ZatDetails* details);

} // namespace zat
