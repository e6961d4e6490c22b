// An audio stream that WAVEFORMATEX describes, as AVI, ASF, Matroska's ACM tracks and OGM have it:
// its line and its facts.
#pragma once

#include "common/bytes/bytes.h"
#include "common/record/output.h"

#include <cstdint>
#include <string_view>

namespace zat {

struct WaveStream {
    Bytes format;                   // WAVEFORMATEX and what stands behind it
    Bytes start = {};               // of the stream's data
    uint64_t rate = 0;              // bit/s, where the container knows better than the format
    bool rate_is_counted = false;   // by the bytes of all frames
    bool rate_is_estimated = false; // by a part of them
    uint64_t details_rate = 0;      // bit/s, which the line does not show
};

// Fills in what the format and the first frame tell, adds the stream's line and its details. What
// the container told before, the language and the duration among it, stays.
void add_wave_stream(const Output& out, const WaveStream& wave, ZatStream* stream);

} // namespace zat
