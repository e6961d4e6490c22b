// PES packets (ISO/IEC 11172-1, 2.4.3.3; ISO/IEC 13818-1, 2.4.3.6) and the 33-bit clock of 90 kHz
// that their time stamps count on: shared by program and transport streams.
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr int64_t clock_rate = 90'000; // ticks per second
constexpr int64_t clock_modulus = int64_t{1} << 33;
constexpr int64_t no_clock = -1; // a time stamp that is absent

// Ticks from one value of the clock to another, the shorter way round: -2^32 up to 2^32 - 1.
constexpr int64_t clock_distance(int64_t from, int64_t to) {
    const int64_t forward = ((to - from) % clock_modulus + clock_modulus) % clock_modulus;
    return forward < clock_modulus / 2 ? forward : forward - clock_modulus;
}

// Ticks from one value of the clock to a later one: 0 up to 2^33 - 1.
constexpr int64_t clock_elapsed(int64_t from, int64_t to) {
    return ((to - from) % clock_modulus + clock_modulus) % clock_modulus;
}

constexpr double clock_seconds(int64_t ticks) {
    return static_cast<double>(ticks) / static_cast<double>(clock_rate);
}

// Stream ids (ISO/IEC 13818-1, table 2-22).
enum StreamId : uint8_t {
    id_program_end = 0xB9,
    id_pack = 0xBA,
    id_system_header = 0xBB,
    id_program_stream_map = 0xBC,
    id_private_1 = 0xBD,
    id_padding = 0xBE,
    id_private_2 = 0xBF,
    id_audio_first = 0xC0,
    id_audio_last = 0xDF,
    id_video_first = 0xE0,
    id_video_last = 0xEF,
    id_extended = 0xFD,
    id_directory = 0xFF,
};

// Five bytes with three marker bits, as time stamps and MPEG-1 packs have it: the clock, or
// no_clock when a marker is missing.
int64_t read_clock(const uint8_t* bytes);

constexpr size_t pes_start_size = 6; // start code and length

struct PesHeader {
    uint8_t stream_id = 0;
    uint8_t extension_id = 0;   // stream_id_extension of stream FD, 0 without one
    uint8_t scrambling = 0;     // PES_scrambling_control
    bool mpeg2 = false;         // of the form of ISO/IEC 13818-1
    bool data_aligned = false;  // data_alignment_indicator
    uint16_t packet_length = 0; // bytes behind the length field; 0: up to the next unit start
    size_t payload = 0;         // offset of the payload, which may lie behind the given bytes
    int64_t pts = no_clock;
    int64_t dts = no_clock;
};

// Whether packets of the stream have no fields behind the length.
bool pes_without_header(uint8_t stream_id);

// Reads the header that begins with the start code at the front of `bytes`. Of a header that the
// bytes cut short the fields beyond stay unset. Returns 0, or 1 when no PES packet starts here.
int read_pes_header(PesHeader* header, Bytes bytes);

} // namespace zat
