// The header, subcode and auxiliary data of a DV frame (IEC 61834-2; SMPTE 314M): what its pictures
// and its sound are like.
#pragma once

#include "common/bytes/bytes.h"
#include "common/record/details.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t dv_start_size = 4400; // bytes of a frame that are looked at

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

// Reads the first blocks of a frame. False when it does not begin with a DIF sequence.
bool read_dv_info(Bytes frame, DvInfo* info);

// Sets the facts of the pictures; size and frame rate where the stream has none.
void set_dv_facts(const DvInfo& info, ZatStream* stream);

// Sets the facts of the sound inside the frames.
void set_dv_audio_facts(const DvInfo& info, ZatStream* stream);

} // namespace zat
