// The frame rate of a stream whose container tells the times of its frames only.
#pragma once

#include "common/record/details.h"

#include <cstdint>
#include <span>

namespace zat {

// Times of a stream's first frames, in any order.
struct FrameTimes {
    static constexpr uint32_t most = 256;

    uint32_t count = 0;
    int64_t times[most];
};

void add_frame_time(FrameTimes* times, int64_t time);

// Sets the frame rate by times in units of `unit` seconds: the steps of the longest stretch without
// a gap, over its length. One that is near a usual rate is that (times may be whole milliseconds);
// any other is marked as estimated. Sorts the times; nothing is set by less than two.
void measure_frame_rate(ZatStream* stream, FrameTimes* times, double unit);

// The ratio that a rate stands for when it is within `tolerance`, relative to it, of one in use;
// otherwise 0 and 0.
struct RateRatio {
    uint32_t numerator = 0;
    uint32_t denominator = 0;
};
RateRatio usual_frame_rate(double rate, double tolerance);

} // namespace zat
