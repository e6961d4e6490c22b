// The extra line that lists a file's tags, and what those around a stream say of it.
#pragma once

#include "common/record/extra_lines.h"
#include "common/tags/outer_tags.h"
#include "common/tags/tag_texts.h"

#include <cstdint>

namespace zat {

// Kinds with a count of 0 are left out.
struct TagList {
    const OuterTags& outer;
    int64_t inner_id3v2 = 0; // bytes of ID3v2 tags inside the stream
    uint32_t comments = 0;   // Vorbis comment items
    uint32_t pictures = 0;   // of the stream's own
    bool cuesheet = false;
    int64_t junk = 0; // bytes before the stream
};

// "ID3v2(211Byte),APEv2(120Byte),ID3v1"; nothing without tags.
void add_tag_fact(ExtraLines* extra, const TagList& tags);

// Completes the texts by the tags around the stream and by the stream's own, by their rank.
void complete_by_tags(
    Reader* reader, const OuterTags& outer, Span inner_id3v2, const TagTexts& own, TagTexts* texts);

} // namespace zat
