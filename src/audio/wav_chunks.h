// The chunks of a RIFF WAVE file (Multimedia Programming Interface and Data Specifications 1.0).
#pragma once

#include "audio/wave_format.h"
#include "common/reader.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t wav_chain_size = 64; // bytes of the chunk chain, terminator included

struct WavChunks {
    uint32_t data_size = 0;    // bytes that the last "data" chunk announces
    int64_t data_position = 0; // file position of its first byte
    uint32_t fmt_size = 0;     // bytes that the last "fmt " chunk announces
    WaveFormat format;         // what the last "fmt " chunk holds
    // The ids in file order: "[fmt ][data]+[LIST(INFOTAG)]". A "+" stands for zero bytes, mostly
    // the pad byte of a chunk of odd size.
    char chain[wav_chain_size] = {};
    // The first bytes of the first "bext" or "fact" chunk that does not begin with a zero byte;
    // without a terminator when all are used.
    char description[256] = {};
    Span info_list;          // chunks of the last INFO list
    Span id3v2;              // the last "id3 " chunk
    uint32_t samples = 0;    // per channel, by the last "fact" chunk
    bool broadcast = false;  // there is a "bext" chunk
    bool beyond_2gb = false; // the file goes on behind what the walk looks at
};

// Walks all chunks up to 2 GB. Returns 0, or 1 when a chunk header is cut off; `chunks` holds what
// was read up to there. Fields that the file does not hold are 0.
int WalkWaveChunks(Reader* reader, WavChunks* chunks);

} // namespace zat
