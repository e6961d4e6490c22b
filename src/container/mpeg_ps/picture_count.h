// Counting the pictures of a video stream.
#pragma once

#include "common/record/frame_timing.h"
#include "container/mpeg_ps/source.h"
#include "video/mpeg4_vop.h"
#include "video/mpeg_video_headers.h"

#include <cstddef>
#include <cstdint>

namespace zat::ps {

struct Stream;

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

// A count under way.
struct PictureCounter {
    const Stream* stream = nullptr; // that is described
    void (*count_unit)(PictureCounter*, uint8_t code, Bytes behind) = nullptr;
    Mpeg4Clock clock;
    bool open_picture = false; // one whose coding extension is still to come
    PictureCount count;
};

// What stands behind the bytes of a stream that are looked at.
enum class Follows { more, nothing };

void start_count(PictureCounter* counter, const Stream& stream);

// Adds what a stretch of the elementary stream has, which begins at `position`. Returns how many of
// its bytes were dealt with: codes near its end are left to the stretch that follows, which begins
// with them.
size_t count_stretch(PictureCounter* counter, Bytes bytes, int64_t position, Follows follows);

// What the stretch [from, to) of a bare stream has. The source is without sectors.
PictureCount count_pictures(Source* source, const Stream& stream, int64_t from, int64_t to);

// Sets the frame rate of MPEG-4 whose headers tell none by the times of its pictures, when there
// are two at least. Sorts the times.
void measure_picture_rate(Stream* stream, FrameTimes* times);

} // namespace zat::ps
