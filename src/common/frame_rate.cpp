#include "common/frame_rate.h"

#include <algorithm>
#include <cmath>

namespace zat {

namespace {

constexpr double usual_rates[] = {10, 12, 12.5, 15, 24000 / 1001.0, 24, 25, 30000 / 1001.0, 30,
    48000 / 1001.0, 48, 50, 60000 / 1001.0, 60, 100, 120000 / 1001.0, 120};

struct Run {
    size_t first = 0;
    size_t steps = 0;
};

// The step in the middle of all, by value, without a copy of them: by halving the range in which it
// lies.
int64_t median_step(std::span<const int64_t> stamps) {
    const size_t half = (stamps.size() - 1) / 2;
    int64_t low = 0;
    int64_t high = stamps.back() - stamps.front();
    while (low < high) {
        const int64_t middle = low + (high - low) / 2;
        size_t below = 0;
        for (size_t i = 1; i < stamps.size(); ++i) {
            below += stamps[i] - stamps[i - 1] <= middle ? 1 : 0;
        }
        if (below > half) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return low;
}

Run longest_run(std::span<const int64_t> stamps, int64_t median) {
    Run best;
    Run now;
    for (size_t i = 1; i < stamps.size(); ++i) {
        const int64_t step = stamps[i] - stamps[i - 1];
        if (step * 2 > median * 3 || step * 2 < median) {
            now = {i, 0};
            continue;
        }
        ++now.steps;
        best = now.steps > best.steps ? now : best;
    }
    return best;
}

// Stamps that were rounded to milliseconds put a span off by one of them.
double snapped(double steps, double span) {
    constexpr double rounding = 0.001;
    constexpr double nearness = 0.0004; // less than from 24 to 24000/1001
    for (const double rate : usual_rates) {
        const double off = std::fabs(steps / rate - span);
        if (off <= rounding && off <= span * nearness) {
            return rate;
        }
    }
    double best = 0;
    for (const double rate : usual_rates) {
        const double off = std::fabs(steps / rate - span);
        if (off <= rounding && (best == 0 || off < std::fabs(steps / best - span))) {
            best = rate;
        }
    }
    return best;
}

// Of the steps within two milliseconds of the median, if they are three quarters of all; 0 else.
double mean_rate(std::span<const int64_t> stamps, int64_t median, int64_t ticks) {
    const int64_t range = ticks / 500;
    int64_t sum = 0;
    int64_t count = 0;
    for (size_t i = 1; i < stamps.size(); ++i) {
        const int64_t step = stamps[i] - stamps[i - 1];
        if (step >= median - range && step <= median + range) {
            sum += step;
            ++count;
        }
    }
    const bool enough = count * 4 >= static_cast<int64_t>(stamps.size() - 1) * 3;
    return enough && sum > 0
               ? static_cast<double>(count) * static_cast<double>(ticks) / static_cast<double>(sum)
               : 0;
}

} // namespace

MeasuredFrameRate measure_frame_rate(std::span<const int64_t> stamps, int64_t ticks) {
    if (stamps.size() < 2 || ticks <= 0 || stamps.back() <= stamps.front()) {
        return {};
    }
    const int64_t median = median_step(stamps);
    const Run run = longest_run(stamps, median);
    if (run.steps > 0) {
        const int64_t span = stamps[run.first + run.steps] - stamps[run.first];
        const double rate = snapped(
            static_cast<double>(run.steps), static_cast<double>(span) / static_cast<double>(ticks));
        if (rate > 0) {
            return {rate, true};
        }
    }
    const double mean = mean_rate(stamps, median, ticks);
    if (mean > 0) {
        return {mean, false};
    }
    return {static_cast<double>(stamps.size() - 1) * static_cast<double>(ticks) /
                static_cast<double>(stamps.back() - stamps.front()),
        false};
}

} // namespace zat
