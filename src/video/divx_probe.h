// DivX and XviD encodes, told by the user data that those encoders write into the stream.
#pragma once

#include "common/bytes/bytes.h"
#include "common/file/file_access.h"

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

constexpr uint32_t divx_search_limit = 1'048'576;

// Writes aspect_text; leaves it as it is for an aspect_ratio_info above 15.
void Mpeg4AspectName(DivxProbe* probe);

// Reads the aspect of the last video object layer in the bytes, unless vol_done is set.
void FindDivxVolAspect(Bytes buffer, DivxProbe* probe);

// Searches the bytes for the encoders' strings and, for an encode of theirs (or the FourCC of one),
// for the pixel aspect ratio. Returns -1 when no string was found, 1 for one, 3 for two.
int find_divx_strings(Bytes bytes, DivxProbe* probe);

// The same for the file's bytes from probe->movi_pos on, divx_search_limit at most; probe->fourcc
// is set. No memory counts as no string.
int FindDivxStrings(FileRecord* file, DivxProbe* probe);

// Decides codec_name, after the caller's lookups have filled divx_name, xvid_name and
// lookup_result.
void ComposeDivxCodecName(DivxProbe* probe);

// 0 for DX50, DIV* and XVID; -1 for every other.
int IsDivxFamilyFourcc(const char* fourcc);

} // namespace zat
