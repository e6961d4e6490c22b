#include "container/mpeg_ts/packets.h"

#include <algorithm>
#include <cstring>

namespace zat::ts {

namespace {

constexpr uint8_t sync_byte = 0x47;
constexpr uint32_t strides[] = {188, 192, 204};
constexpr uint32_t longest_stride = 204;
constexpr uint32_t timestamped_stride = 192;
constexpr uint32_t time_stamp_size = 4;
constexpr uint32_t shortest_run = 5;
constexpr uint32_t counted_run = 64; // longer ones are equal

struct Run {
    uint32_t packets = 0;
    bool reaches_end = false;
};

Run count_run(Bytes bytes, size_t position, uint32_t stride) {
    Run run;
    while (position < bytes.size() && run.packets < counted_run && bytes[position] == sync_byte) {
        ++run.packets;
        position += stride;
    }
    run.reaches_end = position >= bytes.size();
    return run;
}

// Judges the layouts that begin at one position; keeps the one with the longest run.
void try_position(Bytes bytes, bool whole, size_t position, Layout* best, uint32_t* longest) {
    for (const uint32_t stride : strides) {
        const Run run = count_run(bytes, position, stride);
        const bool is_short_file =
            whole && run.reaches_end && run.packets > 0 && bytes.size() - position >= packet_size;
        if ((run.packets >= shortest_run || is_short_file) && run.packets > *longest) {
            *longest = run.packets;
            *best = {stride, static_cast<uint32_t>(position)};
        }
    }
}

bool read_adaptation_field(Bytes bytes, Packet* packet) {
    const size_t length = bytes[4]; // adaptation_field_length
    if (length > packet_size - 5) {
        return false;
    }
    if (length == 0) {
        return true;
    }
    const uint8_t flags = bytes[5];
    packet->discontinuity = (flags & 0x80) != 0;
    if ((flags & 0x10) != 0 && length >= 7) {
        const int64_t base = int64_t{ReadBE32(&bytes[6])} << 1 | bytes[10] >> 7;
        const int64_t extension = (bytes[10] & 1) << 8 | bytes[11];
        packet->pcr = base * 300 + extension;
    }
    return true;
}

void read_packet(Bytes bytes, Packet* packet) {
    *packet = {};
    packet->damaged = (bytes[1] & 0x80) != 0;
    packet->starts_unit = (bytes[1] & 0x40) != 0;
    packet->pid = ReadBE16(&bytes[1]) & 0x1FFF;
    packet->scrambling = bytes[3] >> 6;
    packet->counter = bytes[3] & 0x0F;
    const bool has_adaptation_field = (bytes[3] & 0x20) != 0;
    packet->has_payload = (bytes[3] & 0x10) != 0;
    size_t payload = 4;
    if (has_adaptation_field) {
        if (!read_adaptation_field(bytes, packet)) {
            packet->damaged = true;
        } else {
            payload = size_t{5} + bytes[4];
        }
    }
    if (packet->has_payload && !packet->damaged) {
        packet->payload = bytes.subspan(payload);
    }
}

// The next sync byte with another one a stride on, or with the bytes' end before that place.
size_t find_sync(const PacketCursor* cursor) {
    const Bytes bytes = cursor->bytes;
    size_t at = cursor->position;
    while (at < bytes.size()) {
        const void* hit = std::memchr(&bytes[at], sync_byte, bytes.size() - at);
        if (hit == nullptr) {
            return bytes.size();
        }
        at = static_cast<size_t>(static_cast<const uint8_t*>(hit) - bytes.data());
        if (at + cursor->stride >= bytes.size() || bytes[at + cursor->stride] == sync_byte) {
            return at;
        }
        ++at;
    }
    return bytes.size();
}

// A file that begins with packets begins there, though bytes are lost before the longest run.
void start_at_front(Bytes bytes, Layout* layout) {
    const uint32_t front = layout->stride == timestamped_stride ? time_stamp_size : 0;
    if (layout->stride != 0 && front + layout->stride < bytes.size() && bytes[front] == sync_byte &&
        bytes[front + layout->stride] == sync_byte) {
        layout->offset = front;
    }
}

} // namespace

Layout find_layout(Bytes bytes, bool whole) {
    Layout best;
    uint32_t longest = 0;
    for (size_t position = 0; position < bytes.size(); ++position) {
        if (position >= longest_stride && longest > 0) {
            break;
        }
        const void* hit = std::memchr(&bytes[position], sync_byte, bytes.size() - position);
        if (hit == nullptr) {
            break;
        }
        position = static_cast<size_t>(static_cast<const uint8_t*>(hit) - bytes.data());
        try_position(bytes, whole, position, &best, &longest);
    }
    start_at_front(bytes, &best);
    return best;
}

bool next_packet(PacketCursor* cursor, Packet* packet) {
    const Bytes bytes = cursor->bytes;
    if (cursor->position < bytes.size() && bytes[cursor->position] != sync_byte) {
        const size_t sync = find_sync(cursor);
        const size_t passed = sync - cursor->position;
        cursor->lost += passed > cursor->stride ? passed : 0; // less is the rest of a packet
        cursor->position = sync;
    }
    if (cursor->position >= bytes.size() || bytes.size() - cursor->position < packet_size) {
        return false;
    }
    read_packet(bytes.subspan(cursor->position, packet_size), packet);
    cursor->position += cursor->stride;
    return true;
}

int64_t pcr_distance(int64_t from, int64_t to) {
    const int64_t forward = ((to - from) % pcr_modulus + pcr_modulus) % pcr_modulus;
    return forward < pcr_modulus / 2 ? forward : forward - pcr_modulus;
}

} // namespace zat::ts
