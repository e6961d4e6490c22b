// Texts for the codes of H.264 video (ITU-T H.264, Annex A and Table E-1).
#pragma once

#include <cstddef>

namespace zat {

// "profile@level", as in High@4.1. Cut to `size` bytes, terminator included; an unknown profile
// with an unknown level needs 38.
void FormatAvcProfileLevel(char* out, size_t size, int profile_idc, int level_idc);

// The sample aspect ratio of an aspect_ratio_idc other than 255 (Extended_SAR).
void AvcAspectRatioName(char* out, size_t size, int aspect_ratio_idc);

} // namespace zat
