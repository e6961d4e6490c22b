#include "common/bytes/crc.h"

#include <array>

namespace zat {

namespace {

using Table = std::array<uint32_t, 256>;

// For four bytes at a time: the sum of a byte with none to three zero bytes behind it.
using Tables = std::array<Table, 4>;

// Sums whose bits come lowest first.
constexpr Tables make_low_first_tables(uint32_t polynomial) {
    Tables tables{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t crc = i;
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ ((crc & 1) != 0 ? polynomial : 0U);
        }
        tables[0][i] = crc;
    }
    for (size_t behind = 1; behind < tables.size(); ++behind) {
        for (uint32_t i = 0; i < 256; ++i) {
            const uint32_t crc = tables[behind - 1][i];
            tables[behind][i] = crc >> 8 ^ tables[0][crc & 0xFF];
        }
    }
    return tables;
}

constexpr Tables make_high_first_tables(uint32_t polynomial) {
    Tables tables{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t crc = i << 24;
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc << 1 ^ ((crc & 0x80000000) != 0 ? polynomial : 0U);
        }
        tables[0][i] = crc;
    }
    for (size_t behind = 1; behind < tables.size(); ++behind) {
        for (uint32_t i = 0; i < 256; ++i) {
            const uint32_t crc = tables[behind - 1][i];
            tables[behind][i] = crc << 8 ^ tables[0][crc >> 24];
        }
    }
    return tables;
}

constexpr Tables zip_tables = make_low_first_tables(0xEDB88320);
constexpr Tables mpeg2_tables = make_high_first_tables(0x04C11DB7);

} // namespace

uint32_t crc32(Bytes bytes, uint32_t crc) {
    crc = ~crc;
    for (; bytes.size() >= 4; bytes = bytes.subspan(4)) {
        crc ^= ReadLE32(bytes.data());
        crc = zip_tables[3][crc & 0xFF] ^ zip_tables[2][crc >> 8 & 0xFF] ^
              zip_tables[1][crc >> 16 & 0xFF] ^ zip_tables[0][crc >> 24];
    }
    for (const uint8_t byte : bytes) {
        crc = crc >> 8 ^ zip_tables[0][(crc ^ byte) & 0xFF];
    }
    return ~crc;
}

uint32_t crc32_mpeg2(Bytes bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (; bytes.size() >= 4; bytes = bytes.subspan(4)) {
        crc ^= ReadBE32(bytes.data());
        crc = mpeg2_tables[3][crc >> 24] ^ mpeg2_tables[2][crc >> 16 & 0xFF] ^
              mpeg2_tables[1][crc >> 8 & 0xFF] ^ mpeg2_tables[0][crc & 0xFF];
    }
    for (const uint8_t byte : bytes) {
        crc = crc << 8 ^ mpeg2_tables[0][crc >> 24 ^ byte];
    }
    return crc;
}

uint8_t crc8(Bytes bytes) {
    constexpr uint32_t polynomial = 0x107; // x^8 + x^2 + x + 1
    uint32_t crc = 0;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc << 1 ^ ((crc & 0x80) != 0 ? polynomial : 0U);
        }
    }
    return static_cast<uint8_t>(crc);
}

uint32_t crc24(Bytes bytes) {
    uint32_t crc = 0xB704CE;
    for (const uint8_t byte : bytes) {
        crc ^= uint32_t{byte} << 16;
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc << 1 ^ ((crc & 0x800000) != 0 ? 0x1864CFBU : 0U);
        }
    }
    return crc & 0xFFFFFF;
}

} // namespace zat
