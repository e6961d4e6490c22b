// VP9: the key frame header (VP9 Bitstream & Decoding Process, 6.2) and the two forms of its codec
// configuration, MP4's (VP Codec ISO Media File Format Binding) and WebM's.
#pragma once

#include "common/bytes/bytes.h"
#include "video/colour_names.h"
#include "zat/details.h"

#include <cstddef>
#include <cstdint>

namespace zat {

struct Vp9Sequence {
    uint8_t profile = 0;
    uint8_t level = 0; // ten times the level; 0 when not known
    bool profile_known = false;
    uint8_t bit_depth = 0;
    uint8_t chroma_format = 0; // as chroma_format_idc of H.264
    bool chroma_known = false;
    uint32_t width = 0; // 0 without a key frame
    uint32_t height = 0;
    ColourCodes colour;
};

// False when the bytes do not start a key frame; what they tell counts over what was known.
bool parse_vp9_frame(Bytes frame, Vp9Sequence* sequence);

// The vpcC box's content, version and flags included. False when it is cut or of another version.
bool parse_vp9_config(Bytes record, Vp9Sequence* sequence);

// WebM's CodecPrivate: features of one byte id, one byte length and their value.
void parse_vp9_features(Bytes features, Vp9Sequence* sequence);

constexpr size_t vp9_text_size = 32;

// "VP9 Profile 0", or "VP9" when the profile is not known.
void vp9_codec_text(const Vp9Sequence& sequence, char (&out)[vp9_text_size]);

// Codec, profile, level, size (where the stream has none), depth, chroma and colour.
void set_vp9_facts(ZatStream* stream, const Vp9Sequence& sequence);

} // namespace zat
