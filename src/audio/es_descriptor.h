// The elementary stream descriptor (ISO/IEC 14496-1, 7.2.6.5 to 7.2.6.7).
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

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
    Bytes specific_info;          // for the decoder, inside the bytes read; empty without any
};

// Reads an ES_Descriptor, with its tag, that other descriptors may precede; in an "esds" box it
// stands behind four bytes of version and flags. False, and nothing is written, when it tells no
// object type.
bool read_es_descriptor(Bytes descriptors, EsDescriptor* descriptor);

} // namespace zat
