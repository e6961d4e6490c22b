#include "common/tags/outer_tags.h"

#include "common/bytes/bytes.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint8_t has_footer = 0x10;

// APE tag footer (APEv2): "APETAGEX", version, size of items and footer, count, flags.
constexpr uint32_t ape_has_header = 0x80000000;

constexpr int64_t lyrics3_trailer = 15; // six digits, "LYRICS200"

// Files have one tag of a kind, or two.
constexpr int tail_tag_limit = 16;

// One read shows an ID3v1 tag with the footer before it.
constexpr int64_t tail_view = 256;

// The last `count` bytes of the stream, fewer when it is shorter.
Bytes tail(Reader* reader, Span stream, int64_t count) {
    return read_view(reader, stream, std::max<int64_t>(size_of(stream) - count, 0),
        static_cast<uint32_t>(count));
}

// The sign of an ID3v1 tag also stands within that of an APE tag.
bool is_ape_sign(Bytes tail, size_t at) {
    constexpr size_t within = 3;
    return at >= within && has_at(tail, at - within, "APETAGEX");
}

bool peel_id3v1(Bytes tail, OuterTags* tags) {
    if (tail.size() < id3v1_size) {
        return false;
    }
    const size_t at = tail.size() - id3v1_size;
    if (!has_at(tail, at, "TAG") || is_ape_sign(tail, at)) {
        return false;
    }
    tags->id3v1 = {tags->stream.end - id3v1_size, tags->stream.end};
    tags->stream.end -= id3v1_size;
    return true;
}

bool peel_lyrics3(Bytes tail, OuterTags* tags) {
    if (tail.size() < lyrics3_trailer) {
        return false;
    }
    const uint8_t* trailer = tail.data() + tail.size() - lyrics3_trailer;
    if (!starts_with(trailer + lyrics3_digits, "LYRICS200")) {
        return false;
    }
    int64_t size = lyrics3_trailer;
    int64_t weight = 1;
    for (int64_t i = lyrics3_digits - 1; i >= 0; --i) {
        if (trailer[i] < '0' || trailer[i] > '9') {
            return false;
        }
        size += (trailer[i] - '0') * weight;
        weight *= 10;
    }
    if (size > size_of(tags->stream)) {
        return false;
    }
    tags->lyrics3 += size;
    tags->stream.end -= size;
    return true;
}

bool peel_ape(Bytes tail, OuterTags* tags) {
    if (tail.size() < ape_footer_size) {
        return false;
    }
    const uint8_t* footer = tail.data() + tail.size() - ape_footer_size;
    const int64_t size = ReadLE32(footer + 12);
    const int64_t header = (ReadLE32(footer + 20) & ape_has_header) != 0 ? ape_footer_size : 0;
    if (!starts_with(footer, "APETAGEX") || size < ape_footer_size ||
        size + header > size_of(tags->stream)) {
        return false;
    }
    if (tags->ape == 0) {
        tags->ape_version = ReadLE32(footer + 8);
        tags->ape_items = {tags->stream.end - size, tags->stream.end - ape_footer_size};
    }
    tags->ape += size + header;
    tags->stream.end -= size + header;
    return true;
}

} // namespace

uint32_t sync_safe(const uint8_t* bytes) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = value << 7 | (bytes[i] & 0x7F);
    }
    return value;
}

int64_t whole_id3v2_size(const uint8_t* header) {
    if (!starts_with(header, "ID3")) {
        return 0;
    }
    return int64_t{sync_safe(header + 6)} + id3v2_header_size +
           ((header[5] & has_footer) != 0 ? id3v2_header_size : 0);
}

Span span_behind_id3v2(Reader* reader) {
    Span span = whole_file(reader);
    for (;;) {
        uint8_t header[id3v2_header_size];
        if (!read_all(reader, span, 0, header, sizeof header)) {
            return span;
        }
        const int64_t size = whole_id3v2_size(header);
        if (size == 0 || size > size_of(span)) {
            return span;
        }
        span.start += size;
    }
}

OuterTags measure_outer_tags(Reader* reader) {
    OuterTags tags;
    tags.stream = span_behind_id3v2(reader);
    tags.id3v2.end = tags.stream.start;
    for (int i = 0; i < tail_tag_limit; ++i) {
        const Bytes bytes = tail(reader, tags.stream, tail_view);
        // ID3v1 last: its three letters may also be those of an "APETAGEX" further back.
        if (!peel_ape(bytes, &tags) && !peel_lyrics3(bytes, &tags) && !peel_id3v1(bytes, &tags)) {
            break;
        }
    }
    return tags;
}

} // namespace zat
