#include "container/mp4/metadata.h"

#include "common/bytes/tables.h"
#include "common/text/text_codes.h"

#include <algorithm>

namespace zat::mp4 {

namespace {

// Well-known types of values (QuickTime File Format, "Well-Known Types").
enum ValueType : uint32_t { value_utf8 = 1, value_utf16 = 2, value_shift_jis = 3 };

// UTF-16 announces itself with a byte order mark.
void convert(Bytes bytes, char* out, size_t size) {
    if (bytes.size() >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) {
        utf16be_to_utf8(bytes, out, size);
    } else {
        claimed_utf8_to_utf8(text_of(bytes), out, size);
    }
}

// The text of the first "data" atom in an item: type 4, locale 4, value.
void read_item_text(Reader* reader, Span item, char* out, size_t size) {
    Atom atom;
    while (next_child(reader, &item, &atom)) {
        if (atom.type == fourcc("data")) {
            uint8_t buffer[metadata_text_size];
            const uint32_t type = read_be32(reader, atom.payload, 0);
            const Bytes value = read_box(reader, sub_span(atom.payload, 8), buffer);
            if (type == value_utf16) {
                utf16be_to_utf8(value, out, size);
            } else if (type == value_shift_jis) {
                cp932_to_utf8(text_of(value), out, size);
            } else if (type <= value_utf8) {
                convert(value, out, size);
            }
            return;
        }
    }
}

uint32_t count_values(Reader* reader, Span item) {
    uint32_t count = 0;
    Atom atom;
    while (next_child(reader, &item, &atom)) {
        count += atom.type == fourcc("data") && size_of(atom.payload) > 8 ? 1 : 0;
    }
    return count;
}

// Where a text goes. The first source in a table counts, then the next ones fill what is empty.
enum class Target : uint8_t { none, title, artist, writer };

struct TargetText {
    char* text;
    size_t size;
};

TargetText text_of_target(ZatDetails* details, Target target) {
    switch (target) {
    case Target::title:
        return {details->title, sizeof details->title};
    case Target::artist:
        return {details->artist, sizeof details->artist};
    case Target::writer:
        return {details->writer, sizeof details->writer};
    default:
        return {nullptr, 0};
    }
}

// A target that is still empty.
bool wanted(const TargetText& target) {
    return target.text != nullptr && target.text[0] == '\0';
}

constexpr uint32_t copyright_code(const char (&text)[4]) {
    return 0xA9000000U | static_cast<uint32_t>(text[0]) << 16 |
           static_cast<uint32_t>(text[1]) << 8 | static_cast<uint32_t>(text[2]);
}

enum class Form : uint8_t { international, titled }; // the second is 3GPP's

struct UserText {
    uint32_t type;
    Target target;
    Form form = Form::international;
};

// Items of iTunes have the types of QuickTime's texts.
constexpr UserText user_texts[] = {
    {copyright_code("nam"), Target::title},
    {copyright_code("ART"), Target::artist},
    {copyright_code("too"), Target::writer},
    {copyright_code("swr"), Target::writer},
    {fourcc("titl"), Target::title, Form::titled},
    {fourcc("perf"), Target::artist, Form::titled},
};

const UserText* find_user_text(uint32_t type) {
    return find_row(user_texts, &UserText::type, type);
}

struct KeyedText {
    std::string_view key;
    Target target;
};

constexpr KeyedText keyed_texts[] = {
    {"com.apple.quicktime.title", Target::title},
    {"com.apple.quicktime.displayname", Target::title},
    {"com.apple.quicktime.artist", Target::artist},
    {"com.apple.quicktime.software", Target::writer},
    {"title", Target::title},
    {"artist", Target::artist},
    {"encoder", Target::writer},
};

// What the items that have a number for a type are, by the table of keys: version and flags, the
// count, then for each its size, namespace and name.
struct Keys {
    static constexpr uint32_t most = 64;
    Target targets[most] = {};
    uint32_t count = 0;
};

void read_keys(Reader* reader, Span payload, Keys* keys) {
    Span space = sub_span(payload, 8);
    Atom key;
    while (keys->count < Keys::most && next_child(reader, &space, &key)) {
        uint8_t name[64];
        const std::string_view text = text_of(read_box(reader, key.payload, name));
        for (const KeyedText& row : keyed_texts) {
            if (row.key == text) {
                keys->targets[keys->count] = row.target;
            }
        }
        ++keys->count;
    }
}

Target target_of_item(const Keys& keys, uint32_t type) {
    if (type >= 1 && type <= keys.count) {
        return keys.targets[type - 1];
    }
    const UserText* row = find_user_text(type);
    return row != nullptr ? row->target : Target::none;
}

void read_items(Reader* reader, Span list, const Keys& keys, ZatDetails* details) {
    Atom item;
    while (next_child(reader, &list, &item)) {
        const TargetText target = text_of_target(details, target_of_item(keys, item.type));
        if (wanted(target)) {
            read_item_text(reader, item.payload, target.text, target.size);
        } else if (item.type == fourcc("covr")) {
            details->pictures += count_values(reader, item.payload);
        }
    }
}

// Version and flags come first in MP4, and in QuickTime files not.
Span children_of_meta(Reader* reader, Span meta) {
    return read_be32(reader, meta, 4) == fourcc("hdlr") ? meta : sub_span(meta, 4);
}

void read_titled_text(Reader* reader, Span payload, char* out, size_t size) {
    uint8_t buffer[metadata_text_size];
    convert(read_box(reader, sub_span(payload, 6), buffer), out, size); // version, flags, language
}

} // namespace

void read_international_text(Reader* reader, Span payload, char* out, size_t size) {
    uint8_t buffer[metadata_text_size];
    const Bytes bytes = read_box(reader, payload, buffer);
    if (bytes.size() > 4) {
        const size_t length = std::min<size_t>(ReadBE16(bytes.data()), bytes.size() - 4);
        convert(bytes.subspan(4, length), out, size);
    }
}

void read_metadata(Reader* reader, Span meta, ZatDetails* details) {
    Keys keys;
    const Span children = children_of_meta(reader, meta);
    Span space = children;
    Atom atom;
    while (next_child(reader, &space, &atom)) {
        if (atom.type == fourcc("keys")) {
            read_keys(reader, atom.payload, &keys);
        }
    }
    space = children;
    while (next_child(reader, &space, &atom)) {
        if (atom.type == fourcc("ilst")) {
            read_items(reader, atom.payload, keys, details);
        }
    }
}

void read_user_data(Reader* reader, Span user_data, ZatDetails* details) {
    Span space = user_data;
    Atom atom;
    while (next_child(reader, &space, &atom)) {
        if (atom.type == fourcc("meta")) {
            read_metadata(reader, atom.payload, details);
        }
    }
    space = user_data;
    while (next_child(reader, &space, &atom)) {
        const UserText* row = find_user_text(atom.type);
        const TargetText target =
            text_of_target(details, row != nullptr ? row->target : Target::none);
        if (!wanted(target)) {
            continue;
        }
        if (row->form == Form::titled) {
            read_titled_text(reader, atom.payload, target.text, target.size);
        } else {
            read_international_text(reader, atom.payload, target.text, target.size);
        }
    }
}

} // namespace zat::mp4
