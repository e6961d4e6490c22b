#include "container/mpeg_ps/stream_table.h"

#include "common/record/details.h"

#include <algorithm>

namespace zat::ps {

namespace {

struct IdRange {
    uint8_t first;
    uint8_t last;
    Kind kind;
    uint8_t header; // bytes in front of the elementary stream
};

// The first payload byte of private stream 1 (DVD Specifications for Read-Only Disc, part 3; SVCD,
// IEC 62107; HD DVD). Audio has the number of frames and the position of the first one behind it,
// LPCM three bytes more.
constexpr IdRange substreams[] = {
    {0x00, 0x03, Kind::cvd_subtitle, 1},
    {0x20, 0x3F, Kind::dvd_subtitle, 1},
    {0x70, 0x70, Kind::svcd_subtitle, 1},
    {0x80, 0x87, Kind::ac3, 4},
    {0x88, 0x8F, Kind::dts, 4},
    {0x98, 0x9F, Kind::dts, 4},
    {0xA0, 0xAF, Kind::lpcm, 4},
    {0xB0, 0xBF, Kind::mlp, 4},
    {0xC0, 0xCF, Kind::ac3, 4},
};

// stream_id_extension (ISO/IEC 13818-1, 2.4.3.7, and Blu-ray Disc).
constexpr IdRange extensions[] = {
    {0x55, 0x5F, Kind::video, 0},
    {0x60, 0x7F, Kind::extension_audio, 0},
};

template <size_t N>
const IdRange* range_of(const IdRange (&ranges)[N], uint8_t id) {
    for (const IdRange& range : ranges) {
        if (id >= range.first && id <= range.last) {
            return &range;
        }
    }
    return nullptr;
}

// Whether a map tells a substream of private stream 1 by an id that no packet can have.
bool is_substream(uint8_t id, Kind kind) {
    const IdRange* range = id < id_program_stream_map ? range_of(substreams, id) : nullptr;
    return range != nullptr && range->kind == kind;
}

bool find_substream(StreamTable* table, Bytes data, Payload* payload) {
    constexpr uint8_t first_ac3 = 0x80;
    // Broadcast AC-3 has no substream header.
    table->plain_ac3 = table->plain_ac3 || has_at(data, 0, "\x0B\x77");
    if (table->plain_ac3) {
        payload->key |= first_ac3;
        payload->kind = Kind::ac3;
        return true;
    }
    const IdRange* range = data.empty() ? nullptr : range_of(substreams, data[0]);
    if (range == nullptr) {
        return false;
    }
    payload->key |= data[0];
    payload->kind = range->kind;
    // Meridian Lossless Packing of DVD-Audio shares a number with LPCM.
    const bool is_mlp = range->kind == Kind::lpcm && has_at(data, 8, "\xF8\x72\x6F");
    payload->kind = is_mlp ? Kind::mlp : payload->kind;
    payload->start = std::min(payload->start + range->header, payload->end);
    return true;
}

// DVD navigation: PCI and DSI have fixed lengths and numbers.
bool is_navigation(const Unit& unit) {
    const uint8_t number = byte_at(unit.head, pes_start_size);
    const uint16_t length = unit.packet.packet_length;
    return (length == 0x3D4 && number == 0) || (length == 0x3FA && number == 1);
}

Kind kind_of_type(uint8_t stream_type, uint8_t id) {
    switch (stream_type) {
    case 0x03:
    case 0x04:
        return Kind::mpeg_audio;
    case 0x0F:
    case 0x11:
        return Kind::aac;
    case 0x81:
        return Kind::ac3;
    case 0x84:
    case 0x87:
        return Kind::eac3;
    case 0x82:
    case 0x85:
    case 0x88:
    case 0x8A:
        return Kind::dts;
    case 0x01:
    case 0x02:
    case 0x10:
    case 0x1B:
    case 0x24:
    case 0xEA:
        return Kind::video;
    default:
        return id >= id_video_first && id <= id_video_last   ? Kind::video
               : id >= id_audio_first && id <= id_audio_last ? Kind::mpeg_audio
                                                             : Kind::other;
    }
}

Stream* find(StreamTable* table, uint16_t key) {
    for (size_t i = 0; i < table->count; ++i) {
        if (table->streams[i].key == key) {
            return &table->streams[i];
        }
    }
    return nullptr;
}

ZatStreamKind details_kind(Kind kind) {
    return kind == Kind::video          ? ZAT_STREAM_VIDEO
           : kind == Kind::navigation   ? ZAT_STREAM_DATA
           : kind >= Kind::dvd_subtitle ? ZAT_STREAM_TEXT
                                        : ZAT_STREAM_AUDIO;
}

Stream* enter(StreamTable* table, uint16_t key, Kind kind) {
    if (table->count == stream_limit) {
        return nullptr;
    }
    Stream* stream = &table->streams[table->count];
    *stream = Stream{};
    stream->key = key;
    stream->kind = kind;
    stream->pictures = &table->pictures[table->count];
    stream->collect = table->collect[table->count++];
    stream->facts = new_stream(details_kind(kind));
    return stream;
}

} // namespace

bool find_payload(StreamTable* table, const Unit& unit, Payload* payload) {
    const uint8_t id = unit.code;
    payload->key = static_cast<uint16_t>(id << 8);
    payload->kind = Kind::other;
    payload->start = unit.position + static_cast<int64_t>(unit.packet.payload);
    payload->end = unit.end;
    if (unit.packet.payload > unit.head.size() || payload->start > payload->end) {
        return false;
    }
    const Bytes data = unit.head.subspan(unit.packet.payload);
    if (id >= id_video_first && id <= id_video_last) {
        payload->kind = Kind::video;
    } else if (id >= id_audio_first && id <= id_audio_last) {
        payload->kind = Kind::mpeg_audio;
    } else if (id == id_private_1) {
        return find_substream(table, data, payload);
    } else if (id == id_private_2) {
        payload->kind = Kind::navigation;
        return is_navigation(unit);
    } else if (id == id_extended) {
        const IdRange* range = range_of(extensions, unit.packet.extension_id);
        payload->key |= unit.packet.extension_id;
        payload->kind = range != nullptr ? range->kind : Kind::other;
    }
    return payload->kind != Kind::other;
}

Stream* known_stream(StreamTable* table, const Payload& payload) {
    return find(table, payload.key);
}

Stream* stream_of(StreamTable* table, const Payload& payload) {
    Stream* stream = find(table, payload.key);
    return stream != nullptr ? stream : enter(table, payload.key, payload.kind);
}

void declare_streams(StreamTable* table, const StreamMap& map) {
    for (size_t i = 0; i < map.count; ++i) {
        const MapEntry& entry = map.entries[i];
        const Kind kind = kind_of_type(entry.stream_type, entry.stream_id);
        const auto key = static_cast<uint16_t>(is_substream(entry.stream_id, kind)
                                                   ? id_private_1 << 8 | entry.stream_id
                                                   : entry.stream_id << 8 | entry.extension_id);
        if (kind == Kind::other || entry.stream_id == id_private_1 ||
            (entry.stream_id == id_extended && entry.extension_id == 0)) {
            continue; // its substreams tell their kinds themselves
        }
        Stream* stream = find(table, key);
        stream = stream != nullptr ? stream : enter(table, key, kind);
        if (stream == nullptr || stream->declared) {
            continue;
        }
        stream->declared = true;
        stream->kind = kind;
        stream->facts.kind =
            details_kind(kind); // packets before the map may have looked like another
        stream->stream_type = entry.stream_type;
        stream->facts.flags |= entry.flags;
        copy_utf8(stream->facts.language, bounded_text(entry.language));
        format_text(
            stream->facts.codec_id, sizeof stream->facts.codec_id, "0x%02X", entry.stream_type);
    }
}

void sort_streams(StreamTable* table) {
    for (size_t i = 0; i < table->count; ++i) {
        table->order[i] = static_cast<uint8_t>(i);
    }
    std::sort(table->order, table->order + table->count,
        [table](uint8_t a, uint8_t b) { return table->streams[a].key < table->streams[b].key; });
}

} // namespace zat::ps
