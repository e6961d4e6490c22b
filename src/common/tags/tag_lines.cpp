#include "common/tags/tag_lines.h"

#include "common/bytes/numbers.h"
#include "common/text/messages.h"
#include "common/text/text.h"

namespace zat {

namespace {

using TextsReader = void (*)(Reader* reader, Span tag, TagTexts* texts);

void complete_by(Reader* reader, Span tag, TextsReader read, TagTexts* texts) {
    if (size_of(tag) == 0) {
        return; // most files have one tag, or none
    }
    TagTexts next;
    read(reader, tag, &next);
    complete_texts(texts, next);
}

} // namespace

void add_tag_fact(ExtraLines* extra, const TagList& tags) {
    constexpr uint32_t first_ape_version = 1000;
    char line[line_size] = "";
    char piece[64];
    const auto add = [&](const char* format, int64_t value) {
        if (value != 0) {
            format_text(
                piece, sizeof piece, format, clamp_to_integer<int32_t>(static_cast<double>(value)));
            AppendWithSeparator(line, piece, separator_comma);
        }
    };
    const OuterTags& outer = tags.outer;
    add("ID3v2(%dByte)", size_of(outer.id3v2) + tags.inner_id3v2);
    add("VorbisComment(%d)", tags.comments);
    add("picture(%d)", tags.pictures);
    if (tags.cuesheet) {
        AppendWithSeparator(line, "cuesheet", separator_comma);
    }
    add(outer.ape_version == first_ape_version ? "APEv1(%dByte)" : "APEv2(%dByte)", outer.ape);
    add("LYRICS3(%dByte)", outer.lyrics3);
    if (size_of(outer.id3v1) != 0) {
        AppendWithSeparator(line, "ID3v1", separator_comma);
    }
    add(message::other_tag, tags.junk);
    if (line[0] != '\0') {
        add_fact(extra, "%s", line);
    }
}

void complete_by_tags(Reader* reader, const OuterTags& outer, Span inner_id3v2, const TagTexts& own,
    TagTexts* texts) {
    complete_by(reader, outer.ape_items, read_ape_texts, texts);
    complete_by(reader, outer.id3v2, read_id3v2_texts, texts);
    complete_by(reader, inner_id3v2, read_id3v2_texts, texts);
    complete_texts(texts, own);
    complete_by(reader, outer.id3v1, read_id3v1_texts, texts);
}

} // namespace zat
