// The video object layer header of MPEG-4 Visual (ISO/IEC 14496-2, 6.2.3), by the standard.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

struct Mpeg4Vol {
    uint32_t width = 0; // luma samples; 0 for shapes other than a rectangle
    uint32_t height = 0;
    uint8_t aspect_ratio_info = 0;
    uint8_t par_width = 0; // of an aspect_ratio_info of 15
    uint8_t par_height = 0;
    uint8_t chroma_format = 1;
    uint8_t bit_depth = 8;
    uint8_t interlaced = 0;
    uint16_t time_increment_resolution = 0; // ticks per second
    uint16_t fixed_time_increment = 0;      // ticks per picture; 0 when they vary
};

struct Mpeg4Headers {
    uint8_t profile_level = 0; // profile_and_level_indication; 0 without one
    bool vol_found = false;
    Mpeg4Vol vol;
};

// Reads what follows the start code of a video object layer. Returns 0, or 1 with the record as it
// was when the header is cut or impossible.
int read_mpeg4_vol(Mpeg4Vol* vol, Bytes bytes);

// Finds the first whole video object layer and the profile before it. Returns 0, or 1 without one.
int find_mpeg4_headers(Bytes stream, Mpeg4Headers* headers);

struct Mpeg4Profile {
    const char* profile; // "Advanced Simple"; null for a code that names none
    const char* level;
};
Mpeg4Profile mpeg4_profile(uint32_t profile_and_level_indication);

} // namespace zat
