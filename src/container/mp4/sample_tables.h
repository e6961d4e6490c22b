// The tables of a track's samples (ISO/IEC 14496-12, 8.7).
#pragma once

#include "container/mp4/movie.h"

namespace zat::mp4 {

// Sums the track's samples, once. A table that is shorter than its count gives what is there.
const SampleTotals& sample_totals(Reader* reader, Track* track);

// Copies up to `count` bytes from where the track's first chunk starts. Returns how many there
// were.
uint32_t read_first_chunk(Reader* reader, const Track& track, uint8_t* destination, uint32_t count);

} // namespace zat::mp4
