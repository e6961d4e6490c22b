// Counting the pictures of a bare video stream.
#pragma once

#include "container/mpeg_ps/source.h"
#include "container/mpeg_ps/stream_table.h"

#include <cstdint>

namespace zat::ps {

struct PictureCount {
    int64_t fields = 0; // as displayed; a frame has two
    GopTime first_group;
    int64_t fields_before_group = 0; // before the first group
    GopTime last_group;
    int64_t fields_behind_group = 0; // from the last group on
};

// Counts what is displayed of the stretch [from, to) of a stream that is described.
void count_pictures(
    Source* source, const Stream& stream, int64_t from, int64_t to, PictureCount* count);

} // namespace zat::ps
