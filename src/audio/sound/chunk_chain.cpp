#include "audio/sound/chunk_chain.h"

#include "common/text/text.h"

namespace zat {

void add_to_chain(ChunkChain* chain, const ChainLink& link) {
    if (chain->is_full) {
        return;
    }
    char name[5] = {};
    for (int i = 0; i < 4; ++i) {
        name[i] = static_cast<char>(link.id >> (24 - 8 * i));
    }
    char text[2 * chunk_chain_size];
    const size_t length = format_text(text, sizeof text, "%s%s[%s%s]", chain->text,
        link.follows_zeros ? "+" : "", name, link.remark);
    chain->is_full = length >= chunk_chain_size;
    copy_text(chain->text, text);
}

} // namespace zat
