#include "container/avi/info_list.h"

#include "common/extra_info.h"
#include "common/tag_texts.h"
#include "common/text.h"
#include "common/text_codes.h"

namespace zat::avi {

namespace {

// The text of a chunk, whose code nothing tells.
void read_text(Reader* reader, const Chunk& chunk, char (&out)[tag_text_size]) {
    const Bytes bytes = read_view(reader, chunk.payload, 0, tag_text_size);
    const auto* text = reinterpret_cast<const char*>(bytes.data());
    unknown_to_utf8(bounded_text(text, bytes.size()), out);
}

} // namespace

void write_info(Reader* reader, Span list, const Output& out) {
    TagTexts texts;
    char writer[tag_text_size] = {};
    Chunk chunk;
    while (next_chunk(reader, &list, &chunk)) {
        switch (chunk.id) {
        case fourcc("IART"):
            read_text(reader, chunk, texts.artist);
            break;
        case fourcc("INAM"):
            read_text(reader, chunk, texts.title);
            break;
        case fourcc("IPRD"):
            read_text(reader, chunk, texts.album);
            break;
        case fourcc("ISFT"):
            read_text(reader, chunk, writer);
            break;
        default:
            break;
        }
    }
    write_artist_and_title(texts, out);
    append_writer(out, bounded_text(writer));
}

} // namespace zat::avi
