#include "container/mpeg_ps/timing.h"

#include <algorithm>
#include <cmath>

namespace zat::ps {

namespace {

// Packs are 0.7 s apart at the most (ISO/IEC 13818-1, 2.7.1); writers of still pictures exceed it.
constexpr int64_t longest_step = 10 * clock_rate;
constexpr int64_t longest_stamp_step = 60 * clock_rate;

constexpr bool agree(int64_t from, int64_t to) {
    const int64_t step = clock_distance(from, to);
    return step >= 0 && step <= longest_step;
}

void take_step(ClockTrack* track, ClockPoint point) {
    track->ticks += clock_distance(track->last.clock, point.clock);
    track->bytes += point.position - track->last.position;
    ++track->steps;
    track->last = point;
    track->doubtful = {};
}

// The stretch from one track to the next.
struct Step {
    double ticks = 0; // negative: backwards
    double bytes = 0;
};

Step step_behind(const ClockProbes& probes, int32_t i) {
    const ClockPoint& from = probes.tracks[i].last;
    const ClockPoint& to = probes.tracks[i + 1].first;
    return {static_cast<double>(clock_distance(from.clock, to.clock)),
        static_cast<double>(to.position - from.position)};
}

// Ticks per byte within the tracks; 0 without a step. Of an unsteady clock the head as a whole
// tells more than its steps.
double inner_pace(const ClockProbes& probes) {
    if (probes.unrest != 0) {
        const ClockTrack& head = probes.tracks[0];
        return static_cast<double>(clock_distance(head.first.clock, head.last.clock)) /
               static_cast<double>(head.last.position - head.first.position);
    }
    double ticks = 0;
    double bytes = 0;
    for (int32_t i = 0; i < probes.count; ++i) {
        ticks += static_cast<double>(probes.tracks[i].ticks);
        bytes += static_cast<double>(probes.tracks[i].bytes);
    }
    return bytes > 0 ? ticks / bytes : 0;
}

// The middle one of the paces from track to track.
double middle_pace(const ClockProbes& probes) {
    double paces[probe_limit] = {};
    int32_t count = 0;
    for (int32_t i = 0; i + 1 < probes.count; ++i) {
        const Step step = step_behind(probes, i);
        if (step.ticks >= 0 && step.bytes > 0) {
            paces[count++] = step.ticks / step.bytes;
        }
    }
    std::sort(paces, paces + count);
    return count > 0 ? paces[count / 2] : 0;
}

bool is_off(const Step& step, double pace, double tolerance) {
    return step.ticks < 0 || step.ticks > step.bytes * pace * tolerance ||
           step.ticks * tolerance < step.bytes * pace;
}

// What only another recording behind the first one can make: clocks that jump or go back, and more
// bytes in a time than the packs' own rate lets through.
bool has_joint(const ClockProbes& probes, double pace, uint32_t byte_rate) {
    constexpr double tolerance = 1.5;
    const double fastest = byte_rate == 0 ? 0 : static_cast<double>(clock_rate) / byte_rate;
    const bool rate_is_true = fastest <= pace * tolerance; // and not that of something else
    const int64_t unrest = probes.unrest + probes.unrest / 2;
    for (int32_t i = 0; i < probes.count; ++i) {
        const ClockTrack& track = probes.tracks[i];
        if (track.jumps > (track.jump_back <= unrest ? track.jumps_back : 0)) {
            return true;
        }
        if (i + 1 < probes.count) {
            const Step step = step_behind(probes, i);
            const double ticks = step.ticks + static_cast<double>(unrest);
            if (ticks < 0 || (rate_is_true && ticks * tolerance < step.bytes * fastest)) {
                return true;
            }
        }
    }
    return false;
}

// The sum of all steps, those that are off the pace by their bytes.
double sum_of_steps(const ClockProbes& probes, double pace, double tolerance) {
    double ticks = 0;
    for (int32_t i = 0; i < probes.count; ++i) {
        const ClockTrack& track = probes.tracks[i];
        ticks += static_cast<double>(track.ticks) + static_cast<double>(track.jump_bytes) * pace;
        if (i + 1 < probes.count) {
            const Step step = step_behind(probes, i);
            ticks += is_off(step, pace, tolerance) ? step.bytes * pace : step.ticks;
        }
    }
    return ticks;
}

} // namespace

void add_clock(ClockTrack* track, ClockPoint point) {
    if (!has_clock(*track)) {
        track->first = point;
        track->last = point;
        return;
    }
    if (agree(track->last.clock, point.clock)) {
        take_step(track, point);
        return;
    }
    const ClockPoint doubtful = track->doubtful;
    if (doubtful.clock == no_clock || !agree(doubtful.clock, point.clock)) {
        track->doubtful = point;
        return;
    }
    // Two in a row agree on another time: a joint, or the very first value was the wrong one.
    if (track->steps == 0 && track->jumps == 0) {
        track->first = doubtful;
    } else {
        const int64_t back = clock_distance(doubtful.clock, track->last.clock);
        ++track->jumps;
        track->jumps_back += back > 0 ? 1 : 0;
        track->jump_back = std::max(track->jump_back, back);
        track->jump_bytes += doubtful.position - track->last.position;
    }
    track->last = doubtful;
    take_step(track, point);
}

void add_stamp(StampTrack* track, int64_t stamp) {
    if (!has_stamps(*track)) {
        track->anchor = stamp;
        return;
    }
    const auto now = (track->anchor + track->last) % clock_modulus;
    const int64_t step = clock_distance(now, stamp);
    if (std::abs(step) <= longest_stamp_step) {
        track->last += step;
        track->step_back = std::max(track->step_back, -step);
        track->lowest = std::min(track->lowest, track->last);
        track->highest = std::max(track->highest, track->last);
        track->doubtful = no_clock;
    } else if (track->doubtful != no_clock &&
               std::abs(clock_distance(track->doubtful, stamp)) <= longest_stamp_step) {
        ++track->jumps;
        track->last += clock_distance(now, stamp);
        track->doubtful = no_clock;
    } else {
        track->doubtful = stamp;
    }
}

int64_t stamp_span(const StampTrack& head, const StampTrack& tail) {
    int64_t highest = head.highest;
    if (has_stamps(tail)) {
        const int64_t to_tail =
            clock_elapsed(head.anchor + head.lowest, tail.anchor + tail.highest);
        highest = std::max(highest, head.lowest + to_tail);
    }
    return highest - head.lowest;
}

ClockTime clock_time(const ClockProbes& probes, int64_t size, uint32_t byte_rate) {
    ClockTime time;
    if (probes.count == 0) {
        return time;
    }
    const ClockPoint& first = probes.tracks[0].first;
    const ClockPoint& last = probes.tracks[probes.count - 1].last;
    const int64_t covered = last.position - first.position;
    if (covered <= 0) {
        return time;
    }
    auto ticks = static_cast<double>(clock_elapsed(first.clock, last.clock));
    const double pace = inner_pace(probes);
    time.joined = has_joint(probes, pace, byte_rate);
    if (time.joined) {
        constexpr double tolerance = 1.5;
        ticks = probes.unrest != 0 ? static_cast<double>(covered) * pace
                                   : sum_of_steps(probes, pace, tolerance);
    } else {
        // A leap forward: one step that is far off all others.
        constexpr double tolerance = 4;
        constexpr double difference = 1.25;
        const double middle = middle_pace(probes);
        const double sum = middle > 0 ? sum_of_steps(probes, middle, tolerance) : ticks;
        time.joined = ticks > sum * difference;
        ticks = time.joined ? sum : ticks;
    }
    // What stands behind the last clock.
    ticks *= static_cast<double>(size - first.position) / static_cast<double>(covered);
    time.known = ticks > 0;
    time.seconds = ticks / static_cast<double>(clock_rate);
    return time;
}

} // namespace zat::ps
