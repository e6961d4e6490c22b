// The tables of a track's samples (ISO/IEC 14496-12, 8.7).
#pragma once

#include "common/bytes/bytes.h"
#include "container/mp4/movie.h"

#include <cstddef>
#include <cstdint>

namespace zat::mp4 {

// Sums the track's samples, once. A table that is shorter than its count gives what is there.
const SampleTotals& sample_totals(Reader* reader, Track* track);

// The sum of the big-endian words of 32 bits that stand at `at` of each row of `width` bytes.
uint64_t sum_words(Bytes rows, size_t width, size_t at);

// Copies up to `count` bytes from where the track's first chunk starts. Returns how many there
// were.
uint32_t read_first_chunk(Reader* reader, const Track& track, uint8_t* destination, uint32_t count);

} // namespace zat::mp4
