// The HEVC sequence parameter set (ITU-T H.265, 7.3.2.2 and Annex E) and the decoder configuration
// record that carries it in MP4 and Matroska (ISO/IEC 14496-15, 8.3.3).
#pragma once

#include "common/bytes/bytes.h"
#include "video/colour_names.h"
#include "zat/details.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// What is not told is 0.
struct HevcSequence {
    // profile_tier_level()
    uint8_t profile_idc = 0;
    uint8_t level_idc = 0; // 30 times the level
    // The nine flags from general_max_12bit_constraint_flag on, the first one in bit 8.
    uint16_t constraint_flags = 0;
    bool progressive_source = false;
    bool interlaced_source = false;

    uint8_t chroma_format_idc = 0;
    bool chroma_known = false;
    uint8_t bit_depth = 0; // luma

    uint32_t width = 0; // luma samples within the conformance window
    uint32_t height = 0;

    // vui_parameters()
    uint16_t pixel_aspect_width = 0;
    uint16_t pixel_aspect_height = 0;
    ColourCodes colour;
    bool field_sequence = false;
    uint32_t num_units_in_tick = 0;
    uint32_t time_scale = 0;
};

// Reads a NAL unit that starts at its two-byte header. False when it is no sequence parameter set
// of the base layer or ends before its bit depth; what was told by then is kept.
bool parse_hevc_sps(Bytes nal, HevcSequence* sequence);

// Reads the record and the first sequence parameter set in it. False when the record's fixed part
// is cut or of another version.
bool parse_hevc_config(Bytes record, HevcSequence* sequence);

// The first sequence parameter set behind a start code (Annex B). False without one.
bool find_hevc_sps(Bytes stream, HevcSequence* sequence);

constexpr size_t hevc_text_size = 64;

// "HEVC/H265 Main 10@5.1".
void hevc_codec_text(const HevcSequence& sequence, char (&out)[hevc_text_size]);

// Codec, profile, level, size (where the stream has none), aspect, rate, scan, depth, chroma and
// colour, as far as they are known.
void set_hevc_facts(ZatStream* stream, const HevcSequence& sequence);

} // namespace zat
