// Frames of audio streams that carry their own headers.
#pragma once

#include "support/byte_builder.h"

#include <algorithm>

namespace zat::test {

// AAC in an ADTS frame without a checksum.
struct AdtsFields {
    uint32_t id = 0, profile = 1, rate_index = 4, channels = 2;
    uint32_t fullness = 0x7FF, blocks = 0; // further raw data blocks
};
inline std::vector<uint8_t> adts_frame(uint32_t size, const AdtsFields& f = {}) {
    BitBuilder out;
    out.bits(0xFFF, 12).bits(f.id, 1).bits(0, 2).bits(1, 1).bits(f.profile, 2).bits(f.rate_index, 4);
    out.bits(1, 1).bits(f.channels, 3).bits(0, 4).bits(size, 13).bits(f.fullness, 11).bits(f.blocks, 2);
    return ByteBuilder().append(out.bytes).pad_to(size).bytes;
}

// A program_config_element with a pair in front, one channel behind and an LFE.
inline BitBuilder program_config(BitBuilder out, uint32_t rate_index) {
    out.bits(0, 4).bits(1, 2).bits(rate_index, 4).bits(1, 4).bits(0, 4).bits(1, 4).bits(1, 2).bits(0, 3).bits(0, 4);
    return out.bits(0, 3).bits(1, 1).bits(0, 4).bits(0, 1).bits(0, 4).bits(0, 4).bits(0, 16).bits(0, 8);
}

// A frame that begins with that element.
inline std::vector<uint8_t> adts_program_frame(uint32_t size, const AdtsFields& f) {
    std::vector<uint8_t> frame = adts_frame(size, f);
    const std::vector<uint8_t> element = program_config(BitBuilder().bits(5, 3), f.rate_index).bytes;
    std::copy(element.begin(), element.end(), frame.begin() + 7);
    return frame;
}

// A LOAS frame of `size` bytes around the bits of an AudioMuxElement.
inline std::vector<uint8_t> loas_frame(const BitBuilder& element, uint32_t size) {
    return ByteBuilder().be24(0x2B7 << 13 | (size - 3)).append(element.bytes).pad_to(size).bytes;
}

// An E-AC-3 frame at 48 kHz: of 1536 samples, or of 256 with a block count of 0.
inline std::vector<uint8_t> eac3_frame(
    uint32_t type, uint32_t substream, uint32_t size, uint32_t acmod, uint32_t lfe, int map = -1, uint32_t blocks = 3) {
    BitBuilder out;
    out.bits(0x0B77, 16).bits(type, 2).bits(substream, 3).bits(size / 2 - 1, 11).bits(0, 2).bits(blocks, 2);
    out.bits(acmod, 3).bits(lfe, 1).bits(16, 5).bits(31, 5).bits(0, 1);
    out.bits(0, acmod == 0 ? 6 : 0);
    if (type == 1) {
        out.bits(map >= 0 ? 1 : 0, 1).bits(static_cast<uint64_t>(map), map >= 0 ? 16 : 0);
    }
    return ByteBuilder().append(out.bytes).pad_to(size).bytes;
}

// The header of a DTS extension substream of 140 bytes: 7.1 channels at 96 kHz, 24 bits.
inline std::vector<uint8_t> dts_extension(uint32_t coding_mode, uint32_t extensions) {
    BitBuilder out;
    out.bits(0x64582025, 32).bits(0, 8).bits(0, 2).bits(0, 1).bits(40, 8).bits(139, 16);
    out.bits(1, 1).bits(0, 5).bits(1, 1).bits(0, 36).bits(0, 6).bits(1, 1).bits(3, 8); // time stamp, one asset
    out.bits(1, 1).bits(0, 2).bits(3, 2).bits(0, 2).bits(3, 16);                       // mixed into C, L and R
    out.bits(99, 16).bits(30, 9).bits(0, 3).bits(0, 2).bits(1, 1).bits(0, 10).bits('x', 8);
    out.bits(23, 5).bits(13, 4).bits(7, 8).bits(1, 1).bits(0, 2).bits(1, 1).bits(3, 2).bits(0x84B, 16).bits(0, 3);
    out.bits(1, 1).bits(0, 8).bits(0, 1);                       // dynamic range, dialogue
    out.bits(1, 1).bits(0, 7).bits(0, 5).bits(0, 1).bits(0, 6); // mixing: gain, compression, scale
    out.bits(0, 21).bits(7, 3).bits(0, 18);                     // three coefficients of the last channel
    out.bits(coding_mode, 2).bits(extensions, 12).bits(0, 8);
    return out.bytes;
}

// An MLP access unit of `size` bytes; TrueHD with the type BA, DVD-Audio's with BB, without a major
// sync with 0.
inline std::vector<uint8_t> mlp_unit(uint32_t size, uint32_t type, uint64_t format, uint32_t peak = 0) {
    BitBuilder out;
    out.bits(0xF, 4).bits(size / 2, 12).bits(0, 16);
    if (type != 0) {
        out.bits(0xF8726F00 | type, 32).bits(format, 32).bits(0xB752, 16).bits(0, 32).bits(peak, 16);
    }
    return ByteBuilder().append(out.bytes).pad_to(size, 1).bytes;
}

} // namespace zat::test
