#include "container/mpeg_ts/describe.h"

#include "audio/ac3.h"
#include "audio/adts.h"
#include "audio/dts.h"
#include "audio/first_frame.h"
#include "audio/frame_search.h"
#include "audio/lpcm.h"
#include "audio/stream_facts.h"
#include "audio/truehd.h"
#include "common/codec_names.h"

namespace zat::ts {

namespace {

using Describer = bool (*)(
    const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text);

void set_frame_time(double samples, const ZatStream& facts, StreamText* text) {
    text->frame_seconds = facts.sample_rate != 0 ? samples / facts.sample_rate : 0;
}

// The first frame of a kind, behind what was left of one that was cut: describes it. What is left
// of the captured bytes begins with it.
bool describe_first_frame(
    FrameKind kind, FrameDescriber describe, Bytes* captured, ZatStream* facts, StreamText* text) {
    const int64_t at = find_audio_frame(kind, *captured);
    if (at < 0 || !describe(captured->subspan(static_cast<size_t>(at)), facts, text->line)) {
        return false;
    }
    *captured = captured->subspan(static_cast<size_t>(at));
    set_frame_time(audio_frame_samples(kind, *captured), *facts, text);
    text->has_line = true;
    return true;
}

bool describe_mpeg_audio(
    const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    return describe_first_frame(
        FrameKind::mpeg_audio, describe_mpeg_audio_frame, &captured, facts, text);
}

struct FrameRun {
    uint64_t frames = 0;
    uint64_t bytes = 0;
};

FrameRun follow_frames(FrameKind kind, Bytes bytes) {
    FrameRun run;
    for (uint32_t size = audio_frame_size(kind, bytes); size != 0 && size <= bytes.size();
         size = audio_frame_size(kind, bytes)) {
        ++run.frames;
        run.bytes += size;
        bytes = bytes.subspan(size);
    }
    return run;
}

// Length and rate are the means of the frames at hand.
bool describe_adts(Bytes captured, ZatStream* facts, StreamText* text) {
    const int64_t at = find_audio_frame(FrameKind::adts, captured);
    if (at < 0) {
        return false;
    }
    captured = captured.subspan(static_cast<size_t>(at));
    AdtsHeader header;
    if (ParseAdtsHeader(captured, &header) != 0) {
        return false;
    }
    header.line_style = adts_version_and_profile;
    const FrameRun run = follow_frames(FrameKind::adts, captured);
    const uint32_t samples = audio_frame_samples(FrameKind::adts, captured);
    if (run.frames != 0) {
        header.frame_length = static_cast<uint32_t>(run.bytes / run.frames);
        header.bitrate =
            static_cast<uint32_t>(run.bytes * 8 * header.sample_rate / (run.frames * samples));
    }
    adts_facts(header, facts);
    FormatAdtsLine(&header, text->line);
    set_frame_time(samples, *facts, text);
    text->has_line = true;
    return true;
}

bool describe_aac(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    (void)stream;
    return describe_adts(captured, facts, text);
}

bool describe_ac3(const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    return describe_first_frame(FrameKind::ac3, describe_ac3_frame, &captured, facts, text);
}

bool describe_dts(const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    return describe_first_frame(FrameKind::dts, describe_dts_frame, &captured, facts, text);
}

bool describe_lpcm(const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    LpcmInfo info;
    (void)bd_lpcm_info(captured, &info);
    if (captured.size() < 4 || info.channels == 0 || info.sample_rate == 0 || info.bits == 0) {
        return false;
    }
    bd_lpcm_facts(info, facts);
    bd_lpcm_line(&info, text->line);
    text->has_line = true;
    return true;
}

// AES3 data (SMPTE ST 302, 5.4).
bool describe_s302m(const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    if (captured.size() < 4) {
        return false;
    }
    facts->channels = (captured[2] >> 6) * 2U + 2;
    facts->sample_rate = 48000;
    text->bits = 16U + (captured[3] >> 4 & 3) * 4U;
    facts->bit_depth = text->bits;
    facts->bit_rate = uint64_t{facts->channels} * text->bits * facts->sample_rate;
    return true;
}

bool describe_opus(const Stream& stream, Bytes /*captured*/, ZatStream* facts, StreamText* text) {
    facts->sample_rate = 48000;
    facts->channels = stream.opus_channels;
    text->measures_rate = true;
    return true;
}

bool describe_any(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    return describe_adts(captured, facts, text) ||
           describe_mpeg_audio(stream, captured, facts, text) ||
           describe_ac3(stream, captured, facts, text);
}

struct DescriberRow {
    Codec codec;
    Describer describe;
};

constexpr DescriberRow describers[] = {
    {Codec::mpeg_audio, describe_mpeg_audio},
    {Codec::aac, describe_aac},
    {Codec::ac3, describe_ac3},
    {Codec::dts, describe_dts},
    {Codec::dts_hd_hra, describe_dts},
    {Codec::dts_hd_ma, describe_dts},
    {Codec::lpcm, describe_lpcm},
    {Codec::s302m, describe_s302m},
    {Codec::opus, describe_opus},
    {Codec::unknown_audio, describe_any},
};

} // namespace

bool describe_audio(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    for (const DescriberRow& row : describers) {
        if (row.codec == stream.codec) {
            return row.describe(stream, captured, facts, text);
        }
    }
    return false;
}

bool has_audio_describer(Codec codec) {
    for (const DescriberRow& row : describers) {
        if (row.codec == codec) {
            return true;
        }
    }
    return false;
}

} // namespace zat::ts
