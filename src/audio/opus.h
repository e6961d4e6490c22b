// Opus: the identification header of Ogg (RFC 7845, 5.1), MP4's record of the same fields, and the
// length of packets (RFC 6716, 3.1).
#pragma once

#include "common/bytes/bytes.h"
#include "common/record/details.h"

#include <cstdint>

namespace zat {

// The rate of every Opus decoder, in Hz.
constexpr uint32_t opus_rate = 48000;

struct OpusHead {
    uint32_t channels = 0;
    uint32_t pre_skip = 0;   // samples at opus_rate
    uint32_t input_rate = 0; // Hz of the encoder's input; 0: not told
    uint32_t mapping_family = 0;
};

// Reads a packet "OpusHead". False, and nothing is written, when it is another one or cut off.
bool read_opus_head(Bytes packet, OpusHead* head);

// Reads the content of a "dOps" box, whose fields are big-endian (Encapsulation of Opus in ISO Base
// Media File Format, 4.3.2). False, and nothing is written, when it is cut off.
bool read_opus_record(Bytes record, OpusHead* head);

// Samples per channel at opus_rate of the packet that begins with these bytes (two at least, but
// for a packet of one); 0 when they cannot tell.
uint32_t opus_packet_samples(Bytes packet);

// Codec, rate, channels and, for the mapping families whose order is fixed, the layout.
void set_opus_facts(uint32_t channels, uint32_t mapping_family, ZatStream* stream);

} // namespace zat
