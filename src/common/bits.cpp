#include "common/bits.h"

#include <cstring>

namespace zat {

uint32_t PeekBits(const uint8_t* buffer, int n) {
    uint64_t value = 0;
    const int whole = n / 8;
    const int rest = n % 8;
    for (int i = 0; i < whole; ++i) {
        value = value << 8 | buffer[i];
    }
    if (rest != 0) {
        value = value << rest | PeekBits8(buffer + whole, rest);
    }
    return static_cast<uint32_t>(value);
}

int ShiftBitsOut(uint8_t* buffer, size_t length, size_t n) {
    if (length < 2) {
        return 2;
    }
    if (n == 0) {
        return 1;
    }
    const size_t whole = n / 8 < length ? n / 8 : length;
    if (whole != 0) {
        std::memmove(buffer, buffer + whole, length - whole);
        std::memset(buffer + length - whole, 0, whole);
    }
    const unsigned rest = n % 8;
    if (rest != 0) {
        for (size_t i = 0; i < length; ++i) {
            const unsigned next = i + 1 < length ? buffer[i + 1] : 0;
            buffer[i] = static_cast<uint8_t>(buffer[i] << rest | next >> (8 - rest));
        }
    }
    return 0;
}

void ByteToBitText(uint8_t byte, char* text) {
    char* out = text + std::strlen(text);
    for (int bit = 7; bit >= 0; --bit) {
        *out++ = (byte >> bit & 1) != 0 ? '1' : '0';
        if (bit == 4) {
            *out++ = '-';
        }
    }
    *out = '\0';
}

uint32_t BitTextToValue(const char* bit_text, size_t n) {
    uint32_t value = 0;
    for (size_t i = 0; i < n; ++i) {
        value = value << 1 | (*bit_text == '1' ? 1U : 0U);
        bit_text += *bit_text != '\0' ? 1 : 0;
    }
    return value;
}

uint64_t VintValue(const uint8_t* buffer) {
    const int length = VintLength(buffer[0]);
    if (length == 0) {
        return 0;
    }
    uint64_t value = buffer[0] & (0xFFU >> length);
    for (int i = 1; i < length; ++i) {
        value = value << 8 | buffer[i];
    }
    return value;
}

uint32_t peek_bits(const BitReader* reader, int n) {
    uint64_t value = 0;
    const size_t first = reader->position / 8;
    for (size_t i = first; i < first + 5; ++i) {
        value = value << 8 | (i < reader->bytes.size() ? reader->bytes[i] : 0U);
    }
    const auto unused = static_cast<int>(40 - reader->position % 8) - n;
    return static_cast<uint32_t>(value >> unused & ((uint64_t{1} << n) - 1));
}

uint32_t read_bits(BitReader* reader, int n) {
    const uint32_t value = peek_bits(reader, n);
    skip_bits(reader, static_cast<size_t>(n));
    return value;
}

void skip_bits(BitReader* reader, size_t n) {
    const size_t end = reader->bytes.size() * 8;
    if (n > end - reader->position) {
        reader->position = end;
        reader->failed = true;
        return;
    }
    reader->position += n;
}

} // namespace zat
