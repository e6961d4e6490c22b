// The clock of a program (PCR, ISO/IEC 13818-1, 2.4.3.5) in stretches of a file, and the time that
// they make up together.
#pragma once

#include <cstdint>

namespace zat::ts {

// The PCRs of an identifier within a stretch of the file.
struct Clock {
    uint16_t pid = 0;
    bool jumps = false; // backward, or far off the pace before
    uint32_t count = 0;
    int64_t first = 0; // ticks of 27 MHz
    int64_t last = 0;
    int64_t first_position = 0; // of the packet in the file
    int64_t last_position = 0;
    int64_t steady = 0; // the first value a second behind `first`: muxers begin with a burst
    int64_t steady_position = 0;
    int64_t good_ticks = 0; // of the steps that are no jumps
    int64_t good_bytes = 0;
};

// Adds a PCR to those of a stretch.
void add_pcr(Clock* clock, int64_t pcr, int64_t position);

// Stretches with a clock, in the order of the file.
struct ClockChain {
    static constexpr uint32_t most = 10;

    Clock links[most];
    uint32_t count = 0;
};

// Appends a stretch, unless it has no value of the clock.
void add_link(ClockChain* chain, const Clock& clock);

struct ClockSum {
    double ticks = 0; // of 27 MHz, in stretches and in the steps between them that hold together
    double bytes = 0; // of the same
    double loose_bytes = 0; // of the other steps
};

// Adds up the chain. A step between two stretches holds when its pace, in ticks for each byte, is
// near theirs. False when one does not, or when the clock jumps within a stretch.
bool add_up(const ClockChain& chain, ClockSum* sum);

} // namespace zat::ts
