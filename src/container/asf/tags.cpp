#include "container/asf/tags.h"

#include "common/text/text.h"

namespace zat::asf {

namespace {

constexpr size_t name_size = 64; // bytes, UTF-8; longer names are none of those wanted

enum ValueType : uint16_t { value_text = 0, value_bool = 2, value_dword = 3 };

struct Attribute {
    uint16_t stream = 0; // 0: all of the file
    char name[name_size] = {};
    uint16_t type = value_text;
    Span value = {};
};

// The numbers of the short types, whatever their size.
uint32_t number_of(Reader* reader, const Attribute& attribute) {
    const Bytes bytes = read_view(reader, attribute.value, 0, 4);
    return bytes.size() == 4   ? ReadLE32(bytes.data())
           : bytes.size() == 2 ? ReadLE16(bytes.data())
                               : 0;
}

// Where the text of a name goes; null for the others.
char* text_field(std::string_view name, Header* header) {
    const struct {
        std::string_view name;
        char* field;
    } rows[] = {
        {"Author", header->texts.artist},
        {"Title", header->texts.title},
        {"WM/AlbumTitle", header->texts.album},
        {"WM/ToolName", header->tool_name},
        {"WM/ToolVersion", header->tool_version},
        {"WM/EncodingSettings", header->settings},
        {"WMFSDKVersion", header->sdk_version},
    };
    for (const auto& row : rows) {
        if (row.name == name) {
            return row.field;
        }
    }
    return nullptr;
}

void take_stream_attribute(Reader* reader, const Attribute& attribute, StreamExtras* extras) {
    const std::string_view name = bounded_text(attribute.name);
    if (name == "AspectRatioX") {
        extras->aspect_x = number_of(reader, attribute);
    } else if (name == "AspectRatioY") {
        extras->aspect_y = number_of(reader, attribute);
    } else if (name == "IsVBR") {
        extras->tells_vbr = true;
        extras->vbr = number_of(reader, attribute) != 0;
    }
}

void take_attribute(Reader* reader, const Attribute& attribute, Header* header) {
    const std::string_view name = bounded_text(attribute.name);
    if (name == "WM/Picture") {
        ++header->texts.pictures;
        return;
    }
    char* field = text_field(name, header);
    if (field != nullptr && attribute.type == value_text && field[0] == '\0') {
        read_text(reader, attribute.value, field, tag_text_size);
    }
    if (attribute.stream == 0) {
        for (StreamExtras& extras : header->extras) {
            take_stream_attribute(reader, attribute, &extras);
        }
    } else if (attribute.stream < stream_numbers) {
        take_stream_attribute(reader, attribute, &header->extras[attribute.stream]);
    }
}

// A text takes the place of one of another object; an empty one does not.
void read_if_any(Reader* reader, Span text, TagText& field) {
    TagText found;
    read_text(reader, text, found);
    if (found[0] != '\0') {
        copy_text(field, bounded_text(found));
    }
}

} // namespace

void read_content_description(Reader* reader, Span data, Header* header) {
    constexpr int64_t texts_at = 10; // behind five lengths
    const Bytes lengths = read_view(reader, data, 0, 4);
    if (lengths.size() < 4) {
        return;
    }
    const uint16_t title = ReadLE16(lengths.data());
    const uint16_t author = ReadLE16(lengths.data() + 2);
    read_if_any(reader, sub_span(data, texts_at, title), header->texts.title);
    read_if_any(reader, sub_span(data, texts_at + title, author), header->texts.artist);
}

void read_extended_content(Reader* reader, Span data, Header* header) {
    Span rest = sub_span(data, 2);
    const Bytes count = read_view(reader, data, 0, 2);
    for (uint32_t left = count.size() == 2 ? ReadLE16(count.data()) : 0; left != 0; --left) {
        uint8_t size[2];
        uint8_t head[4]; // type and size
        Attribute attribute;
        if (!read_all(reader, rest, 0, size, sizeof size)) {
            return;
        }
        const uint16_t length = ReadLE16(size);
        read_text(reader, sub_span(rest, 2, length), attribute.name);
        rest = sub_span(rest, 2 + int64_t{length});
        if (!read_all(reader, rest, 0, head, sizeof head)) {
            return;
        }
        attribute.type = ReadLE16(head);
        attribute.value = sub_span(rest, sizeof head, ReadLE16(head + 2));
        rest = sub_span(rest, int64_t{sizeof head} + ReadLE16(head + 2));
        take_attribute(reader, attribute, header);
    }
}

void read_metadata(Reader* reader, Span data, Header* header) {
    Span rest = sub_span(data, 2);
    const Bytes count = read_view(reader, data, 0, 2);
    for (uint32_t left = count.size() == 2 ? ReadLE16(count.data()) : 0; left != 0; --left) {
        uint8_t head[12]; // language, stream, name's size, type, value's size
        if (!read_all(reader, rest, 0, head, sizeof head)) {
            return;
        }
        const int64_t name_length = ReadLE16(head + 4);
        const int64_t value_length = ReadLE32(head + 8);
        Attribute attribute;
        attribute.stream = ReadLE16(head + 2);
        attribute.type = ReadLE16(head + 6);
        read_text(reader, sub_span(rest, sizeof head, name_length), attribute.name);
        attribute.value =
            sub_span(rest, static_cast<int64_t>(sizeof head) + name_length, value_length);
        rest = sub_span(rest, static_cast<int64_t>(sizeof head) + name_length + value_length);
        take_attribute(reader, attribute, header);
    }
}

} // namespace zat::asf
