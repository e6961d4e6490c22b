// The data packets of ASF files (ASF, 5.2).
#pragma once

#include "common/file/reader.h"

#include <cstdint>

namespace zat::asf {

struct Payload {
    uint8_t stream = 0;
    uint32_t objects = 0; // that start here; several in a payload of compressed form
    uint64_t bytes = 0;
    bool has_time = false;
    uint32_t time = 0;      // of the first object, in milliseconds, the preroll included
    uint32_t time_step = 0; // from one object of the payload to the next
    Span data = {};         // of the first object that starts here, as far as the payload has it
};

struct PacketReader {
    Reader* reader = nullptr;
    Span packet = {}; // the rest of it, padding left out
    bool failed = false;
    uint8_t property_types = 0;
    uint8_t payload_length_type = 0; // of several payloads; 0 of a single one
    uint32_t payloads_left = 0;
};

// Starts on a packet of that span. False when its head makes no sense.
bool open_packet(PacketReader* packets, Reader* reader, Span packet);

// The next payload, whose bytes are stepped over unread. False behind the last one, and when the
// packet ends within its head.
bool next_payload(PacketReader* packets, Payload* payload);

} // namespace zat::asf
