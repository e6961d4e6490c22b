// What the first data packets of an ASF file hold: how often, how much and when.
#pragma once

#include "common/record/frame_timing.h"
#include "container/asf/header.h"

#include <cstdint>

namespace zat::asf {

constexpr uint32_t packet_limit = 256; // packets that are read
constexpr uint32_t timed_limit = 4;    // video streams whose frames are timed

struct StreamScan {
    uint64_t objects = 0;
    uint64_t bytes = 0;
    bool has_time = false;
    uint32_t first_time = 0; // milliseconds, the preroll included
    uint32_t last_time = 0;
    Span first_data = {};
};

struct TimedStream {
    uint8_t number = 0;
    FrameTimes times;
};

struct MediaScan {
    bool complete = false; // all packets of the file
    int64_t read = 0;      // packets
    int64_t all = 0;       // packets, as declared or else present
    StreamScan streams[stream_numbers];
    uint32_t timed_count = 0;
    TimedStream timed[timed_limit];
};

// Reads packets of at most `budget` bytes in all. Packets of no fixed size are not read.
void scan_media(Reader* reader, const Header& header, uint32_t budget, MediaScan* scan);

} // namespace zat::asf
