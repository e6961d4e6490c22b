// The parts of a program stream around its packets: pack header, system header and program stream
// map (ISO/IEC 11172-1, 2.4.3; ISO/IEC 13818-1, 2.5.3 and 2.5.4).
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat::ps {

// Bytes of the longest pack header, stuffing included.
constexpr size_t pack_header_limit = 14 + 7;

struct PackHeader {
    bool mpeg2 = false;
    size_t size = 0;        // bytes
    int64_t clock = 0;      // system_clock_reference_base: 90 kHz, 33 bits
    uint32_t byte_rate = 0; // program_mux_rate in bytes per second
};

// Reads the header whose start code is at the front of `bytes`. Returns 0, or 1 when a marker bit
// is missing (data that holds the start code by chance) or the bytes end first.
int read_pack_header(PackHeader* pack, Bytes bytes);

// A stream that a program stream map declares.
struct MapEntry {
    uint8_t stream_type = 0;
    uint8_t stream_id = 0;
    uint8_t extension_id = 0; // elementary_stream_id_extension of stream FD, 0 when not told
    uint32_t flags = 0;       // ZatStreamFlag
    char language[32] = {};   // of ISO_639_language_descriptors
};

constexpr size_t map_entry_limit = 64;

struct StreamMap {
    size_t count = 0;
    MapEntry entries[map_entry_limit];
};

// Reads the packet whose start code is at the front of `bytes`, up to its end or theirs. Returns 0,
// or 1 for a map that is not yet valid.
int read_stream_map(StreamMap* map, Bytes bytes);

} // namespace zat::ps
