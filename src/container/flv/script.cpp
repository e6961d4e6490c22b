#include "container/flv/script.h"

#include "common/text/text.h"

#include <iterator>
#include <string_view>

namespace zat {

namespace {

// Values nested deeper than this end the walk.
constexpr int max_depth = 64;

enum AmfType : uint8_t {
    amf_number = 0,
    amf_string = 2,
    amf_ecma_array = 8,
    amf_object_end = 9,
};

// What a value holds behind its fixed bytes and its counted text.
enum class Content : uint8_t { none, entries, values };

// How a value is stepped over, in this order of its parts.
struct ValueLayout {
    bool readable;
    uint8_t fixed;  // bytes
    uint8_t length; // bytes of the length of a text
    Content content;
};

// AMF0, section 2.1, by type. The end marker is no value, and the reserved types have no layout.
constexpr ValueLayout layouts[] = {
    {true, 8, 0, Content::none},    // number
    {true, 1, 0, Content::none},    // boolean
    {true, 0, 2, Content::none},    // string
    {true, 0, 0, Content::entries}, // object
    {},                             // movie clip, reserved
    {true, 0, 0, Content::none},    // null
    {true, 0, 0, Content::none},    // undefined
    {true, 2, 0, Content::none},    // reference
    {true, 4, 0, Content::entries}, // ECMA array; its count is a hint
    {},                             // object end
    {true, 0, 0, Content::values},  // strict array
    {true, 10, 0, Content::none},   // date with time zone
    {true, 0, 4, Content::none},    // long string
    {true, 0, 0, Content::none},    // unsupported
    {},                             // record set, reserved
    {true, 0, 4, Content::none},    // XML document
    {true, 0, 2, Content::entries}, // typed object, its class name first
};

struct Cursor {
    Bytes rest;
};

// The next `count` bytes; null, at the cursor's end, when there are fewer.
const uint8_t* take(Cursor* cursor, size_t count) {
    if (count > cursor->rest.size()) {
        cursor->rest = {};
        return nullptr;
    }
    const uint8_t* bytes = cursor->rest.data();
    cursor->rest = cursor->rest.subspan(count);
    return bytes;
}

// A text behind its length of two or four bytes.
bool take_text(Cursor* cursor, int length_bytes, std::string_view* text) {
    const uint8_t* field = take(cursor, static_cast<size_t>(length_bytes));
    if (field == nullptr) {
        return false;
    }
    const uint32_t length = length_bytes == 2 ? ReadBE16(field) : ReadBE32(field);
    const uint8_t* bytes = take(cursor, length);
    *text = {reinterpret_cast<const char*>(bytes), bytes == nullptr ? 0 : length};
    return bytes != nullptr;
}

// An entry's name and the type of its value. False at the end marker and at the cursor's end.
bool take_entry(Cursor* cursor, std::string_view* name, uint8_t* type) {
    if (!take_text(cursor, 2, name)) {
        return false;
    }
    const uint8_t* byte = take(cursor, 1);
    if (byte == nullptr) {
        return false;
    }
    *type = *byte;
    return !name->empty() || *type != amf_object_end;
}

// A value whose contents are being stepped over.
struct Level {
    Content content;
    uint32_t values; // left in a strict array
};

// Reads all of a value but its contents, which become a level of their own.
bool enter_value(Cursor* cursor, uint8_t type, Level* levels, int* depth) {
    if (type >= std::size(layouts) || !layouts[type].readable) {
        return false;
    }
    const ValueLayout& layout = layouts[type];
    std::string_view text;
    if (take(cursor, layout.fixed) == nullptr ||
        (layout.length != 0 && !take_text(cursor, layout.length, &text))) {
        return false;
    }
    if (layout.content == Content::none) {
        return true;
    }
    if (*depth == max_depth) {
        return false;
    }
    uint32_t values = 0;
    if (layout.content == Content::values) {
        const uint8_t* count = take(cursor, 4);
        if (count == nullptr) {
            return false;
        }
        values = ReadBE32(count);
    }
    levels[(*depth)++] = {layout.content, values};
    return true;
}

// The type of the level's next value; false at the level's end.
bool next_value(Cursor* cursor, Level* level, uint8_t* type) {
    if (level->content == Content::entries) {
        std::string_view name;
        return take_entry(cursor, &name, type);
    }
    if (level->values == 0) {
        return false;
    }
    --level->values;
    const uint8_t* byte = take(cursor, 1);
    if (byte == nullptr) {
        return false;
    }
    *type = *byte;
    return true;
}

// Steps over a value and all that is in it. False when the walk cannot go on behind it.
bool skip_value(Cursor* cursor, uint8_t type) {
    Level levels[max_depth];
    int depth = 0;
    if (!enter_value(cursor, type, levels, &depth)) {
        return false;
    }
    while (depth > 0) {
        if (!next_value(cursor, &levels[depth - 1], &type)) {
            --depth;
        } else if (!enter_value(cursor, type, levels, &depth)) {
            return false;
        }
    }
    return true;
}

struct KnownNumber {
    std::string_view name;
    double FlvMetadata::*field;
};

// Annex E.5.
constexpr KnownNumber known_numbers[] = {
    {"duration", &FlvMetadata::duration},
    {"width", &FlvMetadata::width},
    {"height", &FlvMetadata::height},
    {"framerate", &FlvMetadata::frame_rate},
    {"videodatarate", &FlvMetadata::video_rate},
    {"audiodatarate", &FlvMetadata::audio_rate},
    {"filesize", &FlvMetadata::file_size},
};

using TextField = char (FlvMetadata::*)[256];

struct KnownText {
    std::string_view name;
    TextField field;
};

// As encoders and the programs that inject metadata write them.
constexpr KnownText known_texts[] = {
    {"title", &FlvMetadata::title},
    {"artist", &FlvMetadata::artist},
    {"encoder", &FlvMetadata::encoder},
    {"creator", &FlvMetadata::creator},
    {"metadatacreator", &FlvMetadata::metadata_creator},
};

void store_text(std::string_view name, std::string_view value, FlvMetadata* metadata) {
    for (const KnownText& known : known_texts) {
        if (name == known.name && (metadata->*known.field)[0] == '\0') {
            copy_text(metadata->*known.field, value);
        }
    }
}

void store_number(std::string_view name, double value, FlvMetadata* metadata) {
    for (const KnownNumber& known : known_numbers) {
        if (name == known.name) {
            metadata->*known.field = value;
        }
    }
}

} // namespace

void ParseFlvScript(Bytes data, FlvMetadata* metadata) {
    Cursor cursor{data};
    std::string_view text;
    const uint8_t* type = take(&cursor, 1);
    if (type == nullptr || *type != amf_string || !take_text(&cursor, 2, &text)) {
        return;
    }
    type = take(&cursor, 1);
    if (type == nullptr || *type != amf_ecma_array || take(&cursor, 4) == nullptr) {
        return;
    }
    uint8_t value_type = 0;
    while (take_entry(&cursor, &text, &value_type)) {
        if (value_type == amf_number) {
            const uint8_t* number = take(&cursor, 8);
            if (number == nullptr) {
                return;
            }
            store_number(text, ReadBEFloat64(number), metadata);
        } else if (value_type == amf_string) {
            std::string_view value;
            if (!take_text(&cursor, 2, &value)) {
                return;
            }
            store_text(text, value, metadata);
        } else if (!skip_value(&cursor, value_type)) {
            return;
        }
    }
}

} // namespace zat
