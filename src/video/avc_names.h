// Texts for the codes of H.264 video (ITU-T H.264, Annex A and Table E-1).
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

// Which profiles and levels are known, and how a parameter set is read. The lines of MP4 and FLV
// files keep the legacy rules, which know only a part of the standard and read another part in
// their own way: hosts compare those lines. Everything else goes by the standard.
enum class AvcRules : uint8_t { legacy, standard };

// Names of a profile_idc and of a level_idc with the constraint flags of its parameter set; null
// for a code without a name.
const char* avc_profile_name(int profile_idc, AvcRules rules);
const char* avc_level_name(int profile_idc, int constraint_flags, int level_idc, AvcRules rules);

// "profile@level", as in High@4.1. Cut to `size` bytes, terminator included; an unknown profile
// with an unknown level needs 38.
void FormatAvcProfileLevel(char* out, size_t size, int profile_idc, int level_idc, AvcRules rules,
    int constraint_flags = 0);

// The sample aspect ratio of an aspect_ratio_idc other than 255 (Extended_SAR).
void AvcAspectRatioName(char* out, size_t size, int aspect_ratio_idc);

struct SampleAspect {
    uint16_t width = 0;
    uint16_t height = 0;
};

// The same as numbers, by the standard; 0 and 0 for unspecified and reserved ones.
SampleAspect avc_sample_aspect(int aspect_ratio_idc);

} // namespace zat
