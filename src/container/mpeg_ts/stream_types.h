// What a program map says of an elementary stream: its type and descriptors.
#pragma once

#include "common/bytes.h"
#include "zat/details.h"

#include <cstdint>

namespace zat::ts {

enum class Codec : uint8_t {
    mpeg1_video,
    mpeg2_video,
    mpeg4_visual,
    avc,
    avc_layers, // SVC, MVC
    hevc,
    hevc_layers,
    vvc,
    evc,
    av1,
    vc1,
    jpeg2000,
    jpeg_xs,
    dirac,
    avs,
    avs2,
    avs3,
    unknown_video, // by the stream id of its PES packets, without a program map
    mpeg_audio,
    aac, // ADTS or LATM
    aac_raw,
    ac3,
    eac3,
    ac4,
    truehd,
    dts,
    dts_hd_hra,
    dts_hd_ma,
    dts_express,
    lpcm, // of Blu-ray
    s302m,
    opus,
    mpegh,
    unknown_audio,
    pgs,
    hdmv_text,
    dvb_subtitle,
    teletext,
    arib_caption,
    arib_superimpose,
    ttml,
    timed_text,
    igs,
    data_broadcasting,
    timed_id3,
    klv,
    ait,
    scte35,
    private_sections,
    private_data,
    mheg,
    dsm_cc,
    dsm_cc_a,
    dsm_cc_b,
    dsm_cc_c,
    dsm_cc_d,
    h222_1,
    auxiliary,
    sl_packets,
    download,
    metadata,
    ipmp,
    data,
    count
};

struct CodecText {
    ZatStreamKind kind;
    const char* line;    // in the brackets of its line
    const char* details; // ZatStream.codec
};
const CodecText& text_of(Codec codec);

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
    uint32_t data_component = 0; // data_component_id and one, 0 without
    char language[32] = "";      // several with "/" between
    char pages[64] = "";         // of teletext, with their languages
};

// The format_identifier of a registration descriptor among these, 0 without one.
uint32_t registration_of(Bytes descriptors);

// Fills in the codec and what the descriptors tell. `program_registration` is the one of the whole
// program.
void describe_stream_type(Stream* stream, Bytes descriptors, uint32_t program_registration);

} // namespace zat::ts
