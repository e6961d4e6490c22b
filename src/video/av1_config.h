// The AV1 sequence header (AV1 Bitstream & Decoding Process, 5.5) and the configuration record that
// carries it in MP4 and Matroska (AV1 Codec ISO Media File Format Binding, 2.3).
#pragma once

#include "common/bytes/bytes.h"
#include "video/colour_names.h"
#include "zat/details.h"

#include <cstddef>
#include <cstdint>

namespace zat {

struct Av1Sequence {
    uint8_t profile = 0;   // seq_profile
    uint8_t level_idx = 0; // seq_level_idx of the first operating point
    uint8_t bit_depth = 0; // 8, 10 or 12; 0 when not known
    bool monochrome = false;
    bool subsampling_x = false;
    bool subsampling_y = false;
    uint32_t width = 0; // max_frame_width_minus_1 + 1; 0 without a sequence header
    uint32_t height = 0;
    ColourCodes colour;
    uint32_t num_units_in_display_tick = 0; // of timing_info() with equal intervals
    uint64_t time_scale = 0;
    uint64_t ticks_per_picture = 0;
};

// Looks for a sequence header among the open bitstream units (5.3) that `units` starts with. False
// without a whole one; `sequence` is then as it was.
bool parse_av1_units(Bytes units, Av1Sequence* sequence);

// Reads the record and the sequence header in it, which counts where both tell something. False
// when its four bytes are cut or its version is another.
bool parse_av1_config(Bytes record, Av1Sequence* sequence);

constexpr size_t av1_text_size = 64;

// "AV1 Main@5.1"; the level is left out when it is none in particular.
void av1_codec_text(const Av1Sequence& sequence, char (&out)[av1_text_size]);

// Codec, profile, level, size (where the stream has none), rate, depth, chroma and colour.
void set_av1_facts(ZatStream* stream, const Av1Sequence& sequence);

} // namespace zat
