// Bit fields, most significant bit first.
//
// Two readers: the functions on a buffer take the next bits from its front and shift them out, so
// that the buffer itself is the state; BitReader keeps a cursor over bytes that stay as they are.
#pragma once

#include "common/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// The mask with its top n (0 to 8) bits set: n times shifted right with bit 7 set.
constexpr uint8_t TopBitsMask(int n, uint8_t mask = 0) {
    for (int i = 0; i < n; ++i) {
        mask = static_cast<uint8_t>(mask >> 1 | 0x80);
    }
    return mask;
}

// The first n (1 to 8) bits of the buffer.
constexpr uint32_t PeekBits8(const uint8_t* buffer, int n) {
    return static_cast<uint32_t>(buffer[0] & TopBitsMask(n)) >> (8 - n);
}

// The first n (9 to 16) bits of the buffer.
constexpr uint32_t PeekBits16(const uint8_t* buffer, int n) {
    return (buffer[0] * 256U + (buffer[1] & TopBitsMask(n - 8))) >> (16 - n);
}

// The first n (1 to 32) bits of the buffer.
uint32_t PeekBits(const uint8_t* buffer, int n);

// Removes the first n bits and fills zeros in behind. Returns 0, 1 when n is 0 (nothing is removed)
// and 2 when the buffer is shorter than two bytes.
int ShiftBitsOut(uint8_t* buffer, size_t length, size_t n);

// Appends the byte as eight characters '0' and '1', with "-" after the fourth. `text` has room for
// ten bytes more.
void ByteToBitText(uint8_t byte, char* text);

// The value of the first n characters, each '1' a set bit and any other character a clear one. The
// text's end counts as clear bits.
uint32_t BitTextToValue(const char* bit_text, size_t n);

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

void skip_bits(BitReader* reader, size_t n);

} // namespace zat
