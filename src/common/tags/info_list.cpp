#include "common/tags/info_list.h"

#include "common/text/text.h"
#include "common/text/text_codes.h"

namespace zat {

namespace {

// The text of a chunk, whose code nothing tells.
void read_text(Reader* reader, const Chunk& chunk, TagText& out) {
    const Bytes bytes = read_view(reader, chunk.payload, 0, tag_text_size);
    const auto* text = reinterpret_cast<const char*>(bytes.data());
    unknown_to_utf8(bounded_text(text, bytes.size()), out);
}

} // namespace

void read_info_list(Reader* reader, Span list, TagTexts* texts, TagText& writer) {
    Chunk chunk;
    while (next_chunk(reader, &list, &chunk)) {
        switch (chunk.id) {
        case fourcc("IART"):
            read_text(reader, chunk, texts->artist);
            break;
        case fourcc("INAM"):
            read_text(reader, chunk, texts->title);
            break;
        case fourcc("IPRD"):
            read_text(reader, chunk, texts->album);
            break;
        case fourcc("ISFT"):
            read_text(reader, chunk, writer);
            break;
        default:
            break;
        }
    }
}

} // namespace zat
