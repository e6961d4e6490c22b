// What a few bytes do not tell surely: probes that the rows of the signature tables name. Each says
// whether what it looks for begins at `at` of the view, and loads no more of it than that takes.
#pragma once

#include "common/file/file_window.h"

#include <cstdint>

namespace zat {

using Probe = bool (*)(FileWindow* window, uint32_t at);

// Three frames in a row: AAC with ADTS headers (ISO/IEC 13818-7, 6.2), AAC in LOAS frames (ISO/IEC
// 14496-3, 1.7.2).
bool has_adts_frames(FileWindow* window, uint32_t at);
bool has_loas_frames(FileWindow* window, uint32_t at);

// Two sync frames in a row of AC-3 or Enhanced AC-3 (ATSC A/52, 5.3 and annex E).
bool has_ac3_frames(FileWindow* window, uint32_t at);

// A video stream of start codes with the headers that tell its kind, within the first kilobytes.
bool has_video_headers(FileWindow* window, uint32_t at);

// A Windows or OS/2 bitmap with a possible size and depth.
bool has_bitmap_header(FileWindow* window, uint32_t at);

} // namespace zat
