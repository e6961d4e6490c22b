#include "container/mpeg_ts/describe.h"

#include "audio/ac3.h"
#include "audio/dts_hd.h"
#include "audio/eac3.h"
#include "audio/first_frame.h"
#include "audio/frame_search.h"
#include "audio/latm.h"
#include "audio/lpcm.h"
#include "audio/opus.h"
#include "audio/stream_facts.h"
#include "audio/sync_search.h"
#include "audio/truehd.h"
#include "common/bytes/tables.h"
#include "common/record/stream_lines.h"

#include <algorithm>
#include <iterator>

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

bool describe_adts(Bytes captured, ZatStream* facts, StreamText* text) {
    return describe_first_frame(FrameKind::adts, describe_adts_frame, &captured, facts, text);
}

bool describe_latm(Bytes captured, ZatStream* facts, StreamText* text) {
    constexpr uint32_t samples = 1024;
    LatmInfo info;
    const int64_t at = find_loas_sync(captured);
    if (at < 0 || !latm_info(captured.subspan(static_cast<size_t>(at)), &info)) {
        return false;
    }
    latm_facts(info, facts);
    latm_line(&info, text->line);
    text->frame_seconds = info.config.sample_rate != 0 ? static_cast<double>(info.sub_frames) *
                                                             samples / info.config.sample_rate
                                                       : 0;
    text->has_line = true;
    return true;
}

// Either form occurs under the stream type of the other.
bool describe_aac(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    constexpr uint8_t latm_type = 0x11;
    if (stream.type == latm_type) {
        return describe_latm(captured, facts, text) || describe_adts(captured, facts, text);
    }
    return describe_adts(captured, facts, text) || describe_latm(captured, facts, text);
}

bool describe_eac3(const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    Eac3Info info;
    if (!find_eac3(&captured, &info)) {
        return false;
    }
    eac3_facts(info, facts);
    eac3_line(&info, text->line);
    set_frame_time(info.first.samples, *facts, text);
    text->has_line = true;
    return true;
}

bool describe_ac3(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    return describe_first_frame(FrameKind::ac3, describe_ac3_frame, &captured, facts, text) ||
           describe_eac3(stream, captured, facts, text);
}

// The first frame of an AC-3 core in the bytes; nothing when there is none. Frames and access units
// follow one another, from the unit with the major sync on at the latest.
Bytes find_core(Bytes captured, size_t major_sync) {
    constexpr size_t sync_offset = 4; // in an access unit
    if (audio_frame_size(FrameKind::ac3, captured) != 0) {
        return captured;
    }
    if (major_sync >= sync_offset && major_sync < captured.size()) {
        Bytes rest = captured.subspan(major_sync - sync_offset);
        for (size_t size = mlp_unit_size(rest); size != 0 && size < rest.size();
             size = mlp_unit_size(rest)) {
            rest = rest.subspan(size);
            if (audio_frame_size(FrameKind::ac3, rest) != 0) {
                return rest;
            }
        }
    }
    const int64_t at = find_audio_frame(FrameKind::ac3, captured);
    return at < 0 ? Bytes{} : captured.subspan(static_cast<size_t>(at));
}

// Access units of TrueHD between the frames of an AC-3 core (Blu-ray), or alone.
bool describe_truehd(const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    constexpr uint8_t sync[] = {0xF8, 0x72, 0x6F, 0xBA};
    const auto hit =
        std::search(captured.begin(), captured.end(), std::begin(sync), std::end(sync));
    const auto sync_at = static_cast<size_t>(hit - captured.begin());
    TrueHdInfo info;
    const bool has_stream =
        hit != captured.end() && truehd_info(captured.subspan(sync_at), &info) == 0;
    const Bytes core = find_core(captured, sync_at);
    Ac3Info core_info;
    const bool has_core = ac3_info(core, &core_info) == 0;
    if (!has_stream && !has_core) {
        return false;
    }
    text->has_line = true;
    if (has_core) {
        truehd_line(&core_info, text->line);
        ac3_facts(core_info, facts);
        set_frame_time(audio_frame_samples(FrameKind::ac3, core), *facts, text);
    }
    if (has_stream) {
        constexpr double units_per_second = 1200; // in the family of 48 kHz
        *facts = new_stream(ZAT_STREAM_AUDIO);    // not those of the core
        truehd_facts(info, facts);
        text->frame_seconds = has_core ? text->frame_seconds : 1 / units_per_second;
        char line[line_size];
        named_truehd_line(info, has_core ? " TrueHD" : "Dolby_TrueHD", line);
        append_text(text->line, bounded_text(line));
    }
    return true;
}

// The extension substream in the bytes, behind a core of `core_size` bytes. A header that does not
// tell of it gives way to the sync word of the lossless extension (ETSI TS 102 114, 8.2).
bool find_dts_hd(Bytes bytes, size_t core_size, DtsHdInfo* info) {
    constexpr size_t alignment = 4;
    constexpr uint8_t lossless_sync[] = {0x41, 0xA2, 0x95, 0x47};
    const size_t at = (core_size + alignment - 1) / alignment * alignment;
    if (core_size == 0 || at + 4 > bytes.size() || ReadBE32(&bytes[at]) != dts_hd_sync) {
        return false;
    }
    const Bytes substream = bytes.subspan(at);
    (void)dts_hd_info(substream, info);
    const Bytes searched = substream.first(std::min<size_t>(substream.size(), info->size));
    if (info->kind == DtsHdKind::unknown &&
        std::search(searched.begin(), searched.end(), std::begin(lossless_sync),
            std::end(lossless_sync)) != searched.end()) {
        info->kind = DtsHdKind::master_audio;
    }
    return true;
}

const char* declared_extension(const Stream& stream) {
    switch (stream.codec) {
    case Codec::dts_hd_hra:
        return dts_hd_name(DtsHdKind::high_resolution);
    case Codec::dts_hd_ma:
        return dts_hd_name(DtsHdKind::master_audio);
    default:
        return "";
    }
}

bool describe_dts_express(Bytes captured, ZatStream* facts, StreamText* text) {
    constexpr uint8_t sync[] = {0x64, 0x58, 0x20, 0x25};
    const auto hit =
        std::search(captured.begin(), captured.end(), std::begin(sync), std::end(sync));
    DtsHdInfo info;
    if (hit == captured.end() ||
        !dts_hd_info(captured.subspan(static_cast<size_t>(hit - captured.begin())), &info)) {
        return false;
    }
    copy_utf8(facts->codec, "DTS");
    dts_hd_facts(info, facts);
    const char* name = dts_hd_name(info.kind);
    format_text(text->line, sizeof text->line, "[%s]", name[0] != '\0' ? name : "DTS-HD");
    text->has_line = true;
    text->measures_rate = true;
    return true;
}

bool describe_dts(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    // Not by frames that follow one another: extensions stand between them.
    const int64_t at = find_dts_sync(captured);
    if (at < 0) {
        return describe_dts_express(captured, facts, text);
    }
    captured = captured.subspan(static_cast<size_t>(at));
    if (!describe_dts_frame(captured, facts, text->line)) {
        return false;
    }
    set_frame_time(audio_frame_samples(FrameKind::dts, captured), *facts, text);
    text->has_line = true;
    DtsHdInfo info;
    const char* name = declared_extension(stream);
    if (find_dts_hd(captured, audio_frame_size(FrameKind::dts, captured), &info)) {
        dts_hd_facts(info, facts);
        name = info.kind != DtsHdKind::unknown ? dts_hd_name(info.kind) : name;
    }
    append_word(text->line, name);
    return true;
}

bool describe_lpcm(const Stream& /*stream*/, Bytes captured, ZatStream* facts, StreamText* text) {
    if (captured.size() < 4) {
        return false;
    }
    LpcmInfo info;
    (void)bd_lpcm_info(captured, &info);
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

// What stands behind the opus_control_header() of an access unit; nothing without one.
Bytes opus_packet(Bytes unit) {
    const uint8_t flags = byte_at(unit, 1);
    if (byte_at(unit, 0) != 0x7F || (flags & 0xE0) != 0xE0) { // control_header_prefix
        return {};
    }
    size_t at = 2;
    while (byte_at(unit, at) == 0xFF) { // au_size
        ++at;
    }
    ++at;
    at += (flags & 0x10) != 0 ? 2 : 0;                      // start_trim
    at += (flags & 0x08) != 0 ? 2 : 0;                      // end_trim
    at += (flags & 0x04) != 0 ? 1U + byte_at(unit, at) : 0; // control_extension
    return unit.subspan(std::min(at, unit.size()));
}

bool describe_opus(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    facts->sample_rate = opus_rate;
    facts->channels = stream.opus_channels;
    set_frame_time(opus_packet_samples(opus_packet(captured)), *facts, text);
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
    {Codec::eac3, describe_eac3},
    {Codec::truehd, describe_truehd},
    {Codec::dts, describe_dts},
    {Codec::dts_hd_hra, describe_dts},
    {Codec::dts_hd_ma, describe_dts},
    {Codec::dts_express, describe_dts},
    {Codec::lpcm, describe_lpcm},
    {Codec::s302m, describe_s302m},
    {Codec::opus, describe_opus},
    {Codec::unknown_audio, describe_any},
};

} // namespace

bool describe_audio(const Stream& stream, Bytes captured, ZatStream* facts, StreamText* text) {
    const DescriberRow* row = find_row(describers, &DescriberRow::codec, stream.codec);
    return row != nullptr && row->describe(stream, captured, facts, text);
}

bool has_audio_describer(Codec codec) {
    return find_row(describers, &DescriberRow::codec, codec) != nullptr;
}

} // namespace zat::ts
