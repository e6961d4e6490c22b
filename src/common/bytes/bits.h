// Bit fields, most significant bit first.
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// EBML variable-length integers (RFC 8794, section 4). Length in bytes that the first byte tells, 0
// for a zero byte.
constexpr int VintLength(uint8_t first) {
    return first == 0 ? 0 : std::countl_zero(first) + 1;
}

// The value without its length marker; the buffer holds VintLength bytes.
uint64_t VintValue(const uint8_t* buffer);

// A cursor over bytes. A read past the end gives zero bits and sets `failed`, which stays set:
// check it once per structure.
struct BitReader {
    Bytes bytes;
    size_t position = 0; // bits
    bool failed = false;
};

// The next n (0 to 32) bits, without moving.
uint32_t peek_bits(const BitReader* reader, int n);

uint32_t read_bits(BitReader* reader, int n);

inline bool read_flag(BitReader* reader) {
    return read_bits(reader, 1) != 0;
}

void skip_bits(BitReader* reader, size_t n);

// Skips n bits behind a flag that says whether they are there.
inline void skip_optional(BitReader* reader, size_t n) {
    if (read_flag(reader)) {
        skip_bits(reader, n);
    }
}

} // namespace zat
