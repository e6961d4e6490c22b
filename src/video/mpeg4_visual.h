// MPEG-4 Visual (ISO/IEC 14496-2): names of the profile and level indication, and the pixel aspect
// ratio of the video object layer header (6.2.3).
#pragma once

#include "common/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// What is known of a stream's pixel aspect ratio and of the encoder that wrote it. The caller
// clears it before use.
struct DivxProbe {
    uint32_t movi_pos = 0;      // file position where the search starts
    uint32_t search_len = 0;    // bytes searched
    uint32_t divx_pos = 0;      // of the last "DivX", in the bytes searched
    uint32_t xvid_pos = 0;      // of the last "XviD"
    uint32_t lookup_result = 0; // the caller's catalogue lookup: 0, 1 not listed, 2 no catalogue
    char divx_string[16] = {};  // the user data from "DivX" on, without a final "p"
    char xvid_string[16] = {};
    char fourcc[5] = {};
    char divx_name[64] = {};
    char xvid_name[128] = {};
    char codec_name[64] = {};
    uint8_t divx_found = 0;
    uint8_t xvid_found = 0;
    uint8_t vol_found = 0; // a video object layer start code was found
    uint8_t vol_done = 0;  // its header was read
    uint32_t aspect_ratio_info = 0;
    uint32_t par_width = 0;
    uint8_t par_height = 0;
    char aspect_text[16] = {};
};

// Text for a profile_and_level_indication, cut to `size` bytes, terminator included.
void Mpeg4ProfileLevelName(char* out, size_t size, uint32_t value);

// Writes aspect_text; leaves it as it is for an aspect_ratio_info above 15.
void Mpeg4AspectName(DivxProbe* probe);

// Reads the aspect of the last video object layer in the bytes. Fields that the bytes cut off keep
// their values, and vol_done is then not set.
void FindDivxVolAspect(Bytes buffer, DivxProbe* probe);

} // namespace zat
