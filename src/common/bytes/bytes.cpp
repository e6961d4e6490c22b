#include "common/bytes/bytes.h"

namespace zat {

namespace {

constexpr size_t wide_size = 128;
constexpr size_t word_size = 8;
constexpr size_t nearby = 64; // bytes in which words find a pair sooner than blocks

// A vector register's bytes, which GCC and Clang know on every machine.
using Lanes = uint8_t __attribute__((vector_size(16)));

Lanes lanes_at(const uint8_t* bytes) {
    Lanes lanes;
    std::memcpy(&lanes, bytes, sizeof lanes);
    return lanes;
}

// Free of branches: as fast as memchr, and not slower on data that is full of the first byte.
bool block_has_pair(const uint8_t* block, uint8_t a, uint8_t b) {
    auto pairs = Lanes{} != Lanes{};
#pragma GCC unroll 8
    for (size_t i = 0; i < wide_size; i += sizeof(Lanes)) {
        pairs |= (lanes_at(block + i) == a) & (lanes_at(block + i + 1) == b);
    }
    uint64_t halves[2];
    static_assert(sizeof halves == sizeof pairs);
    std::memcpy(halves, &pairs, sizeof halves);
    return (halves[0] | halves[1]) != 0;
}

// The first of eight places where the pair stands, 8 when it stands at none: a byte of `difference`
// is zero there, and the lowest such byte is the lowest that loses its top bit to the subtraction.
size_t pair_in_word(const uint8_t* p, uint8_t a, uint8_t b) {
    constexpr uint64_t ones = 0x0101010101010101;
    constexpr uint64_t tops = 0x8080808080808080;
    const auto word = [](const uint8_t* at) { return static_cast<uint64_t>(ReadLE64(at)); };
    const uint64_t difference = (word(p) ^ ones * a) | (word(p + 1) ^ ones * b);
    const uint64_t found = (difference - ones) & ~difference & tops;
    return static_cast<size_t>(std::countr_zero(found)) / 8;
}

} // namespace

int64_t find_byte_pair(Bytes bytes, size_t from, uint8_t a, uint8_t b) {
    const size_t end = bytes.empty() ? 0 : bytes.size() - 1; // of the places for `a`
    const uint8_t* p = bytes.data();
    size_t at = from;
    // A pair is often close by: blocks only once it is not.
    for (size_t checked = 0; at + word_size <= end; at += word_size, checked += word_size) {
        if (checked >= nearby) {
            while (end - at >= wide_size && !block_has_pair(p + at, a, b)) {
                at += wide_size;
            }
            checked = 0;
            if (end - at < word_size) {
                break;
            }
        }
        const size_t place = pair_in_word(p + at, a, b);
        if (place != word_size) {
            return static_cast<int64_t>(at + place);
        }
    }
    for (; at < end; ++at) {
        if (p[at] == a && p[at + 1] == b) {
            return static_cast<int64_t>(at);
        }
    }
    return -1;
}

size_t leading_zeros(Bytes bytes) {
    size_t count = 0;
    for (uint64_t word = 0; bytes.size() - count >= sizeof word; count += sizeof word) {
        std::memcpy(&word, bytes.data() + count, sizeof word);
        if (word != 0) {
            break;
        }
    }
    while (count < bytes.size() && bytes[count] == 0) {
        ++count;
    }
    return count;
}

} // namespace zat
