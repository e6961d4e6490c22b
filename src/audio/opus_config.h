// Opus as MP4's configuration record describes it (Encapsulation of Opus in ISO Base Media File
// Format, 4.3.2): the fields of Ogg's identification header, big-endian.
#pragma once

#include "common/bytes.h"

#include <cstdint>

namespace zat {

struct OpusConfig {
    uint32_t channels = 0;
    uint32_t pre_skip = 0;   // samples at 48 kHz
    uint32_t input_rate = 0; // Hz of the encoder's input; 0: not told
    uint32_t mapping_family = 0;
};

// Reads the content of a "dOps" box. False, and nothing is written, when it is cut off.
bool read_opus_config(Bytes record, OpusConfig* config);

} // namespace zat
