#include "container/mpeg_ts/clock.h"

#include "container/mpeg_ts/packets.h"

#include <algorithm>
#include <iterator>

namespace zat::ts {

namespace {

// Ticks for each byte, 0 when a stretch does not tell.
double pace_of(const Clock& clock) {
    const bool steady = clock.steady_position > 0 && clock.steady_position < clock.last_position;
    const int64_t from = steady ? clock.steady : clock.first;
    const int64_t bytes =
        clock.last_position - (steady ? clock.steady_position : clock.first_position);
    const int64_t ticks = pcr_distance(from, clock.last);
    return bytes > 0 && ticks > 0 && !clock.jumps
               ? static_cast<double>(ticks) / static_cast<double>(bytes)
               : 0;
}

struct Range {
    double low = 0;
    double high = 0;
};

void widen(Range* range, double pace) {
    if (pace > 0) {
        range->low = range->low > 0 ? std::min(range->low, pace) : pace;
        range->high = std::max(range->high, pace);
    }
}

struct Step {
    int64_t ticks = 0;
    int64_t bytes = 0;
};

Step step_behind(const ClockChain& chain, uint32_t link) {
    const Clock& from = chain.links[link];
    const Clock& to = chain.links[link + 1];
    return {pcr_distance(from.last, to.first), to.first_position - from.last_position};
}

double pace_of(const Step& step) {
    return step.bytes > 0 ? static_cast<double>(step.ticks) / static_cast<double>(step.bytes) : 0;
}

double median_step_pace(const ClockChain& chain) {
    double paces[std::size(chain.links)];
    uint32_t count = 0;
    for (uint32_t i = 0; i + 1 < chain.count; ++i) {
        const Step step = step_behind(chain, i);
        if (step.ticks > 0 && step.bytes > 0) {
            paces[count++] = pace_of(step);
        }
    }
    std::sort(paces, paces + count);
    return count > 0 ? paces[count / 2] : 0;
}

// How far a step may be off the pace around it: little where all of the file has one pace.
double tolerance(const ClockChain& chain) {
    constexpr double constant = 1.5;
    constexpr double variable = 4;
    Range all;
    for (uint32_t i = 0; i < chain.count; ++i) {
        widen(&all, pace_of(chain.links[i]));
    }
    return all.high <= all.low * 1.2 ? constant : variable;
}

} // namespace

void add_pcr(Clock* clock, int64_t pcr, int64_t position) {
    constexpr int64_t longest_gap = 10 * pcr_rate;
    if (clock->count == 0) {
        clock->first = pcr;
        clock->first_position = position;
    } else {
        const int64_t distance = pcr_distance(clock->last, pcr);
        if (distance < 0 || distance > longest_gap) {
            clock->jumps = true;
        } else {
            clock->good_ticks += distance;
            clock->good_bytes += position - clock->last_position;
        }
        if (clock->steady_position == 0 && pcr_distance(clock->first, pcr) > pcr_rate) {
            clock->steady = pcr;
            clock->steady_position = position;
        }
    }
    clock->last = pcr;
    clock->last_position = position;
    ++clock->count;
}

void add_link(ClockChain* chain, const Clock& clock) {
    if (clock.count > 0) {
        chain->links[chain->count++] = clock;
    }
}

bool add_up(const ClockChain& chain, ClockSum* sum) {
    const double factor = tolerance(chain);
    const double usual = median_step_pace(chain);
    bool whole = true;
    for (uint32_t i = 0; i < chain.count; ++i) {
        const Clock& link = chain.links[i];
        sum->ticks += static_cast<double>(link.good_ticks);
        sum->bytes += static_cast<double>(link.good_bytes);
        whole = whole && !link.jumps;
        if (i + 1 == chain.count) {
            break;
        }
        Range range;
        widen(&range, pace_of(link));
        widen(&range, pace_of(chain.links[i + 1]));
        widen(&range, usual);
        const Step step = step_behind(chain, i);
        const double pace = pace_of(step);
        if (step.ticks > 0 && pace * factor >= range.low && pace <= range.high * factor) {
            sum->ticks += static_cast<double>(step.ticks);
            sum->bytes += static_cast<double>(step.bytes);
        } else {
            sum->loose_bytes += static_cast<double>(step.bytes);
            whole = false;
        }
    }
    return whole;
}

} // namespace zat::ts
