// Packets of a transport stream (ISO/IEC 13818-1, 2.4.3.2), bare, behind a time stamp of four bytes
// or in front of sixteen check bytes.
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat::ts {

constexpr uint32_t packet_size = 188;
constexpr uint32_t pid_count = 0x2000;
constexpr uint16_t null_pid = 0x1FFF;
constexpr int64_t no_pcr = -1;
constexpr int64_t pcr_rate = 27'000'000; // ticks per second
constexpr int64_t pcr_modulus = (int64_t{1} << 33) * 300;

// How the packets lie in a file.
struct Layout {
    uint32_t stride = 0; // bytes from one sync byte to the next: 188, 192 or 204; 0: no packets
    uint32_t offset = 0; // of the first sync byte
};

// Finds the layout with the longest run of sync bytes: five of them, or as many as there are up to
// the end of a short file. `bytes` are its start; `whole` says that they are all of it.
Layout find_layout(Bytes bytes, bool whole);

struct Packet {
    uint16_t pid = null_pid;
    uint8_t counter = 0;    // continuity_counter
    uint8_t scrambling = 0; // transport_scrambling_control
    bool starts_unit = false;
    bool damaged = false; // transport_error_indicator, or an adaptation field that does not fit
    bool has_payload = false;
    bool discontinuity = false;
    int64_t pcr = no_pcr; // ticks of 27 MHz
    Bytes payload;
};

// Steps over the packets in some bytes of a file; gaps between them are searched for the next pair
// of sync bytes.
struct PacketCursor {
    Bytes bytes;
    uint32_t stride = packet_size;
    size_t position = 0; // of the next packet
    size_t lost = 0;     // bytes passed over that are no packets
};

// False when no whole packet is left; the position then tells where to go on with more bytes.
bool next_packet(PacketCursor* cursor, Packet* packet);

// Ticks from one PCR to a later one, modulo the clock's period; a step of half a period or more is
// taken to lead back and gives a negative number.
int64_t pcr_distance(int64_t from, int64_t to);

} // namespace zat::ts
