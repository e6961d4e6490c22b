// Headers of video streams, built field by field.
#pragma once

#include "support/byte_builder.h"

namespace zat::test {

// A sequence header of MPEG video, start code included.
struct SequenceFields {
    int width = 720, height = 480, aspect = 3, rate = 4;
    uint64_t bit_rate = 20000, vbv = 112;
    int marker = 1;
};
inline std::vector<uint8_t> sequence_header(const SequenceFields& f) {
    BitBuilder bits;
    bits.bits(0x1B3, 32).bits(static_cast<uint64_t>(f.width), 12).bits(static_cast<uint64_t>(f.height), 12);
    bits.bits(static_cast<uint64_t>(f.aspect), 4).bits(static_cast<uint64_t>(f.rate), 4).bits(f.bit_rate, 18);
    return bits.bits(static_cast<uint64_t>(f.marker), 1).bits(f.vbv, 10).bits(0, 3).bytes;
}

// A sequence extension, start code included.
struct ExtensionFields {
    uint64_t profile = 4, level = 8, progressive = 0, chroma = 1;
    uint64_t width = 0, height = 0, bit_rate = 0; // upper bits
    uint64_t rate_n = 0, rate_d = 0;
};
inline std::vector<uint8_t> sequence_extension(const ExtensionFields& f) {
    BitBuilder bits;
    bits.bits(0x1B5, 32).bits(1, 4).bits(f.profile, 4).bits(f.level, 4).bits(f.progressive, 1).bits(f.chroma, 2);
    bits.bits(f.width, 2).bits(f.height, 2).bits(f.bit_rate, 12).bits(1, 1).bits(0, 8).bits(0, 1);
    return bits.bits(f.rate_n, 2).bits(f.rate_d, 5).bytes;
}

// A group of pictures header with its time.
inline std::vector<uint8_t> group_header(uint64_t hours, uint64_t minutes, uint64_t seconds, uint64_t pictures) {
    return BitBuilder()
        .bits(0x1B8, 32)
        .bits(0, 1)
        .bits(hours, 5)
        .bits(minutes, 6)
        .bits(1, 1)
        .bits(seconds, 6)
        .bits(pictures, 6)
        .bits(0, 7)
        .bytes;
}

// A picture header with its coding extension and the start of a slice.
inline std::vector<uint8_t> picture(int type, int structure = 3, int top_first = 1, int repeat_first = 0) {
    BitBuilder bits;
    bits.bits(0x100, 32).bits(0, 10).bits(static_cast<uint64_t>(type), 3).bits(0xFFFF, 16).bits(0, 3);
    bits.bits(0x1B5, 32).bits(8, 4).bits(0xFFFF, 16).bits(0, 2).bits(static_cast<uint64_t>(structure), 2);
    bits.bits(static_cast<uint64_t>(top_first), 1).bits(0, 5).bits(static_cast<uint64_t>(repeat_first), 1).bits(0, 9);
    return ByteBuilder().append(bits.bytes).raw({0, 0, 1, 1}).fill(20, 0x55).bytes;
}

} // namespace zat::test
