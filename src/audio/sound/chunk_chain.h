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

struct ChainLink {
    uint32_t id = 0; // the first character in the top byte; shown up to its first zero byte
    bool follows_zeros = false;
    const char* remark = ""; // shown behind the id
};

void add_to_chain(ChunkChain* chain, const ChainLink& link);

} // namespace zat
