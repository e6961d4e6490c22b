#include "common/record/frame_timing.h"

#include <algorithm>
#include <cmath>

namespace zat {

namespace {

constexpr double snap_tolerance = 0.005;

constexpr RateRatio usual_rates[] = {{8, 1}, {10, 1}, {12, 1}, {25, 2}, {15000, 1001}, {15, 1},
    {20, 1}, {24000, 1001}, {24, 1}, {25, 1}, {30000, 1001}, {30, 1}, {48000, 1001}, {48, 1},
    {50, 1}, {60000, 1001}, {60, 1}, {72, 1}, {90, 1}, {100, 1}, {120000, 1001}, {120, 1}};

double value_of(RateRatio ratio) {
    return static_cast<double>(ratio.numerator) / ratio.denominator;
}

// Steps between neighbours.
struct Steps {
    uint32_t count = 0;
    int64_t values[FrameTimes::most];
};

// Sorts the times and leaves out repeated ones.
Steps steps_of(FrameTimes* times) {
    std::sort(times->times, times->times + times->count);
    Steps steps;
    for (uint32_t i = 1; i < times->count; ++i) {
        const int64_t step = times->times[i] - times->times[i - 1];
        if (step > 0) {
            steps.values[steps.count++] = step;
        }
    }
    return steps;
}

int64_t median_of(Steps steps) {
    int64_t* middle = steps.values + steps.count / 2;
    std::nth_element(steps.values, middle, steps.values + steps.count);
    return *middle;
}

// Steps per unit over the longest run without a gap.
double rate_of_longest_run(const Steps& steps, int64_t median) {
    const double gap = 1.5 * static_cast<double>(median);
    uint32_t run = 0;
    double length = 0;
    uint32_t longest = 0;
    double longest_length = 0;
    for (uint32_t i = 0; i < steps.count; ++i) {
        const auto step = static_cast<double>(steps.values[i]);
        run = step > gap ? 0 : run + 1;
        length = step > gap ? 0 : length + step;
        if (run > longest) {
            longest = run;
            longest_length = length;
        }
    }
    return longest != 0 ? longest / longest_length : 0;
}

// Frames per unit of a stream whose times follow no usual rate.
double irregular_rate(const Steps& steps, int64_t median, double unit) {
    const double tolerance = 0.002 / unit;
    double all = 0;
    double near = 0;
    uint32_t near_count = 0;
    for (uint32_t i = 0; i < steps.count; ++i) {
        const auto step = static_cast<double>(steps.values[i]);
        all += step;
        if (std::fabs(step - static_cast<double>(median)) <= tolerance) {
            near += step;
            ++near_count;
        }
    }
    return near_count * 4 >= steps.count * 3 ? near_count / near : steps.count / all;
}

} // namespace

void add_frame_time(FrameTimes* times, int64_t time) {
    if (times->count < FrameTimes::most) {
        times->times[times->count++] = time;
    }
}

RateRatio usual_frame_rate(double rate, double tolerance) {
    const auto* nearest = std::min_element(
        std::begin(usual_rates), std::end(usual_rates), [=](RateRatio a, RateRatio b) {
            return std::fabs(value_of(a) - rate) < std::fabs(value_of(b) - rate);
        });
    const double usual = value_of(*nearest);
    return std::fabs(usual - rate) <= tolerance * usual ? *nearest : RateRatio{};
}

void measure_frame_rate(ZatStream* stream, FrameTimes* times, double unit) {
    const Steps steps = steps_of(times);
    if (steps.count == 0 || !(unit > 0)) {
        return;
    }
    const int64_t median = median_of(steps);
    const RateRatio usual =
        usual_frame_rate(rate_of_longest_run(steps, median) / unit, snap_tolerance);
    if (usual.numerator != 0) {
        set_frame_rate(stream, usual.numerator, usual.denominator);
        return;
    }
    stream->frame_rate = irregular_rate(steps, median, unit) / unit;
    stream->estimated |= ZAT_ESTIMATED_FRAME_RATE;
}

} // namespace zat
