// What elementary streams of a transport stream hold.
#pragma once

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
    Codec codec;
    ZatStreamKind kind;
    const char* line;    // in the brackets of its line
    const char* details; // ZatStream.codec
};
const CodecText& text_of(Codec codec);

} // namespace zat::ts
