// The chunks of a RIFF WAVE file (Multimedia Programming Interface and Data Specifications 1.0),
// and of its forms with sizes of 64 bits: RF64 (EBU Tech 3306), BW64 (ITU-R BS.2088) and Wave64.
#pragma once

#include "audio/sound/chunk_chain.h"
#include "audio/wave_format.h"
#include "common/file/reader.h"

#include <cstdint>

namespace zat {

enum class WaveForm : uint8_t { riff, rf64, bw64, wave64 };

struct WavChunks {
    WaveForm form = WaveForm::riff;
    uint64_t data_size = 0;    // bytes that the last "data" chunk announces
    int64_t data_position = 0; // file position of its first byte
    uint32_t fmt_size = 0;     // bytes that the last "fmt " chunk announces
    WaveFormat format;         // what the last "fmt " chunk holds
    ChunkChain chain;
    // The first bytes of the first "bext" or "fact" chunk that does not begin with a zero byte;
    // without a terminator when all are used.
    char description[256] = {};
    Span info_list;          // chunks of the last INFO list
    Span id3v2;              // the last "id3 " chunk
    uint64_t samples = 0;    // per channel, by the last "fact" chunk
    bool broadcast = false;  // there is a "bext" chunk
    bool beyond_2gb = false; // the file goes on behind what the walk looks at
};

// Walks all chunks, of RIFF up to 2 GB. Returns 0, or 1 when a chunk header is cut off; `chunks`
// holds what was read up to there. Fields that the file does not hold are 0.
int WalkWaveChunks(Reader* reader, WavChunks* chunks);

} // namespace zat
