#include "container/mpeg_ps/timing.h"

#include <algorithm>

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
    int64_t ticks = 0; // negative: backwards
    int64_t bytes = 0;
};

Step step_between(const ClockTrack& from, const ClockTrack& to) {
    return {
        clock_distance(from.last.clock, to.first.clock), to.first.position - from.last.position};
}

// Ticks per byte over all steps for which `good` holds; 0 when there is none.
double average_pace(const ClockProbes& probes, const bool (&good)[probe_limit]) {
    double ticks = 0;
    double bytes = 0;
    for (int32_t i = 0; i < probes.count; ++i) {
        const ClockTrack& track = probes.tracks[i];
        ticks += static_cast<double>(track.ticks);
        bytes += static_cast<double>(track.bytes);
        if (i + 1 < probes.count && good[i]) {
            const Step step = step_between(track, probes.tracks[i + 1]);
            ticks += static_cast<double>(step.ticks);
            bytes += static_cast<double>(step.bytes);
        }
    }
    return bytes > 0 ? ticks / bytes : 0;
}

// A pace that the packs' own rate rules out, or that is far from the average, which a joint makes.
bool is_off(const Step& step, double pace, uint32_t byte_rate) {
    constexpr double tolerance = 1.5;
    const auto ticks = static_cast<double>(step.ticks);
    const auto bytes = static_cast<double>(step.bytes);
    if (step.ticks < 0) {
        return true;
    }
    if (byte_rate != 0 && ticks * byte_rate * tolerance < bytes * static_cast<double>(clock_rate)) {
        return true;
    }
    return pace > 0 &&
           (ticks > bytes * pace * tolerance * 2 || ticks * tolerance * 2 < bytes * pace);
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
        ++track->jumps;
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
    const ClockTrack& first = probes.tracks[0];
    const ClockTrack& last = probes.tracks[probes.count - 1];
    const int64_t distance = last.last.position - first.first.position;
    if (distance <= 0) {
        return time;
    }
    bool good[probe_limit] = {};
    for (int32_t i = 0; i + 1 < probes.count; ++i) {
        good[i] = !is_off(step_between(probes.tracks[i], probes.tracks[i + 1]), 0, byte_rate);
        time.joined = time.joined || step_between(probes.tracks[i], probes.tracks[i + 1]).ticks < 0;
    }
    double pace = average_pace(probes, good);
    for (int32_t i = 0; i + 1 < probes.count; ++i) {
        good[i] = good[i] && !is_off(step_between(probes.tracks[i], probes.tracks[i + 1]), pace, 0);
    }
    pace = average_pace(probes, good);
    double ticks = 0;
    for (int32_t i = 0; i < probes.count; ++i) {
        const ClockTrack& track = probes.tracks[i];
        time.joined = time.joined || track.jumps > 0;
        ticks += static_cast<double>(track.ticks) + static_cast<double>(track.jump_bytes) * pace;
        if (i + 1 < probes.count) {
            const Step step = step_between(track, probes.tracks[i + 1]);
            ticks +=
                good[i] ? static_cast<double>(step.ticks) : static_cast<double>(step.bytes) * pace;
        }
    }
    // Uneven rates put single steps off without a joint; those even out over the whole.
    constexpr double difference = 0.25;
    const auto direct = static_cast<double>(clock_elapsed(first.first.clock, last.last.clock));
    if (!time.joined) {
        time.joined = ticks < direct * (1 - difference) || ticks > direct * (1 + difference);
        ticks = time.joined ? ticks : direct;
    }
    // What stands behind the last clock.
    const auto covered = static_cast<double>(distance);
    ticks *= static_cast<double>(size - first.first.position) / covered;
    time.known = ticks > 0;
    time.seconds = ticks / static_cast<double>(clock_rate);
    return time;
}

} // namespace zat::ps
