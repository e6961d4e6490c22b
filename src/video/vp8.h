// The VP8 key frame header (RFC 6386, 9.1).
#pragma once

#include "common/bytes/bytes.h"
#include "zat/details.h"

#include <cstdint>

namespace zat {

struct Vp8Frame {
    uint32_t width = 0;
    uint32_t height = 0;
};

// False when the bytes do not start a key frame.
bool parse_vp8_frame(Bytes frame, Vp8Frame* out);

// Codec, depth and chroma, which all VP8 streams share, and the size where the stream has none.
void set_vp8_facts(ZatStream* stream, const Vp8Frame& frame);

} // namespace zat
