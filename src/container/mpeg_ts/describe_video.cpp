#include "container/mpeg_ts/describe.h"

#include "video/encoder_message.h"
#include "video/hevc_sps.h"
#include "video/mpeg4_encoder.h"

namespace zat::ts {

namespace {

constexpr uint8_t sequence_parameter_set = 7;       // nal_unit_type of ITU-T H.264
constexpr uint8_t hevc_sequence_parameter_set = 33; // of ITU-T H.265
constexpr uint8_t vc1_sequence_header = 0x0F;
constexpr uint8_t visual_object_sequence = 0xB0;
constexpr uint8_t first_object_layer = 0x20;
constexpr uint8_t last_object_layer = 0x2F;

bool describe_mpeg_video(Bytes captured, ZatStream* facts, StreamText* text) {
    MpegVideoHeaders headers;
    if (find_mpeg_video_headers(captured, &headers) != 0) {
        return false;
    }
    mpeg_video_facts(headers, facts);
    named_video_line(&headers.header, &headers.extension,
        headers.extension_found ? MpegVideoVersion::mpeg2 : MpegVideoVersion::mpeg1,
        VariableRate::as_word, text->line);
    text->has_line = true;
    return true;
}

bool describe_avc(Bytes captured, ZatStream* facts, StreamText* text) {
    AvcSequenceInfo info;
    if (find_avc_sps(captured, &info) != 0) {
        return false;
    }
    avc_facts(info, facts);
    avc_codec_text(info, text->codec);
    text->bits = info.bit_depth;
    return true;
}

bool describe_hevc(Bytes captured, ZatStream* facts, StreamText* text) {
    HevcSequence sequence;
    if (!find_hevc_sps(captured, &sequence)) {
        return false;
    }
    set_hevc_facts(facts, sequence);
    char codec[hevc_text_size];
    hevc_codec_text(sequence, codec);
    copy_text(text->codec, bounded_text(codec));
    text->bits = sequence.bit_depth;
    return true;
}

bool describe_vc1(Bytes captured, ZatStream* facts, StreamText* text) {
    Vc1Sequence sequence;
    if (find_vc1_sequence(captured, &sequence) != 0) {
        return false;
    }
    vc1_facts(sequence, facts);
    vc1_codec_text(sequence, text->codec);
    return true;
}

bool describe_mpeg4(Bytes captured, ZatStream* facts, StreamText* text) {
    Mpeg4Headers headers;
    if (find_mpeg4_headers(captured, &headers) != 0) {
        return false;
    }
    mpeg4_facts(headers, facts);
    mpeg4_codec_text(headers, text->codec);
    text->bits = facts->bit_depth;
    return true;
}

} // namespace

bool begins_header(Codec codec, uint8_t code) {
    switch (codec) {
    case Codec::mpeg1_video:
    case Codec::mpeg2_video:
    case Codec::unknown_video:
        return code == sequence_header_code;
    case Codec::mpeg4_visual:
        return code == visual_object_sequence ||
               (code >= first_object_layer && code <= last_object_layer);
    case Codec::avc:
        return (code & 0x9F) == sequence_parameter_set;
    case Codec::hevc:
        return (code & 0x80) == 0 && code >> 1 == hevc_sequence_parameter_set;
    case Codec::vc1:
        return code == vc1_sequence_header;
    default:
        return false;
    }
}

bool describe_video(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    bool found = false;
    switch (stream.codec) {
    case Codec::mpeg1_video:
    case Codec::mpeg2_video:
    case Codec::unknown_video:
        found = describe_mpeg_video(captured, facts, text);
        break;
    case Codec::mpeg4_visual:
        found = describe_mpeg4(captured, facts, text);
        break;
    case Codec::avc:
        found = describe_avc(captured, facts, text);
        break;
    case Codec::hevc:
        found = describe_hevc(captured, facts, text);
        break;
    case Codec::vc1:
        found = describe_vc1(captured, facts, text);
        break;
    default:
        break;
    }
    text->measures_rate = found && !text->has_line;
    return found;
}

void find_video_encoder(Codec codec, Bytes captured, ZatStream* facts) {
    if (codec == Codec::avc || codec == Codec::hevc) {
        set_message_encoder(captured, facts);
    } else if (codec == Codec::mpeg4_visual) {
        set_mpeg4_encoder(captured, facts);
    }
}

bool has_video_describer(Codec codec) {
    switch (codec) {
    case Codec::mpeg1_video:
    case Codec::mpeg2_video:
    case Codec::unknown_video:
    case Codec::mpeg4_visual:
    case Codec::avc:
    case Codec::hevc:
    case Codec::vc1:
        return true;
    default:
        return false;
    }
}

bool is_described(const Stream& stream, Bytes captured, bool* wants_stamps) {
    ZatStream facts{};
    StreamText text;
    *wants_stamps = false;
    if (text_of(stream.codec).kind != ZAT_STREAM_VIDEO) {
        return !has_audio_describer(stream.codec) ||
               describe_audio(stream, captured, &facts, &text);
    }
    if (!has_video_describer(stream.codec)) {
        return true;
    }
    const bool found = describe_video(stream, captured, &facts, &text);
    *wants_stamps = found && !text.has_line && facts.frame_rate == 0;
    return found;
}

} // namespace zat::ts
