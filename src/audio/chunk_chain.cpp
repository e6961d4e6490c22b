#include "audio/chunk_chain.h"

#include "common/text.h"

namespace zat {

void add_to_chain(ChunkChain* chain, uint32_t id, bool follows_zeros, const char* remark) {
    if (chain->is_full) {
        return;
    }
    char name[5] = {};
    for (int i = 0; i < 4; ++i) {
        name[i] = static_cast<char>(id >> (24 - 8 * i));
    }
    char text[2 * chunk_chain_size];
    const size_t length = format_text(
        text, sizeof text, "%s%s[%s%s]", chain->text, follows_zeros ? "+" : "", name, remark);
    chain->is_full = length >= chunk_chain_size;
    copy_text(chain->text, text);
}

} // namespace zat
