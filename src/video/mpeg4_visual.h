// MPEG-4 Visual (ISO/IEC 14496-2): names of the profile and level indication, and the pixel aspect
// ratio of the video object layer header (6.2.3).
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t vol_aspect_size = 16; // bytes of an aspect's text, terminator included

struct VolAspect {
    bool found = false;             // a video object layer start code
    bool complete = false;          // its header was read
    uint32_t aspect_ratio_info = 0; // table 6-12
    uint32_t par_width = 0;         // of an aspect_ratio_info of 15
    uint8_t par_height = 0;
};

// Text for a profile_and_level_indication, cut to `size` bytes, terminator included.
void Mpeg4ProfileLevelName(char* out, size_t size, uint32_t value);

// Writes the text of an aspect; leaves it as it is for an aspect_ratio_info above 15.
void vol_aspect_name(const VolAspect& aspect, char (&out)[vol_aspect_size]);

// Reads the aspect of the last video object layer in the bytes, unless one was read already. Fields
// that the bytes cut off keep their values.
void find_vol_aspect(Bytes buffer, VolAspect* aspect);

} // namespace zat
