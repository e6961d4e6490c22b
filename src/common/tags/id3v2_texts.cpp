#include "common/tags/outer_tags.h"
#include "common/tags/tag_texts.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"
#include "common/text/utf8.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zat {

namespace {

constexpr uint32_t tag_limit = 16; // of those that stand one behind the other
constexpr uint32_t frame_limit = 1024;
constexpr uint32_t body_size = 2048;              // bytes read of a text
constexpr int64_t unsynchronised_limit = 1048576; // bytes of a tag that must be read in full

constexpr uint8_t tag_unsynchronised = 0x80;
constexpr uint8_t tag_extended = 0x40; // in version 2.2: compressed

enum class Field : uint8_t { artist, title, album, picture, user_text };

struct FrameRow {
    std::string_view id;
    std::string_view short_id; // of version 2.2
    Field field;
};

constexpr FrameRow frame_rows[] = {
    {"TPE1", "TP1", Field::artist},
    {"TIT2", "TT2", Field::title},
    {"TALB", "TAL", Field::album},
    {"APIC", "PIC", Field::picture},
    {"TXXX", "TXX", Field::user_text},
};

// What the frames of a version look like, and the bits of their flags.
struct Version {
    uint32_t id_size;
    uint32_t header_size;
    uint16_t closed;         // compressed or encrypted
    uint16_t grouped;        // a byte with the group stands before the body
    uint16_t has_length;     // four bytes with the length stand before the body
    uint16_t unsynchronised; // the frame alone is, not the tag
};

constexpr Version versions[] = {
    {3, 6, 0, 0, 0, 0},
    {4, 10, 0x00C0, 0x0020, 0, 0},
    {4, 10, 0x000C, 0x0040, 0x0001, 0x0002},
};

// A tag's bytes in their order. Those of a tag that is unsynchronised as a whole come without the
// zero that stands behind each FF.
struct TagBytes {
    Reader* reader;
    Span space;
    int64_t at;
    bool unsynchronised;
    bool behind_ff;
};

uint32_t take_synchronised(TagBytes* tag, uint8_t* out, uint32_t count) {
    uint32_t done = 0;
    while (done < count) {
        const Bytes bytes = read_view(tag->reader, tag->space, tag->at, 512);
        if (bytes.empty()) {
            break;
        }
        size_t used = 0;
        while (used < bytes.size() && done < count) {
            const uint8_t byte = bytes[used++];
            if (tag->behind_ff && byte == 0) {
                tag->behind_ff = false;
                continue;
            }
            tag->behind_ff = byte == 0xFF;
            if (out != nullptr) {
                out[done] = byte;
            }
            ++done;
        }
        tag->at += static_cast<int64_t>(used);
    }
    return done;
}

// Takes up to `count` bytes; into nowhere when `out` is null.
uint32_t take(TagBytes* tag, uint8_t* out, uint32_t count) {
    if (tag->unsynchronised) {
        return take_synchronised(tag, out, count);
    }
    const auto rest = static_cast<uint32_t>(
        std::min<int64_t>(count, std::max<int64_t>(size_of(tag->space) - tag->at, 0)));
    const uint32_t done =
        out == nullptr ? rest : read_some(tag->reader, tag->space, tag->at, out, rest);
    tag->at += done;
    return done;
}

uint32_t synchronise(uint8_t* bytes, uint32_t length) {
    uint32_t kept = 0;
    for (uint32_t i = 0; i < length; ++i) {
        if (i == 0 || bytes[i - 1] != 0xFF || bytes[i] != 0) {
            bytes[kept++] = bytes[i];
        }
    }
    return kept;
}

// Some writers put identifiers of version 2.2 into later tags, with a blank behind them.
bool is_frame_id(Bytes id) {
    const bool blank = id.size() == 4 && id[3] == ' ';
    return std::all_of(id.begin(), id.end() - (blank ? 1 : 0),
        [](uint8_t c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

// True when a frame of this size is followed by another one, by padding or by the tag's end.
bool fits(TagBytes* tag, uint32_t size) {
    const int64_t next = tag->at + size;
    if (next >= size_of(tag->space)) {
        return next == size_of(tag->space);
    }
    const Bytes id = read_view(tag->reader, tag->space, next, 4);
    return !id.empty() && (id[0] == 0 || (id.size() == 4 && is_frame_id(id)));
}

// Version 2.4 has 7 bits in each byte of a size; some writers keep to the 8 of version 2.3.
uint32_t frame_size_2_4(TagBytes* tag, const uint8_t* field) {
    const uint32_t plain = ReadBE32(field);
    const uint32_t size = sync_safe(field);
    return plain != size && !fits(tag, size) && fits(tag, plain) ? plain : size;
}

const FrameRow* find_frame(std::string_view id) {
    const auto* found = std::find_if(std::begin(frame_rows), std::end(frame_rows),
        [id](const FrameRow& row) { return id == row.id || id == row.short_id; });
    return found == std::end(frame_rows) ? nullptr : found;
}

// The values of a text frame one by one.
struct ValueWalk {
    uint8_t code;
    bool big_endian;
    Bytes rest;
    bool ended;
};

// Byte order marks, each before the value that it speaks of and of those behind it.
void take_byte_order(ValueWalk* walk) {
    if (walk->code != 1 || walk->rest.size() < 2) {
        return;
    }
    const uint16_t mark = ReadBE16(walk->rest.data());
    if (mark == 0xFEFF || mark == 0xFFFE) {
        walk->big_endian = mark == 0xFEFF;
        walk->rest = walk->rest.subspan(2);
    }
}

size_t value_length(Bytes bytes, size_t unit) {
    for (size_t at = 0; at + unit <= bytes.size(); at += unit) {
        if (bytes[at] == 0 && bytes[at + unit - 1] == 0) {
            return at;
        }
    }
    return bytes.size();
}

bool next_value(ValueWalk* walk, TagText& value) {
    if (walk->ended) {
        return false;
    }
    const bool wide = walk->code == 1 || walk->code == 2;
    const size_t unit = wide ? 2 : 1;
    take_byte_order(walk);
    const size_t length = value_length(walk->rest, unit);
    const Bytes bytes = walk->rest.first(length);
    if (!wide) {
        unknown_to_utf8(text_of(bytes), value);
    } else if (walk->big_endian) {
        utf16be_to_utf8(bytes, value, sizeof value);
    } else {
        utf16le_to_utf8(bytes, value, sizeof value);
    }
    walk->ended = length + unit > walk->rest.size();
    walk->rest = walk->rest.subspan(std::min(length + unit, walk->rest.size()));
    return true;
}

void take_text(Field field, Bytes body, TagTexts* texts) {
    if (body.empty()) {
        return;
    }
    ValueWalk walk = {body[0], body[0] == 2, body.subspan(1), false};
    TagText value;
    if (field == Field::user_text) {
        TagText name;
        if (next_value(&walk, name) && next_value(&walk, value)) {
            take_gain(bounded_text(name), bounded_text(value), texts);
        }
        return;
    }
    TagText& out = field == Field::artist  ? texts->artist
                   : field == Field::title ? texts->title
                                           : texts->album;
    while (next_value(&walk, value)) {
        add_tag_value(out, bounded_text(value));
    }
}

// The body of a frame that is wanted, `size` bytes behind its header.
void take_frame(TagBytes* tag, const Version& version, const FrameRow& row, uint16_t flags,
    uint32_t size, TagTexts* texts) {
    if (row.field == Field::picture) {
        ++texts->pictures;
    }
    const uint32_t before =
        ((flags & version.grouped) != 0 ? 1U : 0U) + ((flags & version.has_length) != 0 ? 4U : 0U);
    if (row.field == Field::picture || (flags & version.closed) != 0 || before > size) {
        take(tag, nullptr, size);
        return;
    }
    take(tag, nullptr, before);
    uint8_t body[body_size];
    const uint32_t wanted = std::min(size - before, body_size);
    uint32_t length = take(tag, body, wanted);
    take(tag, nullptr, size - before - wanted);
    if ((flags & version.unsynchronised) != 0) {
        length = synchronise(body, length);
    }
    if (wanted < size - before && length != 0 && body[0] == 3) {
        length = static_cast<uint32_t>(without_cut_character(text_of({body, length})).size());
    }
    take_text(row.field, {body, length}, texts);
}

// One frame. False at the end of the frames.
bool read_frame(TagBytes* tag, uint8_t major, uint16_t tag_flags, TagTexts* texts) {
    const Version& version = versions[major - 2];
    uint8_t header[10];
    if (take(tag, header, version.header_size) < version.header_size ||
        !is_frame_id({header, version.id_size})) {
        return false;
    }
    const uint32_t size = major == 2   ? ReadBE24(header + 3)
                          : major == 3 ? ReadBE32(header + 4)
                                       : frame_size_2_4(tag, header + 4);
    const auto flags = static_cast<uint16_t>(major == 2 ? 0 : ReadBE16(header + 8) | tag_flags);
    if (size > size_of(tag->space) - tag->at) {
        return false;
    }
    const FrameRow* row = find_frame(text_of({header, version.id_size}));
    if (row == nullptr) {
        take(tag, nullptr, size);
    } else {
        take_frame(tag, version, *row, flags, size, texts);
    }
    return true;
}

void skip_extended_header(TagBytes* tag, uint8_t major) {
    uint8_t field[4];
    if (take(tag, field, sizeof field) == sizeof field) {
        const uint32_t size = major == 3 ? ReadBE32(field) : sync_safe(field);
        take(tag, nullptr, major == 3 || size < 4 ? size : size - 4);
    }
}

void read_tag(Reader* reader, Span body, const uint8_t* header, TagTexts* texts) {
    const uint8_t major = header[3];
    const uint8_t flags = header[5];
    if (major < 2 || major > 4 || (major == 2 && (flags & tag_extended) != 0)) {
        return;
    }
    TagBytes tag = {reader, body, 0, major < 4 && (flags & tag_unsynchronised) != 0, false};
    if (tag.unsynchronised) {
        tag.space = sub_span(body, 0, unsynchronised_limit);
    }
    if (major > 2 && (flags & tag_extended) != 0) {
        skip_extended_header(&tag, major);
    }
    const uint16_t tag_flags =
        major == 4 && (flags & tag_unsynchronised) != 0 ? versions[2].unsynchronised : uint16_t{0};
    for (uint32_t i = 0; i < frame_limit && read_frame(&tag, major, tag_flags, texts); ++i) {
    }
}

} // namespace

void read_id3v2_texts(Reader* reader, Span tags, TagTexts* texts) {
    int64_t at = 0;
    for (uint32_t i = 0; i < tag_limit; ++i) {
        uint8_t header[id3v2_header_size];
        if (!read_all(reader, tags, at, header, sizeof header)) {
            return;
        }
        const int64_t size = whole_id3v2_size(header);
        if (size == 0) {
            return;
        }
        TagTexts tag;
        read_tag(
            reader, sub_span(tags, at + id3v2_header_size, sync_safe(header + 6)), header, &tag);
        complete_texts(texts, tag);
        at += size;
    }
}

} // namespace zat
