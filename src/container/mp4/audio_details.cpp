// The typed details of audio tracks.
#include "audio/ac3_config.h"
#include "audio/alac.h"
#include "audio/apple_layout.h"
#include "audio/audio_specific_config.h"
#include "audio/first_frame.h"
#include "audio/flac_streaminfo.h"
#include "audio/opus.h"
#include "audio/stream_facts.h"
#include "audio/truehd.h"
#include "audio/wave_format.h"
#include "common/bytes/numbers.h"
#include "common/bytes/tables.h"
#include "common/catalogue/codec_names.h"
#include "common/text/text.h"
#include "container/mp4/sample_tables.h"
#include "container/mp4/track_details.h"

#include <bit>
#include <string_view>

namespace zat::mp4 {

namespace {

// Bytes of a decoder configuration that are read, of which the decoders need less.
constexpr uint32_t audio_config_size = 256;

// The formats of uncompressed sound: QuickTime's, and those of ISO/IEC 23003-5.
struct PcmFormat {
    uint32_t format;
    uint32_t bits; // 0: as the entry tells
    PcmKind kind;
    std::endian order;
};

constexpr PcmFormat pcm_formats[] = {
    {fourcc("twos"), 0, PcmKind::signed_integer, std::endian::big},
    {fourcc("sowt"), 0, PcmKind::signed_integer, std::endian::little},
    {fourcc("in24"), 24, PcmKind::signed_integer, std::endian::big},
    {fourcc("in32"), 32, PcmKind::signed_integer, std::endian::big},
    {fourcc("fl32"), 32, PcmKind::floating, std::endian::big},
    {fourcc("fl64"), 64, PcmKind::floating, std::endian::big},
    {fourcc("raw "), 0, PcmKind::unsigned_integer, std::endian::big},
    {fourcc("NONE"), 0, PcmKind::unsigned_integer, std::endian::big},
    {fourcc("lpcm"), 0, PcmKind::signed_integer, std::endian::little},
    {fourcc("ipcm"), 0, PcmKind::signed_integer, std::endian::big},
    {fourcc("fpcm"), 0, PcmKind::floating, std::endian::big},
};

// "ms" and a WAVE format tag.
void read_tagged_pcm(const TrackFacts& facts, ZatStream* stream) {
    if (std::string_view(stream->codec) == "PCM") {
        ZatStream told = *stream;
        set_format_tag_codec(&told, static_cast<uint16_t>(facts.format), facts.entry.sample_size);
        stream->bit_depth = told.bit_depth;
        copy_text(stream->profile, told.profile);
    }
}

std::endian order_of(bool is_little) {
    return is_little ? std::endian::little : std::endian::big;
}

void read_pcm(const TrackFacts& facts, ZatStream* stream) {
    const PcmFormat* row = find_row(pcm_formats, &PcmFormat::format, facts.format);
    if (row == nullptr) {
        read_tagged_pcm(facts, stream);
        return;
    }
    PcmFormat pcm = *row;
    uint8_t buffer[6];
    // A flag that the samples are little-endian.
    const Bytes byte_order = read_box(facts.reader, facts.entry.byte_order, buffer);
    if (byte_order.size() >= 2) {
        pcm.order = order_of(ReadBE16(byte_order.data()) == 1);
    }
    // Version and flags, format flags 1, sample size 1
    const Bytes config = read_box(facts.reader, facts.entry.pcm_configuration, buffer);
    if (config.size() == sizeof buffer) {
        pcm.order = order_of((config[4] & 1) != 0);
        pcm.bits = config[5];
    }
    if (facts.format == fourcc("lpcm")) {
        pcm.kind = (facts.entry.pcm_flags & 1) != 0   ? PcmKind::floating
                   : (facts.entry.pcm_flags & 4) != 0 ? PcmKind::signed_integer
                                                      : PcmKind::unsigned_integer;
        pcm.order = order_of((facts.entry.pcm_flags & 2) == 0);
    }
    set_pcm(stream, pcm.kind, pcm.bits != 0 ? pcm.bits : facts.entry.sample_size, pcm.order);
}

// Version and flags, then Core Audio's layout: see apple_layout.h.
void read_layout(const TrackFacts& facts, ZatStream* stream) {
    uint8_t buffer[4 + apple_layout_size];
    const Bytes box = read_box(facts.reader, facts.entry.channel_layout, buffer);
    if (stream->layout[0] == '\0' && box.size() > 4) {
        set_layout(apple_layout_mask(box.subspan(4)), stream);
    }
}

void read_aac(TrackFacts* facts, ZatStream* stream) {
    AudioSpecificConfig config;
    read_audio_specific_config(facts->es.descriptor.specific_info, &config);
    if (config.object_type != 0) {
        ZatStream told = *stream;
        aac_facts(config, &told);
        told.channels = told.channels != 0 ? told.channels : stream->channels;
        told.sample_rate = told.sample_rate != 0 ? told.sample_rate : stream->sample_rate;
        *stream = told;
    }
}

void read_dolby(TrackFacts* facts, ZatStream* stream) {
    uint8_t box[audio_config_size];
    Ac3Config config;
    const bool told =
        size_of(facts->entry.eac3_configuration) != 0
            ? read_eac3_config(
                  read_box(facts->reader, facts->entry.eac3_configuration, box), &config)
            : read_ac3_config(
                  read_box(facts->reader, facts->entry.audio_configuration, box), &config);
    if (told) {
        stream->channels = config.channels;
        stream->sample_rate = config.sample_rate != 0 ? config.sample_rate : stream->sample_rate;
        set_layout(ac3_config_mask(config), stream);
        facts->claim = config.bit_rate;
        if (config.joint_object_coding) {
            copy_utf8(stream->profile, "Atmos");
        }
    }
}

// DTSSpecificBox (ETSI TS 102 114, E.2.2.3): sampling frequency, maximum and average rate, depth.
void read_dts(TrackFacts* facts, ZatStream* stream) {
    uint8_t box[13];
    const Bytes config = read_box(facts->reader, facts->entry.audio_configuration, box);
    if (config.size() == sizeof box && ReadBE32(box) != 0) {
        stream->sample_rate = ReadBE32(box);
        facts->claim = ReadBE32(box + 8);
    }
}

// MLPSpecificBox: format_info, peak_data_rate.
void read_truehd(TrackFacts* facts, ZatStream* stream) {
    uint8_t format[4];
    TrueHdInfo info;
    if (read_truehd_format(
            read_box(facts->reader, facts->entry.audio_configuration, format), &info) &&
        info.channels != 0 && info.sample_rate != 0) {
        truehd_format_facts(info, stream);
    }
}

void read_opus(TrackFacts* facts, ZatStream* stream) {
    uint8_t box[audio_config_size];
    OpusHead head;
    stream->sample_rate = opus_rate; // whatever the encoder's input had
    if (read_opus_record(read_box(facts->reader, facts->entry.audio_configuration, box), &head)) {
        set_opus_facts(head.channels, head.mapping_family, stream);
    }
}

void read_flac(TrackFacts* facts, ZatStream* stream) {
    uint8_t box[audio_config_size];
    FlacStreamInfo info;
    const Span behind_version = sub_span(facts->entry.flac_configuration, 4);
    const Bytes blocks = read_box(facts->reader, behind_version, box);
    if (read_flac_streaminfo(flac_streaminfo_of_blocks(blocks), &info) && info.sample_rate != 0) {
        flac_facts(info, stream);
        stream->samples = info.samples;
    }
}

void read_alac(TrackFacts* facts, ZatStream* stream) {
    uint8_t box[audio_config_size];
    AlacConfig config;
    const Span behind_version = sub_span(facts->entry.alac_cookie, 4);
    if (read_alac_config(read_box(facts->reader, behind_version, box), &config)) {
        alac_facts(config, stream);
        facts->claim = config.average_bit_rate;
    }
}

// WAVEFORMATEX in a box of its own.
void read_wave_format_box(TrackFacts* facts, ZatStream* stream) {
    uint8_t box[audio_config_size];
    const Bytes bytes = read_box(facts->reader, facts->entry.audio_configuration, box);
    const CodecName name = bytes.size() >= wave_plain_size
                               ? format_tag_name(codec_tag(read_wave_format(bytes)))
                               : CodecName{};
    if (!name.codec.empty()) {
        set_codec(stream, name);
    }
}

void read_amr(TrackFacts* /*facts*/, ZatStream* stream) {
    // The entry's own fields are fixed, whatever the sound is (3GPP TS 26.244, 6.5).
    stream->sample_rate = std::string_view(stream->codec) == "AMR-NB" ? 8000 : 16000;
    stream->channels = 1;
}

using ConfigReader = void (*)(TrackFacts* facts, ZatStream* stream);

struct CodecReader {
    std::string_view codec;
    ConfigReader read;
};

constexpr CodecReader config_readers[] = {
    {"AAC", read_aac},
    {"AC-3", read_dolby},
    {"E-AC-3", read_dolby},
    {"DTS", read_dts},
    {"TrueHD", read_truehd},
    {"Opus", read_opus},
    {"FLAC", read_flac},
    {"ALAC", read_alac},
    {"WMA1", read_wave_format_box},
    {"AMR-NB", read_amr},
    {"AMR-WB", read_amr},
};

struct CodecDescriber {
    std::string_view codec;
    FrameDescriber describe;
};

constexpr CodecDescriber frame_describers[] = {
    {"MP1", describe_mpeg_audio_frame},
    {"MP2", describe_mpeg_audio_frame},
    {"MP3", describe_mpeg_audio_frame},
    {"AC-3", describe_ac3_frame},
    {"DTS", describe_dts_frame},
};

// What the first frame tells stands over what the entry does, but not over its own counts: those of
// the frame may be of a file that it came from.
void read_first_frame(TrackFacts* facts, ZatStream* stream) {
    const std::string_view codec = bounded_text(stream->codec);
    const CodecDescriber* row = find_row(frame_describers, &CodecDescriber::codec, codec);
    if (row == nullptr || (stream->flags & ZAT_FLAG_ENCRYPTED) != 0) {
        return;
    }
    uint8_t start[frame_start_size];
    char line[line_size];
    const uint32_t length = read_first_chunk(facts->reader, *facts->track, start, sizeof start);
    const double duration = stream->duration;
    if (length != 0 && row->describe({start, length}, stream, line)) {
        stream->duration = duration;
        stream->samples = 0;
    }
}

} // namespace

void describe_audio_track(TrackFacts* facts, ZatStream* stream) {
    stream->sample_rate = facts->entry.sample_rate;
    stream->channels = facts->entry.channels;
    set_track_codec(*facts, stream);
    read_pcm(*facts, stream);
    for (const CodecReader& row : config_readers) {
        if (row.codec == bounded_text(stream->codec)) {
            row.read(facts, stream);
            break;
        }
    }
    read_first_frame(facts, stream);
    read_layout(*facts, stream);
    const SampleTotals& totals = facts->track->totals;
    if (totals.one_size && totals.samples != 0) {
        stream->bit_rate_mode = ZAT_BIT_RATE_CONSTANT;
    }
    if (stream->samples == 0 && facts->track->time_scale == stream->sample_rate) {
        stream->samples = clamp_to_integer<uint64_t>(facts->seconds * stream->sample_rate + 0.5);
    }
}

} // namespace zat::mp4
