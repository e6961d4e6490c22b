// Chunks of RIFF files, with sizes that may lie.
#pragma once

#include "support/byte_builder.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace zat::test {

constexpr int64_t true_size = -1;

// With the pad byte of an odd size.
inline std::vector<uint8_t> riff_chunk(std::string_view id, const std::vector<uint8_t>& payload, int64_t size = true_size) {
    const auto whole = static_cast<int64_t>(payload.size());
    ByteBuilder chunk;
    chunk.text(id).le32(static_cast<uint64_t>(size == true_size ? whole : size)).append(payload);
    return chunk.fill(payload.size() % 2).bytes;
}

// A "LIST" or "RIFF" with its type.
inline std::vector<uint8_t> riff_list(
    std::string_view id, std::string_view type, std::initializer_list<std::vector<uint8_t>> chunks, int64_t size = true_size) {
    ByteBuilder content;
    content.text(type);
    for (const std::vector<uint8_t>& chunk : chunks) {
        content.append(chunk);
    }
    return riff_chunk(id, content.bytes, size);
}

} // namespace zat::test
