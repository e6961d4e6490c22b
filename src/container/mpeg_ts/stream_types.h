// What a program map says of an elementary stream: its type and descriptors.
#pragma once

#include "common/bytes/bytes.h"
#include "container/mpeg_ts/codecs.h"

#include <cstdint>

namespace zat::ts {

struct Stream {
    uint16_t pid = 0;
    uint16_t program = 0; // index
    uint8_t type = 0;     // stream_type; 0 without a program map
    Codec codec = Codec::data;
    bool has_component_tag = false;
    uint8_t component_tag = 0;
    bool dual_mono = false;
    bool dts_hd = false;         // told by a descriptor
    uint8_t opus_channels = 0;   // 0: not told
    uint32_t flags = 0;          // ZatStreamFlag
    uint32_t registration = 0;   // format_identifier
    uint32_t data_component = 0; // data_component_id plus one; 0 without one
    char language[32] = "";      // several with "/" between
    char pages[64] = "";         // of teletext, with their languages
};

// The format_identifier of a registration descriptor among these, 0 without one.
uint32_t registration_of(Bytes descriptors);

// Fills in the codec and what the descriptors tell. `program_registration` is the one of the whole
// program.
void describe_stream_type(Stream* stream, Bytes descriptors, uint32_t program_registration);

} // namespace zat::ts
