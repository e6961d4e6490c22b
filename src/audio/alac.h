// The Apple Lossless decoder configuration (Apple Lossless Format Description, "Magic Cookie").
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

struct AlacConfig {
    uint32_t frame_length = 0; // samples
    uint32_t bit_depth = 0;
    uint32_t channels = 0;
    uint32_t average_bit_rate = 0; // bit/s; 0 when the encoder did not tell
    uint32_t sample_rate = 0;      // Hz
};

// Reads an ALACSpecificConfig. False, and nothing is written, for one that is cut off.
bool read_alac_config(Bytes cookie, AlacConfig* config);

} // namespace zat
