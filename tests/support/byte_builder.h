// Builds files in code; sizes that lie are visible at the call.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zat::test {

using Data = std::vector<uint8_t>;

// The functions that insert are kept out of line: inlined, GCC 12 takes the vector's own moves and
// fills for overflows.
struct ByteBuilder {
    Data bytes;

    ByteBuilder& raw(std::initializer_list<int> values) {
        for (const int value : values) {
            bytes.push_back(static_cast<uint8_t>(value));
        }
        return *this;
    }
    [[gnu::noinline]] ByteBuilder& text(std::string_view value) {
        bytes.insert(bytes.end(), value.begin(), value.end());
        return *this;
    }
    [[gnu::noinline]] ByteBuilder& append(const Data& value) {
        bytes.insert(bytes.end(), value.begin(), value.end());
        return *this;
    }
    [[gnu::noinline]] ByteBuilder& fill(size_t count, int value = 0) {
        bytes.insert(bytes.end(), count, static_cast<uint8_t>(value));
        return *this;
    }
    // Fills up to a total length.
    ByteBuilder& pad_to(size_t length, int value = 0) { return fill(length > bytes.size() ? length - bytes.size() : 0, value); }
    ByteBuilder& u8(uint64_t value) { return big_endian(value, 1); }
    ByteBuilder& be16(uint64_t value) { return big_endian(value, 2); }
    ByteBuilder& be24(uint64_t value) { return big_endian(value, 3); }
    ByteBuilder& be32(uint64_t value) { return big_endian(value, 4); }
    ByteBuilder& be64(uint64_t value) { return big_endian(value, 8); }
    ByteBuilder& le16(uint64_t value) { return little_endian(value, 2); }
    ByteBuilder& le32(uint64_t value) { return little_endian(value, 4); }
    ByteBuilder& le64(uint64_t value) { return little_endian(value, 8); }

    // Overwrites bytes that stand already.
    ByteBuilder& put(size_t at, std::string_view value) {
        for (size_t i = 0; i < value.size(); ++i) {
            bytes.at(at + i) = static_cast<uint8_t>(value[i]);
        }
        return *this;
    }

private:
    ByteBuilder& big_endian(uint64_t value, int width) {
        for (int i = width - 1; i >= 0; --i) {
            bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
        }
        return *this;
    }
    ByteBuilder& little_endian(uint64_t value, int width) {
        for (int i = 0; i < width; ++i) {
            bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
        }
        return *this;
    }
};

// Bytes as hexadecimal digits, blanks between them: "00 01 B3".
inline Data bytes_of_hex(std::string_view digits) {
    Data bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += digits[i] == ' ' ? 1 : 2) {
        if (digits[i] != ' ') {
            bytes.push_back(static_cast<uint8_t>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16)));
        }
    }
    return bytes;
}

inline Data join(std::initializer_list<Data> parts) {
    ByteBuilder all;
    for (const Data& part : parts) {
        all.append(part);
    }
    return all.bytes;
}

inline Data repeated(int count, const Data& part) {
    ByteBuilder all;
    for (int i = 0; i < count; ++i) {
        all.append(part);
    }
    return all.bytes;
}

// Fields of any width, most significant bit first.
struct BitBuilder {
    Data bytes;
    int used = 0; // bits of the last byte

    BitBuilder& bits(uint64_t value, int width) {
        for (int i = width - 1; i >= 0; --i) {
            if (used == 0) {
                bytes.push_back(0);
            }
            bytes.back() = static_cast<uint8_t>(bytes.back() | ((value >> i & 1) << (7 - used)));
            used = (used + 1) % 8;
        }
        return *this;
    }
};

} // namespace zat::test
