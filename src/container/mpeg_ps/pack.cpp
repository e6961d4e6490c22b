#include "container/mpeg_ps/pack.h"

#include "common/bits.h"
#include "common/start_code.h"
#include "container/mpeg_pes.h"

#include <algorithm>

namespace zat::ps {

namespace {

constexpr uint32_t rate_unit = 50; // bytes per second
constexpr size_t mpeg1_size = 12;
constexpr size_t mpeg2_size = 14; // without its stuffing

int read_mpeg2_pack(PackHeader* pack, Bytes bytes) {
    BitReader reader{bytes.subspan(start_code_size)};
    uint32_t markers = 1;
    skip_bits(&reader, 2);                         // '01'
    int64_t clock = read_bits(&reader, 3);         // system_clock_reference_base [32..30]
    markers &= read_bits(&reader, 1);              // marker_bit
    clock = clock << 15 | read_bits(&reader, 15);  // [29..15]
    markers &= read_bits(&reader, 1);              // marker_bit
    clock = clock << 15 | read_bits(&reader, 15);  // [14..0]
    markers &= read_bits(&reader, 1);              // marker_bit
    skip_bits(&reader, 9);                         // system_clock_reference_extension
    markers &= read_bits(&reader, 1);              // marker_bit
    const uint32_t rate = read_bits(&reader, 22);  // program_mux_rate
    markers &= read_bits(&reader, 1);              // marker_bit
    markers &= read_bits(&reader, 1);              // marker_bit
    skip_bits(&reader, 5);                         // reserved
    const size_t stuffing = read_bits(&reader, 3); // pack_stuffing_length
    if (reader.failed || markers == 0) {
        return 1;
    }
    *pack = {true, mpeg2_size + stuffing, clock, rate * rate_unit};
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

// ISO/IEC 13818-1, 2.6.18.
void read_language(Bytes descriptors, MapEntry* entry) {
    constexpr uint8_t language_descriptor = 0x0A;
    for (size_t at = 0; at + 2 <= descriptors.size(); at += 2U + descriptors[at + 1]) {
        if (descriptors[at] != language_descriptor || at + 5 > descriptors.size()) {
            continue;
        }
        const auto is_letter = [](uint8_t c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
        const Bytes code = descriptors.subspan(at + 2, 3);
        if (std::ranges::all_of(code, is_letter)) {
            std::ranges::copy(code, entry->language);
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
        read_language(bytes.subspan(at, std::min(length, bytes.size() - at)), entry);
        at = std::min(at + length, bytes.size());
    }
    return 0;
}

} // namespace zat::ps
