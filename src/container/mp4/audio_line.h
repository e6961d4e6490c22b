// What the line of an audio track shows. The typed details have readers of their own: lines keep
// older rules, for instance for AAC.
#pragma once

#include "container/mp4/codec_text.h"
#include "container/mp4/movie.h"

namespace zat::mp4 {

struct AudioLine {
    uint32_t sample_rate = 0; // Hz
    uint32_t channels = 0;
    uint32_t sample_size = 0; // bits
    uint64_t bytes = 0;
    uint32_t bitrate = 0; // bit/s that the configuration tells; 0 when the bytes decide
    char codec[codec_text_size] = {};
};

void read_audio_line(Reader* reader, Track* track, AudioLine* line);

} // namespace zat::mp4
