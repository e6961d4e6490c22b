#include "container/mpeg_ps/pack.h"

#include "common/bytes/start_code.h"
#include "container/mpeg_descriptors.h"
#include "container/mpeg_pes.h"

#include <algorithm>

namespace zat::ps {

namespace {

constexpr uint32_t rate_unit = 50; // bytes per second
constexpr size_t mpeg1_size = 12;
constexpr size_t mpeg2_size = 14; // without its stuffing

int read_mpeg2_pack(PackHeader* pack, Bytes bytes) {
    if (bytes.size() < mpeg2_size) {
        return 1;
    }
    // '01', system_clock_reference_base [32..30], a marker_bit, [29..15], a marker_bit, [14..0], a
    // marker_bit, system_clock_reference_extension of 9 bits, a marker_bit
    const uint64_t clock = ReadBE64(&bytes[4]) >> 16;
    constexpr uint64_t clock_markers = 1ULL << 42 | 1 << 26 | 1 << 10 | 1;
    // program_mux_rate of 22 bits, two marker_bits
    const uint32_t rate = ReadBE24(&bytes[10]);
    constexpr uint32_t rate_markers = 3;
    if ((clock & clock_markers) != clock_markers || (rate & rate_markers) != rate_markers) {
        return 1;
    }
    pack->mpeg2 = true;
    pack->size = mpeg2_size + (bytes[13] & 7U); // pack_stuffing_length
    pack->clock = static_cast<int64_t>(
        (clock >> 43 & 7) << 30 | (clock >> 27 & 0x7FFF) << 15 | (clock >> 11 & 0x7FFF));
    pack->byte_rate = (rate >> 2) * rate_unit;
    return 0;
}

int read_mpeg1_pack(PackHeader* pack, Bytes bytes) {
    if (bytes.size() < mpeg1_size) {
        return 1;
    }
    const int64_t clock = read_clock(&bytes[4]);
    if (clock == no_clock || bytes[9] < 0x80 || (bytes[11] & 1) == 0) { // marker bits of the rate
        return 1;
    }
    *pack = {false, mpeg1_size, clock, (ReadBE24(&bytes[9]) >> 1 & 0x3FFFFF) * rate_unit};
    return 0;
}

void read_descriptors(Bytes descriptors, MapEntry* entry) {
    Descriptor descriptor;
    while (next_descriptor(&descriptors, &descriptor)) {
        if (descriptor.tag == tag_language) {
            read_languages(descriptor.data, entry->language, &entry->flags);
        }
    }
}

} // namespace

int read_pack_header(PackHeader* pack, Bytes bytes) {
    if (bytes.size() < mpeg1_size || !has_at(bytes, 0, "\0\0\1\xBA")) {
        return 1;
    }
    if (bytes[4] >> 6 == 1) {
        return read_mpeg2_pack(pack, bytes);
    }
    return bytes[4] >> 4 == 2 ? read_mpeg1_pack(pack, bytes) : 1;
}

int read_stream_map(StreamMap* map, Bytes bytes) {
    constexpr size_t fixed_size = 10; // up to program_stream_info_length
    constexpr size_t entry_size = 4;
    *map = {};
    if (bytes.size() < fixed_size || (bytes[6] & 0x80) == 0) { // current_next_indicator
        return 1;
    }
    const bool single_extension = (bytes[6] & 0x40) != 0; // single_extension_stream_flag
    size_t at = fixed_size + ReadBE16(&bytes[8]);
    if (bytes.size() < at + 2) {
        return 1;
    }
    const size_t map_length = ReadBE16(&bytes[at]); // elementary_stream_map_length
    at += 2;
    bytes = bytes.first(std::min(bytes.size(), at + map_length));
    while (at + entry_size <= bytes.size() && map->count < map_entry_limit) {
        MapEntry* entry = &map->entries[map->count++];
        entry->stream_type = bytes[at];
        entry->stream_id = bytes[at + 1];
        const size_t length = ReadBE16(&bytes[at + 2]); // elementary_stream_info_length
        at += entry_size;
        Bytes descriptors = bytes.subspan(at, std::min(length, bytes.size() - at));
        if (entry->stream_id == id_extended && !single_extension && descriptors.size() >= 3) {
            entry->extension_id = descriptors[2] & 0x7F; // behind a tag and a length of its own
            descriptors = descriptors.subspan(3);
        }
        read_descriptors(descriptors, entry);
        at = std::min(at + length, bytes.size());
    }
    return 0;
}

} // namespace zat::ps
