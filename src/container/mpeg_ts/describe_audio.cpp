#include "container/mpeg_ts/describe.h"

#include "audio/ac3.h"
#include "audio/adts.h"
#include "audio/dts.h"
#include "audio/first_frame.h"
#include "audio/lpcm.h"
#include "audio/stream_facts.h"
#include "audio/sync_search.h"
#include "audio/truehd.h"
#include "common/codec_names.h"

namespace zat::ts {

namespace {

using Describer = bool (*)(
    const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text);

void set_frame_time(double samples, const ZatStream& facts, StreamText* text) {
    text->frame_seconds = facts.sample_rate != 0 ? samples / facts.sample_rate : 0;
}

// The first frame behind which another one follows, or the bytes end.
bool find_mpeg_audio_frame(Bytes* bytes, MpegAudioInfo* info) {
    for (int64_t at = find_mpeg_audio_sync(*bytes); at >= 0; at = find_mpeg_audio_sync(*bytes)) {
        *bytes = bytes->subspan(static_cast<size_t>(at));
        *info = {};
        if (read_mpeg_audio_header(*bytes, info) == 0 && info->bitrate > 0) {
            const size_t next = info->frame_size;
            const uint8_t sync[2] = {byte_at(*bytes, next), byte_at(*bytes, next + 1)};
            if (next + 2 > bytes->size() || IsMpegAudioSync(sync)) {
                return true;
            }
        }
        *bytes = bytes->subspan(1);
    }
    return false;
}

bool describe_mpeg_audio(
    const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    MpegAudioInfo info;
    if (!find_mpeg_audio_frame(&captured, &info) ||
        !describe_mpeg_audio_frame(captured, facts, text->line)) {
        return false;
    }
    set_frame_time(mpeg_audio_frame_samples(&info), *facts, text);
    text->has_line = true;
    return true;
}

struct AdtsRun {
    Bytes first; // from the first frame on
    uint64_t frames = 0;
    uint64_t bytes = 0;
};

bool is_adts_frame(Bytes bytes) {
    AdtsHeader header;
    return bytes.size() >= adts_header_size && IsAdtsSync(bytes.data()) &&
           ParseAdtsHeader(bytes, &header) == 0 && header.frame_length > adts_header_size;
}

AdtsRun follow_adts_frames(Bytes bytes) {
    AdtsRun run{.first = bytes};
    while (is_adts_frame(bytes)) {
        AdtsHeader header;
        (void)ParseAdtsHeader(bytes, &header);
        if (header.frame_length > bytes.size()) {
            break;
        }
        ++run.frames;
        run.bytes += header.frame_length;
        bytes = bytes.subspan(header.frame_length);
    }
    return run;
}

// The first place from which frames follow one another: two of them, or one up to the bytes' end.
bool find_adts_frames(Bytes bytes, AdtsRun* run) {
    for (; bytes.size() >= adts_header_size; bytes = bytes.subspan(1)) {
        if (!is_adts_frame(bytes)) {
            continue;
        }
        *run = follow_adts_frames(bytes);
        if (run->frames >= 2 || run->bytes == bytes.size()) {
            return true;
        }
    }
    return false;
}

bool describe_adts(Bytes captured, ZatStream* facts, StreamText* text) {
    constexpr uint32_t samples = 1024;
    AdtsRun run;
    if (!find_adts_frames(captured, &run)) {
        return false;
    }
    AdtsHeader header;
    (void)ParseAdtsHeader(run.first, &header);
    header.line_style = adts_version_and_profile;
    header.frame_length = static_cast<uint32_t>(run.bytes / run.frames);
    header.bitrate =
        static_cast<uint32_t>(run.bytes * 8 * header.sample_rate / (run.frames * samples));
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
    constexpr double samples = 1536;
    for (int64_t at = find_ac3_sync(captured); at >= 0; at = find_ac3_sync(captured)) {
        captured = captured.subspan(static_cast<size_t>(at));
        if (describe_ac3_frame(captured, facts, text->line)) {
            set_frame_time(samples, *facts, text);
            text->has_line = true;
            return true;
        }
        captured = captured.subspan(1);
    }
    return false;
}

bool describe_dts(const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    constexpr double samples = 512;
    const int64_t at = find_dts_sync(captured);
    if (at < 0 ||
        !describe_dts_frame(captured.subspan(static_cast<size_t>(at)), facts, text->line)) {
        return false;
    }
    set_frame_time(samples, *facts, text);
    text->has_line = true;
    return true;
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
