#include "common/crc.h"

#include <array>

namespace zat {

namespace {

using Table = std::array<uint32_t, 256>;

// For four bytes at a time: the sum of a byte with none to three zero bytes behind it.
constexpr std::array<Table, 4> make_tables() {
    std::array<Table, 4> tables{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t crc = i;
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
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

constexpr std::array<Table, 4> tables = make_tables();

} // namespace

uint32_t crc32(Bytes bytes, uint32_t crc) {
    crc = ~crc;
    for (; bytes.size() >= 4; bytes = bytes.subspan(4)) {
        crc ^= ReadLE32(bytes.data());
        crc = tables[3][crc & 0xFF] ^ tables[2][crc >> 8 & 0xFF] ^ tables[1][crc >> 16 & 0xFF] ^
              tables[0][crc >> 24];
    }
    for (const uint8_t byte : bytes) {
        crc = crc >> 8 ^ tables[0][(crc ^ byte) & 0xFF];
    }
    return ~crc;
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
