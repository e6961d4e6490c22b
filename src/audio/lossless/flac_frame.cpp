#include "audio/lossless/flac_frame.h"

#include "common/bytes/bits.h"
#include "common/bytes/crc.h"

#include <algorithm>
#include <bit>

namespace zat {

namespace {

constexpr uint32_t reserved_code = 0xFFFFFFFF;
constexpr uint32_t in_next_8_bits = 0xFFFFFFF0;
constexpr uint32_t in_next_16_bits = 0xFFFFFFF1;
constexpr uint32_t in_next_16_bits_by_10 = 0xFFFFFFF2;

constexpr uint32_t flac_rates[16] = {0, 88200, 176400, 192000, 8000, 16000, 22050, 24000, 32000,
    44100, 48000, 96000, in_next_8_bits, in_next_16_bits, in_next_16_bits_by_10, reserved_code};

constexpr uint32_t sample_sizes[8] = {0, 8, 12, reserved_code, 16, 20, 24, 32};

constexpr uint32_t channel_counts[16] = {1, 2, 3, 4, 5, 6, 7, 8, 2, 2, 2, reserved_code,
    reserved_code, reserved_code, reserved_code, reserved_code};

constexpr uint32_t block_size(uint32_t code) {
    return code == 0   ? reserved_code
           : code == 1 ? 192
           : code < 6  ? 576U << (code - 2)
           : code == 6 ? in_next_8_bits
           : code == 7 ? in_next_16_bits
                       : 256U << (code - 8);
}

// A number of up to 36 bits in the form of UTF-8 carried on to seven bytes.
uint64_t read_coded_number(BitReader* bits) {
    const uint32_t first = read_bits(bits, 8);
    const int ones = std::countl_one(static_cast<uint8_t>(first));
    if (ones == 0) {
        return first;
    }
    if (ones == 1 || ones == 8) {
        bits->failed = true;
        return 0;
    }
    uint64_t number = first & (0x7FU >> ones);
    for (int i = 1; i < ones; ++i) {
        const uint32_t next = read_bits(bits, 8);
        bits->failed = bits->failed || (next & 0xC0) != 0x80;
        number = number << 6 | (next & 0x3F);
    }
    return number;
}

} // namespace

bool read_flac_frame(Bytes bytes, FlacFrame* frame) {
    BitReader bits{.bytes = bytes};
    constexpr uint32_t sync = 0x7FFC; // 14 bits set, a clear one
    if (read_bits(&bits, 15) != sync) {
        return false;
    }
    FlacFrame found;
    found.variable = read_bits(&bits, 1) != 0;
    found.block = block_size(read_bits(&bits, 4));
    found.sample_rate = flac_rates[read_bits(&bits, 4)];
    found.channels = channel_counts[read_bits(&bits, 4)];
    found.bits = sample_sizes[read_bits(&bits, 3)];
    const bool reserved_bit = read_bits(&bits, 1) != 0;
    if (reserved_bit || found.block == reserved_code || found.sample_rate == reserved_code ||
        found.channels == reserved_code || found.bits == reserved_code) {
        return false;
    }
    found.number = read_coded_number(&bits);
    if (found.block == in_next_8_bits || found.block == in_next_16_bits) {
        found.block = read_bits(&bits, found.block == in_next_8_bits ? 8 : 16) + 1;
    }
    if (found.sample_rate == in_next_8_bits) {
        found.sample_rate = read_bits(&bits, 8) * 1000;
    } else if (found.sample_rate >= in_next_16_bits) {
        const uint32_t unit = found.sample_rate == in_next_16_bits_by_10 ? 10 : 1;
        found.sample_rate = read_bits(&bits, 16) * unit;
    }
    const size_t length = bits.position / 8;
    if (read_bits(&bits, 8) != crc8(bytes.first(std::min(length, bytes.size()))) || bits.failed) {
        return false;
    }
    *frame = found;
    return true;
}

} // namespace zat
