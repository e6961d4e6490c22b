// Colour as ITU-T H.273 codes it, which H.264, HEVC, AV1, VP9, MP4 and Matroska all use.
#pragma once

#include "zat/details.h"

#include <cstdint>

namespace zat {

constexpr uint8_t colour_unspecified = 2;

struct ColourCodes {
    uint8_t primaries = colour_unspecified; // colour_primaries (8.1)
    uint8_t transfer = colour_unspecified;  // transfer_characteristics (8.2)
    uint8_t matrix = colour_unspecified;    // matrix_coefficients (8.3)
    bool range_known = false;
    bool full_range = false; // video_full_range_flag
};

// The names; empty for a code that is reserved or unspecified.
const char* colour_primaries_name(uint32_t code);
const char* transfer_name(uint32_t code);
const char* matrix_name(uint32_t code);

// Sets what the codes tell, and what follows from them for `hdr`; the rest stays as it was.
void set_colour(ZatStream* stream, const ColourCodes& codes);

// "4:2:0" by the chroma_format_idc that H.264, HEVC and MP4 share (0 is 4:0:0); empty above 3.
const char* chroma_format_name(uint32_t chroma_format_idc);

} // namespace zat
