// The tables of a track's samples (ISO/IEC 14496-12, 8.7).
#pragma once

#include "container/mp4/movie.h"

namespace zat::mp4 {

struct SampleTotals {
    uint32_t samples = 0;
    uint64_t bytes = 0;    // knowingly the sample count where all samples have one size
    bool one_size = false; // all samples in the movie atom have one size
};

// The samples in the movie atom and in fragments. A table that is shorter than its count gives what
// is there.
SampleTotals sum_sample_sizes(Reader* reader, const Track& track);

// Copies up to `count` bytes from where the track's first chunk starts. Returns how many there
// were.
uint32_t read_first_chunk(Reader* reader, const Track& track, uint8_t* destination, uint32_t count);

} // namespace zat::mp4
