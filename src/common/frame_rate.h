// Frame rates out of time stamps.
#pragma once

#include <cstdint>
#include <span>

namespace zat {

struct MeasuredFrameRate {
    double rate = 0;    // frames per second; 0 when the stamps do not tell
    bool usual = false; // one of the usual rates, not a mean
};

// The rate of frames shown at these times: ascending, `ticks` of them a second. Of the longest run
// without a gap the steps over its span, as the nearest usual rate; where none is near, the mean of
// the steps that are like the median, or of all.
MeasuredFrameRate measure_frame_rate(std::span<const int64_t> stamps, int64_t ticks);

} // namespace zat
