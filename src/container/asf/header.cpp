#include "container/asf/header.h"

#include "common/bytes/tables.h"
#include "common/record/details.h"
#include "common/text/text_codes.h"
#include "container/asf/tags.h"

#include <algorithm>

namespace zat::asf {

namespace {

constexpr uint64_t header_object = guid(0x75B22630, 0x668E);
constexpr uint64_t data_object = guid(0x75B22636, 0x668E);
constexpr uint64_t header_extension = guid(0x5FBF03B5, 0xA92E);

constexpr int64_t header_children_at = 6;     // behind the objects' count, in the data
constexpr int64_t extension_children_at = 22; // behind two reserved fields and the size
constexpr int64_t packets_at = 26;
constexpr uint32_t top_level_limit = 64; // objects

struct TypeRow {
    uint64_t guid;
    StreamType type;
};

constexpr TypeRow stream_types[] = {
    {guid(0xF8699E40, 0x5B4D), StreamType::audio},
    {guid(0xBC19EFC0, 0x5B4D), StreamType::video},
    {guid(0x59DACFC0, 0x59E6), StreamType::command},
    {guid(0xB61BE100, 0x5B4E), StreamType::image}, // JFIF
    {guid(0x35907DE0, 0xE415), StreamType::image}, // degradable JPEG
    {guid(0x91BD222C, 0xF21C), StreamType::file_transfer},
    {guid(0x3AFB65E2, 0x47EF), StreamType::binary},
};

template <uint32_t N>
bool read_fields(Reader* reader, Span data, int64_t offset, uint8_t (&fields)[N]) {
    return read_all(reader, data, offset, fields, N);
}

void read_file_properties(Reader* reader, Span data, Header* header) {
    uint8_t fields[80];
    if (!read_fields(reader, data, 0, fields)) {
        return;
    }
    constexpr uint32_t broadcast_flag = 1;
    header->has_properties = true;
    header->created = static_cast<uint64_t>(ReadLE64(fields + 24));
    header->packets = static_cast<uint64_t>(ReadLE64(fields + 32));
    header->play_duration = static_cast<uint64_t>(ReadLE64(fields + 40));
    header->preroll = static_cast<uint64_t>(ReadLE64(fields + 56));
    header->broadcast = (ReadLE32(fields + 64) & broadcast_flag) != 0;
    header->smallest_packet = ReadLE32(fields + 68);
    header->largest_packet = ReadLE32(fields + 72);
}

StreamType type_of(uint64_t type) {
    const TypeRow* row = find_row(stream_types, &TypeRow::guid, type);
    return row != nullptr ? row->type : StreamType::unknown;
}

Stream* stream_of_number(Header* header, uint8_t number) {
    for (uint32_t i = 0; i < header->stream_count; ++i) {
        if (header->streams[i].number == number) {
            return &header->streams[i];
        }
    }
    return header->stream_count < stream_limit ? &header->streams[header->stream_count++] : nullptr;
}

void read_stream_properties(Reader* reader, Span data, Header* header) {
    constexpr int64_t type_data_at = 54;
    constexpr uint16_t encrypted_flag = 0x8000;
    uint8_t fields[type_data_at];
    if (!read_fields(reader, data, 0, fields)) {
        return;
    }
    const uint16_t flags = ReadLE16(fields + 48);
    const auto number = static_cast<uint8_t>(flags & (stream_numbers - 1));
    Stream* stream = stream_of_number(header, number);
    if (stream == nullptr) {
        return;
    }
    stream->number = number;
    stream->type = type_of(read_guid(fields));
    stream->encrypted = (flags & encrypted_flag) != 0;
    stream->type_data = sub_span(data, type_data_at, ReadLE32(fields + 40));
}

// The stream's names and payload extensions; behind them its own properties may stand.
Span behind_names(Reader* reader, Span data, uint16_t names, uint16_t extensions, Span* first) {
    Span rest = data;
    for (uint32_t i = 0; i < names; ++i) {
        uint8_t head[4]; // language, size
        if (!read_fields(reader, rest, 0, head)) {
            return {};
        }
        const int64_t size = ReadLE16(head + 2);
        if (i == 0) {
            *first = sub_span(rest, sizeof head, size);
        }
        rest = sub_span(rest, static_cast<int64_t>(sizeof head) + size);
    }
    for (uint32_t i = 0; i < extensions; ++i) {
        uint8_t head[22]; // GUID, data size, size of information
        if (!read_fields(reader, rest, 0, head)) {
            return {};
        }
        rest = sub_span(rest, static_cast<int64_t>(sizeof head) + ReadLE32(head + 18));
    }
    return rest;
}

void read_extended_properties(Reader* reader, Span data, Header* header) {
    uint8_t fields[64];
    if (!read_fields(reader, data, 0, fields)) {
        return;
    }
    StreamExtras* extras = &header->extras[ReadLE16(fields + 48) & (stream_numbers - 1)];
    extras->data_rate = ReadLE32(fields + 16);
    extras->has_language = true;
    extras->language = ReadLE16(fields + 50);
    extras->frame_time = static_cast<uint64_t>(ReadLE64(fields + 52));
    Span rest = behind_names(reader, sub_span(data, sizeof fields), ReadLE16(fields + 60),
        ReadLE16(fields + 62), &extras->name);
    Object object;
    if (next_object(reader, &rest, &object) && object.id == guid(0xB7DC0791, 0xA9B7)) {
        read_stream_properties(reader, object.data, header);
    }
}

void read_bit_rates(Reader* reader, Span data, Header* header) {
    const Bytes count = read_view(reader, data, 0, 2);
    const uint32_t records = count.size() == 2 ? ReadLE16(count.data()) : 0;
    uint8_t record[6]; // number, rate
    for (uint32_t i = 0; i < records && read_fields(reader, data, 2 + int64_t{i} * 6, record);
         ++i) {
        header->extras[ReadLE16(record) & (stream_numbers - 1)].packet_rate = ReadLE32(record + 2);
    }
}

void keep_languages(Reader* /*reader*/, Span data, Header* header) {
    header->languages = data;
}

void keep_codec_list(Reader* /*reader*/, Span data, Header* header) {
    header->codec_list = data;
}

void read_markers(Reader* reader, Span data, Header* header) {
    constexpr int64_t entries_at = 24; // behind the size of the markers' name, and the name
    constexpr int64_t smallest_entry = 30;
    const Bytes name = read_view(reader, data, entries_at - 2, 2);
    const int64_t room =
        name.size() == 2 ? size_of(sub_span(data, entries_at + ReadLE16(name.data()))) : 0;
    header->markers = static_cast<uint32_t>(
        std::min<int64_t>(read_le32(reader, data, 16), room / smallest_entry));
}

void read_script_commands(Reader* reader, Span data, Header* header) {
    const Bytes count = read_view(reader, data, 16, 2);
    header->script_commands = count.size() == 2 ? ReadLE16(count.data()) : 0;
}

void note_drm(Reader* /*reader*/, Span /*data*/, Header* header) {
    header->drm = true;
}

struct ObjectRow {
    uint64_t id;
    void (*read)(Reader* reader, Span data, Header* header);
};

constexpr ObjectRow object_rows[] = {
    {guid(0x8CABDCA1, 0xA947), read_file_properties},
    {guid(0xB7DC0791, 0xA9B7), read_stream_properties},
    {guid(0x14E6A5CB, 0xC672), read_extended_properties},
    {guid(0x7BF875CE, 0x468D), read_bit_rates},
    {guid(0x7C4346A9, 0xEFE0), keep_languages},
    {guid(0x86D15240, 0x311D), keep_codec_list},
    {guid(0x75B22633, 0x668E), read_content_description},
    {guid(0xD2D0A440, 0xE307), read_extended_content},
    {guid(0xC5F8CBEA, 0x5BAF), read_metadata},
    {guid(0x44231C94, 0x9498), read_metadata},
    {guid(0xF487CD01, 0xA951), read_markers},
    {guid(0x1EFB1A30, 0x0B62), read_script_commands},
    {guid(0x2211B3FB, 0xBD23), note_drm},
    {guid(0x298AE614, 0x2622), note_drm},
    {guid(0x43058533, 0x6981), note_drm},
};

void read_object(Reader* reader, const Object& object, Header* header) {
    for (const ObjectRow& row : object_rows) {
        if (row.id == object.id) {
            row.read(reader, object.data, header);
        }
    }
}

void read_header_objects(Reader* reader, Span space, Header* header) {
    Object object;
    while (next_object(reader, &space, &object)) {
        if (object.id != header_extension) {
            read_object(reader, object, header);
            continue;
        }
        Object child;
        for (Span children = sub_span(object.data, extension_children_at);
             next_object(reader, &children, &child);) {
            read_object(reader, child, header);
        }
    }
}

// The end of an object as announced; the file's where the size cannot be meant.
int64_t announced_end(const Object& object) {
    constexpr uint64_t largest = uint64_t{1} << 52;
    return object.size <= largest ? object.offset + static_cast<int64_t>(object.size) : 0;
}

// A recording that was broken off has data without a size.
void find_open_data(Reader* reader, Span rest, Header* header) {
    const Bytes id = read_view(reader, rest, 0, 6);
    if (id.size() == 6 && read_guid(id.data()) == data_object) {
        header->has_data = true;
        header->data = sub_span(rest, object_header_size + packets_at);
    }
}

} // namespace

bool is_open(const Header& header) {
    return header.broadcast || (header.packets == 0 && header.play_duration == 0);
}

void read_header(Reader* reader, Header* header) {
    Object object;
    Span rest = whole_file(reader);
    for (uint32_t i = 0; i < top_level_limit && !header->has_data; ++i) {
        if (!next_object(reader, &rest, &object)) {
            find_open_data(reader, rest, header);
            return;
        }
        if (object.id == header_object) {
            header->announced_end = std::max(header->announced_end, announced_end(object));
            read_header_objects(reader, sub_span(object.data, header_children_at), header);
        } else if (object.id == data_object) {
            header->has_data = true;
            header->data = sub_span(object.data, packets_at);
            if (is_open(*header) && size_of(header->data) == 0) {
                header->data = rest; // its size was not known
            }
            header->announced_end = std::max(header->announced_end, announced_end(object));
        }
    }
}

void read_text(Reader* reader, Span text, char* out, size_t size) {
    constexpr uint32_t longest = 2 * tag_text_size; // bytes of UTF-16 that are looked at
    const Bytes bytes = read_view(reader, text, 0, longest);
    utf16le_to_utf8(bytes, out, size);
    std::string_view whole{out};
    while (!whole.empty() && whole.front() == ' ') {
        whole.remove_prefix(1);
    }
    while (!whole.empty() && whole.back() == ' ') {
        whole.remove_suffix(1);
    }
    copy_utf8(out, size, whole);
}

void read_language(Reader* reader, const Header& header, uint16_t index, char (&out)[32]) {
    out[0] = '\0';
    const Bytes count = read_view(reader, header.languages, 0, 2);
    if (count.size() < 2 || index >= ReadLE16(count.data())) {
        return;
    }
    Span rest = sub_span(header.languages, 2);
    for (uint32_t i = 0; i <= index; ++i) {
        const Bytes size = read_view(reader, rest, 0, 1);
        if (size.empty()) {
            return;
        }
        const uint8_t length = size[0];
        if (i == index) {
            read_text(reader, sub_span(rest, 1, length), out);
        }
        rest = sub_span(rest, 1 + int64_t{length});
    }
}

void read_setting(
    Reader* reader, const Header& header, uint16_t type, uint32_t order, char (&out)[256]) {
    out[0] = '\0';
    const uint32_t entries = read_le32(reader, header.codec_list, 16);
    Span rest = sub_span(header.codec_list, 20);
    for (uint32_t i = 0; i < entries; ++i) {
        Span parts[3]; // name, description, information
        uint8_t field[2];
        if (!read_fields(reader, rest, 0, field)) {
            return;
        }
        const uint16_t entry_type = ReadLE16(field);
        rest = sub_span(rest, sizeof field);
        for (int part = 0; part < 3; ++part) {
            if (!read_fields(reader, rest, 0, field)) {
                return;
            }
            const int64_t length = int64_t{ReadLE16(field)} * (part < 2 ? 2 : 1);
            parts[part] = sub_span(rest, sizeof field, length);
            rest = sub_span(rest, static_cast<int64_t>(sizeof field) + length);
        }
        if (entry_type == type && order-- == 0) {
            read_text(reader, parts[1], out);
            return;
        }
    }
}

} // namespace zat::asf
