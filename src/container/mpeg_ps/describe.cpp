#include "container/mpeg_ps/describe.h"

#include "audio/eac3.h"
#include "audio/first_frame.h"
#include "audio/frame_search.h"
#include "audio/latm.h"
#include "audio/stream_facts.h"
#include "common/bytes/start_code.h"
#include "common/record/details.h"
#include "video/encoder_message.h"
#include "video/hevc_sps.h"
#include "video/mpeg4_encoder.h"
#include "video/video_kind.h"

#include <algorithm>
#include <iterator>

namespace zat::ps {

namespace {

Bytes collected(const Stream& stream) {
    return {stream.collect, stream.collected};
}

bool describe_mpeg_video(Stream* stream, Follows follows) {
    MpegVideoHeaders headers;
    if (find_mpeg_video_headers(collected(*stream), &headers) != 0) {
        return false;
    }
    const bool full = stream->collected == Stream::collect_size;
    const bool all_seen = headers.complete && (headers.picture.found || !headers.extension_found);
    if (!all_seen && follows == Follows::more && !full) {
        return false; // extensions may follow
    }
    stream->sequence = headers;
    stream->form = Form::mpeg_sequence;
    mpeg_video_facts(headers, &stream->facts);
    // A lone sequence header of MPEG-1 has no progressive bit.
    SequenceExtension extension = headers.extension;
    extension.progressive = headers.extension_found ? extension.progressive : 1;
    mpeg_video_line(&headers.header, &extension,
        headers.extension_found ? MpegVideoVersion::mpeg2 : MpegVideoVersion::mpeg1, stream->line);
    return true;
}

bool describe_avc(Stream* stream) {
    AvcSequenceInfo info;
    if (find_avc_sps(collected(*stream), &info) != 0) {
        return false;
    }
    stream->avc = info;
    avc_facts(info, &stream->facts);
    set_message_encoder(collected(*stream), &stream->facts);
    avc_codec_text(info, stream->codec);
    stream->bits = info.bit_depth;
    return true;
}

bool describe_mpeg4(Stream* stream) {
    Mpeg4Headers headers;
    if (find_mpeg4_headers(collected(*stream), &headers) != 0) {
        return false;
    }
    stream->mpeg4 = headers.vol;
    mpeg4_facts(headers, &stream->facts);
    set_mpeg4_encoder(collected(*stream), &stream->facts);
    mpeg4_codec_text(headers, stream->codec);
    stream->bits = stream->facts.bit_depth;
    return true;
}

bool describe_vc1(Stream* stream) {
    Vc1Sequence sequence;
    if (find_vc1_sequence(collected(*stream), &sequence) != 0) {
        return false;
    }
    vc1_facts(sequence, &stream->facts);
    vc1_codec_text(sequence, stream->codec);
    return true;
}

bool describe_hevc(Stream* stream) {
    HevcSequence sequence;
    if (!find_hevc_sps(collected(*stream), &sequence)) {
        return false;
    }
    char text[hevc_text_size];
    stream->field_pictures = sequence.field_sequence;
    set_hevc_facts(&stream->facts, sequence);
    set_message_encoder(collected(*stream), &stream->facts);
    hevc_codec_text(sequence, text);
    copy_text(stream->codec, bounded_text(text));
    stream->bits = stream->facts.bit_depth;
    return true;
}

bool describe_video(Stream* stream, Follows follows) {
    VideoKind kind = video_kind_of_type(stream->stream_type);
    if (kind == VideoKind::unknown) {
        kind =
            id_of(*stream) == id_extended ? VideoKind::vc1 : guess_video_kind(collected(*stream));
    }
    bool found = false;
    switch (kind) {
    case VideoKind::mpeg:
        return describe_mpeg_video(stream, follows);
    case VideoKind::avc:
        found = describe_avc(stream);
        break;
    case VideoKind::mpeg4:
        found = describe_mpeg4(stream);
        break;
    case VideoKind::vc1:
        found = describe_vc1(stream);
        break;
    case VideoKind::hevc:
        found = describe_hevc(stream);
        break;
    case VideoKind::unknown:
        break;
    }
    stream->form = found ? Form::generic_video : stream->form;
    return found;
}

// Kinds of frames in a stream, the likeliest first.
struct Candidate {
    FrameKind kind;
    FrameDescriber describe;
};

constexpr Candidate mpeg_candidate = {FrameKind::mpeg_audio, describe_mpeg_audio_frame};
constexpr Candidate adts_candidate = {FrameKind::adts, describe_adts_frame};
constexpr Candidate ac3_candidate = {FrameKind::ac3, describe_ac3_frame};
constexpr Candidate dts_candidate = {FrameKind::dts, describe_dts_frame};

bool describe_frame(Stream* stream, const Candidate& candidate) {
    const Bytes data = collected(*stream);
    const int64_t at = find_audio_frame(candidate.kind, data);
    if (at < 0) {
        return false;
    }
    const Bytes frame = data.subspan(static_cast<size_t>(at));
    if (!candidate.describe(frame, &stream->facts, stream->line)) {
        return false;
    }
    stream->form = Form::audio_line;
    if (stream->facts.sample_rate != 0) {
        stream->frame_seconds = static_cast<double>(audio_frame_samples(candidate.kind, frame)) /
                                stream->facts.sample_rate;
    }
    return true;
}

// Kinds whose frames tell their length only to their own parser: where a sync word stands.
bool describe_at(Stream* stream, int64_t at, FrameDescriber describe, uint32_t samples) {
    if (at < 0 || !describe(collected(*stream).subspan(static_cast<size_t>(at)), &stream->facts,
                      stream->line)) {
        return false;
    }
    stream->form = Form::audio_line;
    if (stream->facts.sample_rate != 0) {
        stream->frame_seconds = static_cast<double>(samples) / stream->facts.sample_rate;
    }
    return true;
}

bool describe_eac3(Stream* stream) {
    Bytes data = collected(*stream);
    Eac3Info info;
    return find_eac3(&data, &info) && describe_at(stream, data.data() - stream->collect,
                                          describe_eac3_frame, info.first.samples);
}

bool describe_loas(Stream* stream) {
    constexpr uint32_t samples = 1024;
    return describe_at(stream, find_loas_sync(collected(*stream)), describe_loas_frame, samples);
}

// Of the bytes behind the substream header the second one tells everything.
bool describe_lpcm(Stream* stream) {
    if (stream->collected < 3) {
        return false;
    }
    LpcmInfo info;
    dvd_lpcm_info(stream->collect[1], &info);
    dvd_lpcm_line(&info, stream->line);
    dvd_lpcm_facts(info, &stream->facts);
    constexpr int64_t frame_ticks = 150; // a six-hundredth of a second
    stream->frame_seconds = clock_seconds(frame_ticks);
    stream->form = Form::audio_line;
    return true;
}

bool describe_truehd(Bytes access_unit, Stream* stream) {
    TrueHdInfo info;
    if (truehd_info(access_unit, &info) != 0) {
        return false;
    }
    named_truehd_line(info, "Dolby_TrueHD", stream->line);
    truehd_facts(info, &stream->facts);
    return true;
}

bool describe_mlp(Stream* stream) {
    const Bytes data = collected(*stream);
    for (int64_t at = find_byte_pair(data, 0, 0xF8, 0x72); at >= 0;
         at = find_byte_pair(data, static_cast<size_t>(at) + 1, 0xF8, 0x72)) {
        constexpr size_t sync_at = 4; // in an access unit
        const size_t unit = static_cast<size_t>(std::max<int64_t>(at - int64_t{sync_at}, 0));
        if (has_at(data, static_cast<size_t>(at), "\xF8\x72\x6F\xBB")) {
            copy_utf8(stream->facts.codec, "MLP");
            copy_text(stream->line, "[MLP]");
            stream->facts.flags |= ZAT_FLAG_LOSSLESS;
            stream->form = Form::audio_line;
            return true;
        }
        if (describe_truehd(data.subspan(unit), stream)) {
            stream->form = Form::audio_line;
            return true;
        }
    }
    return false;
}

bool describe_frames(Stream* stream) {
    constexpr uint8_t latm_type = 0x11; // whose data may look like a first ADTS frame
    switch (stream->kind) {
    case Kind::mpeg_audio:
        return describe_frame(stream, mpeg_candidate) || describe_frame(stream, adts_candidate) ||
               describe_frame(stream, ac3_candidate);
    case Kind::aac: // either form occurs under the stream type of the other
        return (stream->stream_type == latm_type && describe_loas(stream)) ||
               describe_frame(stream, adts_candidate) || describe_loas(stream);
    case Kind::ac3:
    case Kind::eac3:
        return describe_frame(stream, ac3_candidate) || describe_eac3(stream);
    case Kind::dts:
        return describe_frame(stream, dts_candidate);
    case Kind::lpcm:
        return describe_lpcm(stream);
    case Kind::mlp:
        return describe_mlp(stream);
    case Kind::extension_audio:
        return describe_frame(stream, ac3_candidate) || describe_frame(stream, dts_candidate) ||
               describe_mlp(stream) || describe_eac3(stream);
    default:
        return false;
    }
}

// A rate that is the mean of frames waits for all that can be collected together.
bool describe_audio(Stream* stream, Follows follows) {
    const ZatStream before = stream->facts;
    if (!describe_frames(stream)) {
        return false;
    }
    const bool is_mean = (stream->facts.estimated & ZAT_ESTIMATED_BIT_RATE) != 0;
    if (is_mean && follows == Follows::more && stream->collected < Stream::collect_size) {
        stream->facts = before;
        stream->form = Form::unknown;
        return false;
    }
    return true;
}

struct KindName {
    const char* line;
    const char* codec;
    Kind kind;
};

constexpr KindName kind_names[] = {
    {"[MPEG audio]", "MPEG audio", Kind::mpeg_audio},
    {"[AAC]", "AAC", Kind::aac},
    {"[AC-3]", "AC-3", Kind::ac3},
    {"[E-AC-3]", "E-AC-3", Kind::eac3},
    {"[DTS]", "DTS", Kind::dts},
    {"[LPCM]", "PCM", Kind::lpcm},
    {"[MLP]", "MLP", Kind::mlp},
    {"[audio]", "", Kind::extension_audio},
};

// A type that the map tells and that is none of the kinds which streams of its id mostly are.
bool is_of_other_type(const Stream& stream) {
    constexpr uint8_t mpeg1_audio = 0x03;
    constexpr uint8_t mpeg2_audio = 0x04;
    const uint8_t type = stream.stream_type;
    return type != 0 &&
           (stream.kind == Kind::video
                   ? video_kind_of_type(type) == VideoKind::unknown
                   : stream.kind == Kind::mpeg_audio && type != mpeg1_audio && type != mpeg2_audio);
}

} // namespace

bool describe_stream(Stream* stream, Follows follows) {
    if (stream->kind != Kind::video) {
        return describe_audio(stream, follows);
    }
    if (!describe_video(stream, follows)) {
        return false;
    }
    stream->frame_seconds = stream->facts.frame_rate > 0 ? 1 / stream->facts.frame_rate : 0;
    return true;
}

void name_stream(Stream* stream, bool mpeg2) {
    stream->form = Form::name_only;
    if (is_of_other_type(*stream)) {
        copy_text(stream->line, stream->kind == Kind::video ? "[video]" : "[audio]");
        return;
    }
    if (stream->kind == Kind::video) {
        const VideoKindName name = video_kind_name(video_kind_of_type(stream->stream_type),
            stream->stream_type == 0 ? mpeg2 : stream->stream_type == 0x02);
        copy_text(stream->line, name.line);
        copy_utf8(stream->facts.codec, name.codec);
        return;
    }
    for (const KindName& row : kind_names) {
        if (row.kind == stream->kind) {
            copy_text(stream->line, row.line);
            copy_utf8(stream->facts.codec, row.codec);
        }
    }
}

} // namespace zat::ps
