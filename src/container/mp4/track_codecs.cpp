// The names of the codecs of tracks, and the tracks that are neither pictures nor sound.
#include "common/bytes/tables.h"
#include "common/catalogue/codec_names.h"
#include "container/mp4/track_details.h"

namespace zat::mp4 {

namespace {

struct FormatRow {
    uint32_t format;
    CodecName name;
};

// Formats that mean something else, or nothing, in other containers.
constexpr FormatRow video_formats[] = {
    {fourcc("dvh1"), {"HEVC"}},
};

constexpr FormatRow other_formats[] = {
    {fourcc("tx3g"), {"timed text"}},
    {fourcc("text"), {"timed text"}},
    {fourcc("sbtt"), {"timed text"}},
    {fourcc("stxt"), {"timed text"}},
    {fourcc("wvtt"), {"WebVTT"}},
    {fourcc("stpp"), {"TTML"}},
    {fourcc("dfxp"), {"TTML"}},
    {fourcc("c608"), {"CEA-608"}},
    {fourcc("c708"), {"CEA-708"}},
    {fourcc("mp4s"), {"MPEG-4 Systems"}},
    {fourcc("tmcd"), {"timecode"}},
    {fourcc("rtp "), {"RTP hint"}},
    {fourcc("srtp"), {"RTP hint"}},
    {fourcc("rrtp"), {"RTP reception hint"}},
    {fourcc("sm2t"), {"MPEG-2 TS hint"}},
    {fourcc("rm2t"), {"MPEG-2 TS reception hint"}},
    {fourcc("fdp "), {"FLUTE hint"}},
    {fourcc("mett"), {"timed metadata"}},
    {fourcc("metx"), {"timed metadata"}},
    {fourcc("mebx"), {"timed metadata"}},
    {fourcc("urim"), {"timed metadata"}},
    {fourcc("it35"), {"timed metadata"}},
    {fourcc("gpmd"), {"GoPro metadata"}},
    {fourcc("camm"), {"camera motion metadata"}},
};

struct ObjectRow {
    uint8_t object_type;
    CodecName name;
};

// By objectTypeIndication (registry of ISO/IEC 14496-1).
constexpr ObjectRow object_codecs[] = {
    {0x20, {"MPEG-4 Visual"}},
    {0x21, {"H.264"}},
    {0x23, {"HEVC"}},
    {0x40, {"AAC"}},
    {0x60, {"MPEG-2 Video"}},
    {0x61, {"MPEG-2 Video"}},
    {0x62, {"MPEG-2 Video"}},
    {0x63, {"MPEG-2 Video"}},
    {0x64, {"MPEG-2 Video"}},
    {0x65, {"MPEG-2 Video"}},
    {0x66, {"AAC", "Main"}},
    {0x67, {"AAC", "LC"}},
    {0x68, {"AAC", "SSR"}},
    {0x69, {"MP3"}}, // MPEG-2 audio of any layer: the frame tells
    {0x6A, {"MPEG-1 Video"}},
    {0x6B, {"MP3"}},
    {0x6C, {"MJPEG"}},
    {0x6D, {"PNG"}},
    {0x6E, {"JPEG 2000"}},
    {0xA0, {"EVRC"}},
    {0xA1, {"SMV"}},
    {0xA3, {"VC-1"}},
    {0xA4, {"Dirac"}},
    {0xA5, {"AC-3"}},
    {0xA6, {"E-AC-3"}},
    {0xA9, {"DTS"}},
    {0xAA, {"DTS", "HD HRA"}},
    {0xAB, {"DTS", "HD MA"}},
    {0xAC, {"DTS", "Express"}},
    {0xAD, {"Opus"}},
    {0xDD, {"Vorbis"}},
    {0xE0, {"VobSub"}},
    {0xE1, {"QCELP"}},
};

template <size_t N>
CodecName find_format(const FormatRow (&rows)[N], uint32_t format) {
    const FormatRow* row = find_row(rows, &FormatRow::format, format);
    return row != nullptr ? row->name : CodecName{};
}

CodecName object_name(uint8_t object_type) {
    const ObjectRow* row = find_row(object_codecs, &ObjectRow::object_type, object_type);
    return row != nullptr ? row->name : CodecName{};
}

CodecName format_name(uint32_t format, uint32_t kind) {
    if (kind == ZAT_STREAM_VIDEO) {
        const CodecName own = find_format(video_formats, format);
        return own.codec.empty() ? video_entry_name(format) : own;
    }
    return kind == ZAT_STREAM_AUDIO ? audio_fourcc_name(format)
                                    : find_format(other_formats, format);
}

} // namespace

void set_track_codec(const TrackFacts& facts, ZatStream* stream) {
    if (!facts.entry.found) {
        return;
    }
    constexpr uint32_t wave_tag_prefix = 0x6D730000; // "ms", then a WAVE format tag
    CodecName name = object_name(facts.es.descriptor.object_type);
    if (name.codec.empty()) {
        name = format_name(facts.format, stream->kind);
    }
    if (name.codec.empty() && stream->kind == ZAT_STREAM_AUDIO &&
        (facts.format & 0xFFFF0000) == wave_tag_prefix) {
        name = format_tag_name(static_cast<uint16_t>(facts.format));
    }
    set_codec(stream, name.codec.empty() ? CodecName{stream->codec_id} : name);
}

void describe_other_track(TrackFacts* facts, ZatStream* stream) {
    set_track_codec(*facts, stream);
    // displayFlags of a text sample entry (3GPP TS 26.245, 5.16; the bit is Apple's).
    constexpr uint32_t all_samples_forced = 0x80000000;
    if (facts->format == fourcc("tx3g") &&
        (read_be32(facts->reader, facts->entry.fixed, 0) & all_samples_forced) != 0) {
        stream->flags |= ZAT_FLAG_FORCED;
    }
}

} // namespace zat::mp4
