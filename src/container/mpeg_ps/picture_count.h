// Counting the pictures of a bare video stream.
#pragma once

#include "common/frame_timing.h"
#include "container/mpeg_ps/source.h"
#include "container/mpeg_ps/stream_table.h"

#include <cstdint>

namespace zat::ps {

struct PictureCount {
    int64_t fields = 0;         // as displayed; a frame has two
    int64_t coded_fields = 0;   // as stored
    int64_t first_picture = -1; // position; -1 without one
    GopTime first_group;
    int64_t fields_before_group = 0; // before the first group
    GopTime last_group;
    int64_t fields_behind_group = 0; // from the last group on
    // Of MPEG-4, in its ticks.
    FrameTimes times; // of the first pictures
    int64_t first_time = 0;
    int64_t last_time = 0;
};

// Adds what the stretch [from, to) of a stream that is described has. The source is without
// sectors.
void count_pictures(
    Source* source, const Stream& stream, int64_t from, int64_t to, PictureCount* count);

} // namespace zat::ps
