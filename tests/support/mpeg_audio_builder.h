// MPEG audio streams and the tags around them.
#pragma once

#include "support/byte_builder.h"

#include <string_view>

namespace zat::test {

// Bytes of a frame of MPEG-1 Layer III with 128 kbit/s at 44100 Hz, stereo.
constexpr size_t mpeg_frame_size = 417;

inline ByteBuilder mpeg_frames(int count) {
    ByteBuilder stream;
    for (int i = 0; i < count; ++i) {
        stream.be32(0xFFFB9000).fill(mpeg_frame_size - 4, 0xAA);
    }
    return stream;
}

// What a Xing or Info header holds, with the name of an encoder.
inline ByteBuilder xing_header(std::string_view name, uint32_t flags, uint32_t frames, uint32_t bytes,
    std::string_view encoder = {}, std::string_view gogo = {}) {
    ByteBuilder header;
    header.text(name).be32(flags).be32(frames).be32(bytes).pad_to(116).text(gogo).pad_to(120);
    return header.text(encoder);
}

// A frame with such a header.
inline ByteBuilder xing_frame(const ByteBuilder& header) {
    return ByteBuilder().be32(0xFFFB9000).pad_to(36).append(header.bytes).pad_to(mpeg_frame_size);
}

// An ID3v2.3 tag around frames and zeros, of `size` bytes as a whole.
inline ByteBuilder id3v2_tag(size_t size, const ByteBuilder& frames = {}) {
    ByteBuilder tag;
    const size_t body = size - 10;
    tag.text("ID3").raw({3, 0, 0}).u8(body >> 21).u8(body >> 14 & 127).u8(body >> 7 & 127).u8(body & 127);
    return tag.append(frames.bytes).pad_to(size);
}

// A text frame of it, in ISO 8859-1.
inline ByteBuilder id3v2_text(std::string_view id, std::string_view text) {
    return ByteBuilder().text(id).be32(text.size() + 1).be16(0).u8(0).text(text);
}

inline ByteBuilder id3v1_tag(std::string_view title = {}) {
    return ByteBuilder().text("TAG").text(title).pad_to(128);
}

} // namespace zat::test
