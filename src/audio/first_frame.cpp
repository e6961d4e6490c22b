#include "audio/first_frame.h"

#include "audio/eac3.h"
#include "audio/frame_search.h"
#include "audio/latm.h"
#include "audio/stream_facts.h"
#include "audio/wave_format.h"
#include "common/bytes/tables.h"

namespace zat {

namespace {

struct TaggedDescriber {
    uint16_t tag;
    FrameDescriber describe;
};

constexpr TaggedDescriber tagged_describers[] = {
    {wave_tag_mpeg, describe_mpeg_audio_frame},
    {wave_tag_mpeg_layer3, describe_mpeg_audio_frame},
    {0x00FF, describe_adts_frame}, // AAC
    {0x1600, describe_adts_frame}, // MPEG_ADTS_AAC
    {0x1602, describe_loas_frame}, // MPEG_LOAS
    {0x2000, describe_dolby_frame},
    {0x2001, describe_dts_frame},
};

struct ConsecutiveFrames {
    uint64_t frames = 0;
    uint64_t bytes = 0;
};

ConsecutiveFrames consecutive_frames(FrameKind kind, Bytes bytes) {
    ConsecutiveFrames run;
    for (uint32_t size = audio_frame_size(kind, bytes); size != 0 && size <= bytes.size();
         size = audio_frame_size(kind, bytes)) {
        ++run.frames;
        run.bytes += size;
        bytes = bytes.subspan(size);
    }
    return run;
}

} // namespace

bool describe_mpeg_audio_frame(Bytes start, ZatStream* stream, char (&line)[line_size]) {
    const uint8_t sync[2] = {byte_at(start, 0), byte_at(start, 1)};
    MpegAudioInfo info;
    if (!IsMpegAudioSync(sync) || read_mpeg_audio_header(start, &info) != 0) {
        return false;
    }
    // Without usable counts the line shows what was decoded all the same.
    (void)ParseVbrHeader(start, &info);
    mpeg_audio_facts(info, stream);
    FormatMpegAudioLine(&info, line);
    return true;
}

void describe_mpeg_audio_at_rate(
    Bytes start, uint64_t bit_rate, ZatStream* stream, char (&line)[line_size]) {
    MpegAudioInfo info;
    if (read_mpeg_audio_header(start, &info) != 0) {
        return;
    }
    (void)ParseVbrHeader(start, &info);
    info.rate_mode = rate_mode_variable;
    info.average_bitrate = static_cast<double>(bit_rate) / 1000;
    FormatMpegAudioLine(&info, line);
    stream->bit_rate = bit_rate;
    stream->bit_rate_mode = ZAT_BIT_RATE_VARIABLE;
}

bool describe_ac3_frame(Bytes start, ZatStream* stream, char (&line)[line_size]) {
    Ac3Info info;
    if (ac3_info(start, &info) != 0) {
        return false;
    }
    ac3_facts(info, stream);
    ac3_line(&info, line);
    return true;
}

bool describe_eac3_frame(Bytes start, ZatStream* stream, char (&line)[line_size]) {
    Eac3Info info;
    if (!eac3_info(start, &info)) {
        return false;
    }
    eac3_facts(info, stream);
    eac3_line(&info, line);
    return true;
}

bool describe_dolby_frame(Bytes start, ZatStream* stream, char (&line)[line_size]) {
    return describe_ac3_frame(start, stream, line) || describe_eac3_frame(start, stream, line);
}

bool describe_dts_frame(Bytes start, ZatStream* stream, char (&line)[line_size]) {
    DtsInfo info;
    if (dts_info(start, &info) != 0) {
        return false;
    }
    dts_facts(info, stream);
    dts_line(&info, line);
    return true;
}

bool describe_adts_frame(Bytes start, ZatStream* stream, char (&line)[line_size]) {
    const uint8_t sync[2] = {byte_at(start, 0), byte_at(start, 1)};
    AdtsHeader header;
    if (!IsAdtsSync(sync) || ParseAdtsHeader(start, &header) != 0) {
        return false;
    }
    adts_facts(header, start, stream);
    const ConsecutiveFrames run = consecutive_frames(FrameKind::adts, start);
    const uint64_t samples = run.frames * adts_frame_samples(start);
    if (samples != 0) {
        const uint64_t bits = run.bytes * 8;
        header.frame_length = static_cast<uint32_t>(run.bytes / run.frames);
        header.bitrate = static_cast<uint32_t>(bits * header.sample_rate / samples);
        stream->bit_rate = bits * stream->sample_rate / samples;
    }
    FormatAdtsLine(&header, line);
    return true;
}

bool describe_loas_frame(Bytes start, ZatStream* stream, char (&line)[line_size]) {
    LatmInfo info;
    if (!latm_info(start, &info)) {
        return false;
    }
    latm_facts(info, stream);
    latm_line(&info, line);
    return true;
}

FrameDescriber frame_describer(uint16_t format_tag) {
    const TaggedDescriber* row = find_row(tagged_describers, &TaggedDescriber::tag, format_tag);
    return row != nullptr ? row->describe : nullptr;
}

} // namespace zat
