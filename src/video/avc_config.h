// AVCDecoderConfigurationRecord (ISO/IEC 14496-15, 5.3.3.1): how containers carry an H.264 stream's
// parameter sets.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

// Bytes that hold the profile, the level and the first sequence parameter set of every real record.
constexpr uint32_t avc_config_head_size = 16384;

struct AvcConfig {
    uint8_t profile = 0; // AVCProfileIndication
    uint8_t compatibility = 0;
    uint8_t level = 0;
    uint32_t length_size = 0; // bytes of the length in front of each NAL unit; 0 when cut off
    Bytes first_sps; // from its NAL header on, as far as the bytes go; empty when there is none
};

// False, and nothing is written, for a record that ends before its level.
bool read_avc_config(Bytes record, AvcConfig* config);

} // namespace zat
