// One video track, described.
#pragma once

#include "container/mp4/codec_text.h"
#include "container/mp4/movie.h"
#include "video/avc_sps.h"

namespace zat::mp4 {

struct VideoDescription {
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

void describe_video(Reader* reader, Track* track, VideoDescription* description);

} // namespace zat::mp4
