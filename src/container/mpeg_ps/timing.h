// Play time by the clocks of packs and the time stamps of packets, also of recordings that were
// joined or cut and of clocks that went round.
#pragma once

#include "container/mpeg_pes.h"

#include <cstdint>

namespace zat::ps {

// A clock value and where in the stream it stands.
struct ClockPoint {
    int64_t position = 0;
    int64_t clock = no_clock;
};

// The pack clocks of one stretch of the stream, in order. A value that its neighbours contradict
// while they agree with each other is dropped.
struct ClockTrack {
    ClockPoint first;
    ClockPoint last;
    ClockPoint doubtful;    // one that contradicts `last`
    int64_t ticks = 0;      // sum of the steps that agree
    int64_t bytes = 0;      // of those steps
    int64_t jump_bytes = 0; // of the others
    int32_t jumps = 0;      // places where another recording begins
    int32_t jumps_back = 0; // of these, with an earlier time
    int64_t jump_back = 0;  // the longest of these
    int64_t steps = 0;
};

void add_clock(ClockTrack* track, ClockPoint point);

constexpr bool has_clock(const ClockTrack& track) {
    return track.first.clock != no_clock;
}

// The presentation time stamps of one elementary stream in a stretch of the file. One that is more
// than a minute off counts only when the next one agrees with it.
struct StampTrack {
    int64_t anchor = no_clock; // the first one
    int64_t last = 0;          // the rest count in ticks from the anchor
    int64_t lowest = 0;
    int64_t highest = 0;
    int64_t doubtful = no_clock;
    int64_t step_back = 0; // the longest
    int32_t jumps = 0;
};

void add_stamp(StampTrack* track, int64_t stamp);

constexpr bool has_stamps(const StampTrack& track) {
    return track.anchor != no_clock;
}

// Ticks from the lowest stamp of the head to the highest of the tail, which may be empty.
int64_t stamp_span(const StampTrack& head, const StampTrack& tail);

// The clocks of the whole stream: tracks of stretches in the stream's order, the first one of its
// head, the last one of its tail.
constexpr int32_t probe_limit = 20;
struct ClockProbes {
    int32_t count = 0;
    int64_t unrest = 0; // ticks by which the clock steps back within one recording
    ClockTrack tracks[probe_limit];
};

struct ClockTime {
    bool known = false;
    bool joined = false; // another recording begins somewhere: the time is estimated
    double seconds = 0;
};

// The time by the clocks. `size` is the stream's, `byte_rate` that of its packs (0: not known).
ClockTime clock_time(const ClockProbes& probes, int64_t size, uint32_t byte_rate);

} // namespace zat::ps
