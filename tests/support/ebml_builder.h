// Elements of EBML documents, with sizes that may lie.
#pragma once

#include "support/byte_builder.h"

#include <bit>

#include <initializer_list>
#include <string_view>
#include <vector>

namespace zat::test {

// An identifier and a size of eight bytes, then the data.
inline Data sized_element(uint64_t id, uint64_t size, const Data& data) {
    ByteBuilder to;
    for (int shift = 24; shift >= 0; shift -= 8) {
        if (id >> shift == 0) {
            continue;
        }
        to.u8(id >> shift);
    }
    return to.u8(1).u8(size >> 48).be16(size >> 32).be32(size).append(data).bytes;
}

inline Data element(uint64_t id, const Data& data) {
    return sized_element(id, data.size(), data);
}

inline Data element(uint64_t id, std::initializer_list<Data> children) {
    ByteBuilder all;
    for (const Data& child : children) {
        all.append(child);
    }
    return element(id, all.bytes);
}

constexpr uint64_t unknown_size = (uint64_t{1} << 56) - 1;

inline Data unknown_element(uint64_t id, std::initializer_list<Data> children) {
    ByteBuilder all;
    for (const Data& child : children) {
        all.append(child);
    }
    return sized_element(id, unknown_size, all.bytes);
}

inline Data number(uint64_t id, uint64_t value) {
    return element(id, ByteBuilder().be64(value).bytes);
}

inline Data real(uint64_t id, double value) {
    return number(id, std::bit_cast<uint64_t>(value));
}

inline Data words(uint64_t id, std::string_view value) {
    return element(id, ByteBuilder().text(value).bytes);
}

// One behind the other.
inline Data join_elements(std::initializer_list<Data> parts) {
    ByteBuilder all;
    for (const Data& part : parts) {
        all.append(part);
    }
    return all.bytes;
}

} // namespace zat::test
