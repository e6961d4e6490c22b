// Fixed-width fields from byte buffers. None looks at a length: callers have checked it.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace zat {

using Bytes = std::span<const uint8_t>;

constexpr uint16_t ReadLE16(const uint8_t* p) {
    return static_cast<uint16_t>(p[1] << 8 | p[0]);
}

constexpr uint16_t ReadBE16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] << 8 | p[1]);
}

constexpr uint32_t ReadBE24(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) << 16 | static_cast<uint32_t>(p[1]) << 8 | p[2];
}

constexpr uint32_t ReadLE32(const uint8_t* p) {
    return static_cast<uint32_t>(ReadLE16(p + 2)) << 16 | ReadLE16(p);
}

constexpr uint32_t ReadBE32(const uint8_t* p) {
    return static_cast<uint32_t>(ReadBE16(p)) << 16 | ReadBE16(p + 2);
}

constexpr int64_t ReadLE64(const uint8_t* p) {
    return static_cast<int64_t>(static_cast<uint64_t>(ReadLE32(p + 4)) << 32 | ReadLE32(p));
}

constexpr int64_t ReadBE64(const uint8_t* p) {
    return static_cast<int64_t>(static_cast<uint64_t>(ReadBE32(p)) << 32 | ReadBE32(p + 4));
}

// IEEE 754 single precision, widened.
constexpr double ReadBEFloat32(const uint8_t* p) {
    return static_cast<double>(std::bit_cast<float>(ReadBE32(p)));
}

constexpr double ReadBEFloat64(const uint8_t* p) {
    return std::bit_cast<double>(ReadBE64(p));
}

// Unsigned 16.16 fixed point.
constexpr double ReadBEFixed16_16(const uint8_t* p) {
    return ReadBE16(p) + ReadBE16(p + 2) / 65536.0;
}

// Four hexadecimal characters; any other character counts with its own code.
constexpr int32_t ReadHex4(const char* text) {
    int32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        const char c = text[i];
        int32_t digit = static_cast<unsigned char>(c);
        if (c >= '0' && c <= '9') {
            digit -= '0';
        } else if (c >= 'A' && c <= 'Z') {
            digit -= 55;
        } else if (c >= 'a' && c <= 'z') {
            digit -= 87;
        }
        value = value * 16 + digit;
    }
    return value;
}

// True when `text` (its terminator aside) stands at p.
template <size_t N>
bool starts_with(const uint8_t* p, const char (&text)[N]) {
    return std::memcmp(p, text, N - 1) == 0;
}

// The same for a buffer of any length.
template <size_t N>
bool has_at(Bytes bytes, size_t offset, const char (&text)[N]) {
    return offset <= bytes.size() && N - 1 <= bytes.size() - offset &&
           starts_with(bytes.data() + offset, text);
}

// The byte at `offset`, 0 behind the end: for a look at a file's start that may be cut short.
constexpr uint8_t byte_at(Bytes bytes, size_t offset) {
    return offset < bytes.size() ? bytes[offset] : uint8_t{0};
}

// Copies the first bytes, zeros where there are fewer: a header that may be cut short.
template <size_t N>
void copy_padded(Bytes bytes, uint8_t (&out)[N]) {
    std::memset(out, 0, N);
    if (!bytes.empty()) { // an empty view may have no address
        std::memcpy(out, bytes.data(), bytes.size() < N ? bytes.size() : N);
    }
}

// The number of zero bytes at the front.
size_t leading_zeros(Bytes bytes);

// The bytes as a text of whatever code.
inline std::string_view text_of(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Position of the first pair of bytes a, b at or after `from`, or -1 when none lies in `bytes`.
int64_t find_byte_pair(Bytes bytes, size_t from, uint8_t a, uint8_t b);

} // namespace zat
