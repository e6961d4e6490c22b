// How the forms of WAVE files head their chunks.
#pragma once

#include "audio/sound/wav_chunks.h"

namespace zat {

struct WaveChunk {
    uint32_t id = 0;   // four characters, the first one in the top byte
    uint64_t size = 0; // of the payload in bytes, as announced; less than 2^49
    Span payload;      // cut at the file's end
};

// What a file's start tells of its chunks.
struct WaveHead {
    WaveForm form = WaveForm::riff;
    int64_t first_chunk = 0; // file position
    int64_t walk_limit = 0;  // no chunk that begins at or behind it is looked at
    int64_t alignment = 1;   // of chunks, in bytes
    Span large_sizes;        // the "ds64" chunk
};

// False when the file is none of them.
bool read_wave_head(Reader* reader, WaveHead* head);

// Reads the header at the start of `space`. False when it is cut off or cannot be one.
bool read_wave_chunk(Reader* reader, const WaveHead& head, Span space, WaveChunk* chunk);

// Samples per channel by a "fact" chunk.
uint64_t read_fact_samples(Reader* reader, const WaveHead& head, Span fact);

} // namespace zat
