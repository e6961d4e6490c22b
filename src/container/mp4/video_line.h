// What the line of a video track shows; the typed details have readers of their own.
#pragma once

#include "container/mp4/codec_text.h"
#include "container/mp4/movie.h"
#include "video/avc_sps.h"

namespace zat::mp4 {

struct VideoLine {
    uint16_t width = 0;
    uint16_t height = 0;
    uint16_t depth = 0; // bits
    uint32_t frames = 0;
    uint64_t bytes = 0;
    char codec[codec_text_size] = {};
    bool progressive = false; // by an H.264 sequence parameter set
    // What that set's parse remarked; cleared without one.
    AvcParseState avc_state;
};

void read_video_line(Reader* reader, Track* track, VideoLine* line);

} // namespace zat::mp4
