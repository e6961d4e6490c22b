#include "audio/mp3_details.h"

#include "audio/stream_facts.h"
#include "common/tag_texts.h"

#include <algorithm>

namespace zat {

namespace {

constexpr int64_t ape_header_size = 32;

struct ApeTag {
    Span items;
    int64_t size = 0; // bytes, with header and footer
};

// The APE tag whose footer was found (APE tags, versions 1 and 2).
ApeTag locate_ape_tag(Reader* reader, const TagSizes& tags) {
    constexpr uint32_t has_header = 0x80000000;
    if (tags.ape_footer == 0) {
        return {};
    }
    const Span file = whole_file(reader);
    const int64_t end = file.end - tags.id3v1 - tags.lyrics3;
    const Span footer = sub_span(file, end - ape_header_size, ape_header_size);
    const int64_t size = read_le32(reader, footer, 12); // of items and footer
    const uint32_t flags = read_le32(reader, footer, 20);
    if (size < ape_header_size || size > end) {
        return {};
    }
    return {{end - size, end - ape_header_size},
        size + ((flags & has_header) != 0 ? ape_header_size : 0)};
}

bool read_frame(Reader* reader, int64_t position, MpegAudioInfo* info) {
    *info = {};
    const Bytes frame =
        read_view(reader, sub_span(whole_file(reader), position), 0, vbr_header_reach);
    if (frame.size() < mpeg_audio_header_size || !IsMpegAudioSync(frame.data()) ||
        read_mpeg_audio_header(frame, info) != 0) {
        return false;
    }
    (void)ParseVbrHeader(frame.first(std::min<size_t>(frame.size(), info->frame_size)), info);
    return true;
}

} // namespace

void read_tag_details(Reader* reader, const TagSizes& tags, ZatDetails* details) {
    const Span file = whole_file(reader);
    TagTexts texts;
    if (const ApeTag ape = locate_ape_tag(reader, tags); ape.size != 0) {
        read_ape_texts(reader, ape.items, &texts);
    }
    if (tags.id3v2 != 0) {
        TagTexts id3v2;
        read_id3v2_texts(reader, sub_span(file, 0, tags.id3v2), &id3v2);
        complete_texts(&texts, id3v2);
    }
    if (tags.id3v1 != 0) {
        TagTexts id3v1;
        read_id3v1_texts(reader, sub_span(file, file.end - tags.id3v1), &id3v1);
        complete_texts(&texts, id3v1);
    }
    tag_details(texts, details);
}

void read_mp3_facts(Reader* reader, const TagSizes& tags, int64_t start, ZatStream* stream) {
    MpegAudioInfo info;
    // A frame that counts the others is the first one, also when the search preferred a later pair.
    if (read_frame(reader, tags.id3v2, &info) && info.frame_count != 0) {
        start = tags.id3v2;
    } else if (!read_frame(reader, start, &info)) {
        return;
    }
    mpeg_audio_facts(info, stream);
    const int64_t ape = std::max<int64_t>(locate_ape_tag(reader, tags).size, tags.ape_footer);
    complete_by_bytes(whole_file(reader).end - tags.id3v1 - tags.lyrics3 - ape - start, stream);
}

} // namespace zat
