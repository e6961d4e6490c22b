#include "video/vp8.h"

#include "common/text/text.h"
#include "video/colour_names.h"

namespace zat {

bool parse_vp8_frame(Bytes frame, Vp8Frame* out) {
    constexpr size_t header_size = 10;
    constexpr uint16_t size_mask = 0x3FFF; // the two bits above it scale
    const bool is_key = frame.size() >= header_size && (frame[0] & 1) == 0;
    if (!is_key || !has_at(frame, 3, "\x9D\x01\x2A")) {
        return false;
    }
    out->width = ReadLE16(frame.data() + 6) & size_mask;
    out->height = ReadLE16(frame.data() + 8) & size_mask;
    return true;
}

void set_vp8_facts(ZatStream* stream, const Vp8Frame& frame) {
    copy_text(stream->codec, "VP8");
    copy_text(stream->chroma, chroma_format_name(1));
    stream->bit_depth = 8;
    if (stream->width == 0 || stream->height == 0) {
        stream->width = frame.width;
        stream->height = frame.height;
    }
}

} // namespace zat
