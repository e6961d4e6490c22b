// The elementary stream descriptor (ISO/IEC 14496-1, 7.2.6.5 to 7.2.6.7).
#pragma once

#include "container/mp4/atom_reader.h"

namespace zat::mp4 {

// objectTypeIndication (ISO/IEC 14496-1, table 5, and the registry behind it)
constexpr uint8_t object_mpeg4_visual = 0x20;
constexpr uint8_t object_mpeg4_audio = 0x40;
constexpr uint8_t object_mpeg2_aac_main = 0x66;
constexpr uint8_t object_mpeg2_aac_lc = 0x67;
constexpr uint8_t object_mpeg2_aac_ssr = 0x68;
constexpr uint8_t object_mpeg2_audio = 0x69;
constexpr uint8_t object_mpeg1_audio = 0x6B;
constexpr uint8_t object_ac3 = 0xA5;
constexpr uint8_t object_dts = 0xA9;

struct EsDescriptor {
    uint8_t object_type = 0;
    uint32_t maximum_bitrate = 0; // bit/s
    uint32_t average_bitrate = 0; // bit/s
    Span specific_info;           // for the decoder; empty when there is none
};

// Reads the payload of an "esds" atom. False when it tells no object type.
bool read_es_descriptor(Reader* reader, Span payload, EsDescriptor* descriptor);

} // namespace zat::mp4
