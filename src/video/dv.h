// The header, subcode and auxiliary data of a DV frame (IEC 61834-2; SMPTE 314M): what its pictures
// and its sound are like.
#pragma once

#include "common/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t dv_sequence_size = 12000; // bytes of a DIF sequence: all that is looked at

struct DvInfo {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t rate_numerator = 0; // frames per second
    uint32_t rate_denominator = 0;
    const char* chroma = "";
    bool tells_aspect = false;
    bool wide = false; // 16:9, else 4:3
    bool interlaced = false;
    uint32_t sample_rate = 0; // Hz; 0 without sound
    uint32_t channels = 0;
    uint32_t sample_bits = 0;
};

// Reads the DIF sequence that a frame begins with. False when it is none.
bool read_dv_info(Bytes frame, DvInfo* info);

} // namespace zat
