// The chunks of a file by their ids, as an extra line shows them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t chunk_chain_size = 64; // bytes, terminator included

// The ids in file order: "[fmt ][data]+[LIST(INFOTAG)]". A "+" stands for zero bytes, mostly the
// pad byte of a chunk of odd size.
struct ChunkChain {
    char text[chunk_chain_size] = {};
    bool is_full = false;
};

// Appends an id, the first character in the top byte, up to its first zero byte, and a remark.
void add_to_chain(ChunkChain* chain, uint32_t id, bool follows_zeros, const char* remark = "");

} // namespace zat
