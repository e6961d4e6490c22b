// DivX and XviD encodes, told by the user data that those encoders write into the stream.
#pragma once

#include "common/bytes.h"
#include "common/file_access.h"
#include "video/mpeg4_visual.h"

#include <cstdint>

namespace zat {

constexpr uint32_t divx_search_limit = 1'048'576;

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
