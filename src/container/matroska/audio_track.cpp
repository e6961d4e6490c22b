#include "audio/aac.h"
#include "audio/alac.h"
#include "audio/dts_hd.h"
#include "audio/eac3.h"
#include "audio/first_frame.h"
#include "audio/flac_streaminfo.h"
#include "audio/opus.h"
#include "audio/stream_facts.h"
#include "audio/wave_format.h"
#include "audio/wave_stream.h"
#include "common/bytes/numbers.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/catalogue/codec_names.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "container/matroska/track_stream.h"

#include <algorithm>
#include <bit>

namespace zat::matroska {

namespace {

constexpr uint32_t audio_private_size = 1024; // bytes
constexpr uint32_t audio_frame_size = 4096;
static_assert(audio_frame_size >= frame_start_size);

// What a track is described from and what its line is made of: a line of its parser, or the generic
// one.
struct Description {
    const Track* track = nullptr;
    Parser parser = Parser::plain;
    uint8_t private_bytes[audio_private_size];
    uint8_t frame_bytes[audio_frame_size];
    Bytes codec_private;
    Bytes start;       // of the first frame
    uint64_t rate = 0; // bit/s by statistics or count; 0 when not known exactly
    char line[line_size] = "";
    char codec[256] = "";
    uint32_t bits = 0;
};

// A header's rate is a claim where the container knows better.
void keep_rate(uint64_t rate, ZatStream* stream) {
    if (rate != 0) {
        stream->nominal_bit_rate =
            stream->bit_rate != 0 && !is_same_bit_rate(rate, stream->bit_rate) ? stream->bit_rate
                                                                               : 0;
        stream->bit_rate = rate;
    }
}

void describe_by_frame(FrameDescriber describer, Description* text, ZatStream* stream) {
    const ZatStream told = *stream;
    if (!describer(text->start, stream, text->line)) {
        text->line[0] = '\0';
        *stream = told;
        return;
    }
    stream->estimated &= ~uint32_t{ZAT_ESTIMATED_BIT_RATE};
    keep_rate(text->rate, stream);
    stream->duration = told.duration;
    stream->samples = 0;
}

// A DTS core with the extension behind it in the frame: " DTS-HD MA 8ch 1597.061kbps".
void describe_dts(Description* text, ZatStream* stream) {
    const ZatStream told = *stream;
    describe_by_frame(describe_dts_frame, text, stream);
    DtsInfo core;
    DtsHdInfo extension;
    const bool has_core = text->line[0] != '\0' && dts_info(text->start, &core) == 0;
    const size_t at = has_core ? core.frame_size : 0;
    if (at >= text->start.size() || !dts_hd_info(text->start.subspan(at), &extension)) {
        return;
    }
    dts_hd_facts(extension, stream);
    if (extension.kind != DtsHdKind::unknown) { // the core's rate is not the stream's
        stream->bit_rate = told.bit_rate;
        stream->nominal_bit_rate = 0;
        stream->estimated = told.estimated;
    }
    const char* name = dts_hd_name(extension.kind);
    if (!has_core || name[0] == '\0') {
        return;
    }
    append_word(text->line, name);
    char piece[64];
    if (text->track->audio.channels != 0) {
        format_text(piece, sizeof piece, "%dch", static_cast<int32_t>(text->track->audio.channels));
        append_word(text->line, piece);
    }
    if (text->rate != 0) {
        format_text(piece, sizeof piece, "%.3fkbps", static_cast<double>(text->rate) * 0.001);
        append_word(text->line, piece);
    }
}

void describe_mpeg_audio(Description* text, ZatStream* stream) {
    describe_by_frame(describe_mpeg_audio_frame, text, stream);
    if (text->line[0] != '\0' && stream->nominal_bit_rate != 0) {
        describe_mpeg_audio_at_rate(text->start, text->rate, stream, text->line);
    }
}

// E-AC-3 tells no rate: that of its first frames gives way to a known one.
void describe_dolby(FrameDescriber describer, Description* text, ZatStream* stream) {
    describe_by_frame(describer, text, stream);
    Eac3Info info;
    if (bounded_text(stream->codec) == "E-AC-3" && stream->nominal_bit_rate != 0 &&
        eac3_info(text->start, &info)) {
        info.bitrate = clamp_to_integer<uint32_t>(static_cast<double>(text->rate));
        eac3_line(&info, text->line);
        stream->nominal_bit_rate = 0;
    }
}

// Identifiers of AAC without a configuration name its profile: "A_AAC/MPEG4/LC/SBR".
AudioSpecificConfig config_of_id(std::string_view id, const AudioSettings& audio) {
    struct Row {
        std::string_view name;
        uint32_t object_type;
    };
    static constexpr Row rows[] = {{"/MAIN", 1}, {"/LC", 2}, {"/SSR", 3}, {"/LTP", 4}};
    AudioSpecificConfig config;
    for (const Row& row : rows) {
        if (id.find(row.name) != std::string_view::npos) {
            config.object_type = row.object_type;
        }
    }
    config.sample_rate = clamp_to_integer<uint32_t>(audio.sample_rate);
    config.channels = audio.channels;
    config.channel_configuration = audio.channels < 7 ? audio.channels : 0;
    config.sbr = id.ends_with("/SBR");
    config.sbr_sample_rate = config.sbr ? config.sample_rate * 2 : 0;
    return config;
}

uint8_t sampling_frequency_index(uint32_t rate) {
    uint32_t index = 0;
    while (index < 15 && aac_sample_rate(index) != rate) {
        ++index;
    }
    return static_cast<uint8_t>(index);
}

void describe_aac(Description* text, ZatStream* stream) {
    constexpr uint32_t sync_extension = 0x2B7;
    const AudioSettings& audio = text->track->audio;
    AudioSpecificConfig specific;
    AacConfig config;
    if (text->codec_private.size() >= 2) {
        GetAACConfig(text->codec_private, &config);
        read_audio_specific_config(text->codec_private, &specific);
    } else {
        specific = config_of_id(bounded_text(text->track->codec_id), audio);
        config.object_type = static_cast<uint8_t>(specific.object_type);
        config.sampling_frequency_index = sampling_frequency_index(specific.sample_rate);
        config.channel_configuration = static_cast<uint8_t>(specific.channel_configuration);
        if (specific.sbr) {
            config.sync_extension_type = sync_extension;
            config.extension_object_type = object_type_sbr;
            config.sbr_flag = 1;
        }
        if (specific.object_type == 0) {
            return;
        }
    }
    const double rate = audio.output_rate > 0 ? audio.output_rate : audio.sample_rate;
    config.container_sample_rate = clamp_to_integer<uint32_t>(rate);
    config.container_channels = audio.channels;
    config.average_bitrate = static_cast<uint32_t>(std::min<uint64_t>(text->rate, UINT32_MAX));
    format_known_aac_line(&config, text->line);
    aac_facts(specific, stream);
    if (stream->channels == 0) {
        stream->channels = audio.channels;
    }
    if (stream->sample_rate == 0) {
        stream->sample_rate = config.container_sample_rate;
    }
}

void describe_vorbis(Description* text, ZatStream* stream) {
    const Bytes packet = first_xiph_packet(text->codec_private);
    if (!has_at(packet, 0, "\x01vorbis") || packet.size() <= vorbis_fields_offset) {
        return;
    }
    VorbisInfo info;
    vorbis_info(packet.subspan(vorbis_fields_offset), &info);
    constexpr uint32_t not_set = 0x80000000; // from here on; so is 0
    const uint32_t claim = vorbis_bitrate(&info);
    const bool is_set = claim != 0 && claim < not_set;
    const uint32_t shown = is_set || text->rate == 0
                               ? claim
                               : static_cast<uint32_t>(std::min<uint64_t>(text->rate, UINT32_MAX));
    FormatVorbisLine(&info, shown, text->line);
    vorbis_facts(info, stream);
    if (is_set) { // what was measured of a part gave way to it
        stream->estimated &= ~uint32_t{ZAT_ESTIMATED_BIT_RATE};
    }
    keep_rate(text->rate, stream);
}

void describe_truehd(Description* text, ZatStream* stream) {
    TrueHdInfo info;
    if (truehd_info(text->start, &info) != 0) {
        return;
    }
    named_truehd_line(info, "Dolby_TrueHD", text->line);
    truehd_facts(info, stream);
}

void describe_opus(Description* text, ZatStream* stream) {
    OpusHead head;
    const bool found = read_opus_head(text->codec_private, &head);
    set_opus_facts(found && head.channels != 0 ? head.channels : stream->channels,
        found ? head.mapping_family : 0, stream);
}

void describe_flac(Description* text, ZatStream* stream) {
    constexpr size_t magic_size = 4;
    const bool has_magic = has_at(text->codec_private, 0, "fLaC");
    FlacStreamInfo info;
    if (read_flac_streaminfo(
            flac_streaminfo_of_blocks(text->codec_private.subspan(has_magic ? magic_size : 0)),
            &info)) {
        flac_facts(info, stream);
        stream->samples = info.samples;
    }
    text->bits = stream->bit_depth;
}

void describe_alac(Description* text, ZatStream* stream) {
    AlacConfig config;
    if (read_alac_config(text->codec_private, &config)) {
        alac_facts(config, stream);
    }
    text->bits = stream->bit_depth;
}

void describe_pcm(PcmKind kind, std::endian order, Description* text, ZatStream* stream) {
    const uint32_t bits = text->track->audio.bits;
    const bool is_byte = kind == PcmKind::signed_integer && bits == 8;
    set_pcm(stream, is_byte ? PcmKind::unsigned_integer : kind, bits, order);
    text->bits = bits;
    const uint64_t rate = uint64_t{stream->sample_rate} * stream->channels * bits;
    if (rate != 0) {
        stream->bit_rate = rate;
        stream->estimated &= ~uint32_t{ZAT_ESTIMATED_BIT_RATE};
    }
    stream->bit_rate_mode = ZAT_BIT_RATE_CONSTANT;
}

void describe_entry(Description* text, ZatStream* stream) {
    constexpr size_t code_at = 4;
    if (text->codec_private.size() < code_at + 4) {
        return;
    }
    const uint32_t code = ReadBE32(text->codec_private.data() + code_at);
    fourcc_codec_name("[QT-AUDIO]", code, text->codec, sizeof text->codec);
    set_codec(stream, audio_fourcc_name(code));
}

void describe(Parser parser, Description* text, ZatStream* stream) {
    switch (parser) {
    case Parser::mpeg_audio:
        describe_mpeg_audio(text, stream);
        break;
    case Parser::aac:
        describe_aac(text, stream);
        break;
    case Parser::ac3:
        describe_dolby(describe_dolby_frame, text, stream);
        break;
    case Parser::eac3:
        describe_dolby(describe_eac3_frame, text, stream);
        break;
    case Parser::dts:
        describe_dts(text, stream);
        break;
    case Parser::truehd:
        describe_truehd(text, stream);
        break;
    case Parser::vorbis:
        describe_vorbis(text, stream);
        break;
    case Parser::opus:
        describe_opus(text, stream);
        break;
    case Parser::flac:
        describe_flac(text, stream);
        break;
    case Parser::alac:
        describe_alac(text, stream);
        break;
    case Parser::pcm_signed_le:
        describe_pcm(PcmKind::signed_integer, std::endian::little, text, stream);
        break;
    case Parser::pcm_signed_be:
        describe_pcm(PcmKind::signed_integer, std::endian::big, text, stream);
        break;
    case Parser::pcm_float:
        describe_pcm(PcmKind::floating, std::endian::little, text, stream);
        break;
    case Parser::stsd:
        describe_entry(text, stream);
        break;
    case Parser::lossless:
        stream->bit_depth = text->track->audio.bits;
        text->bits = text->track->audio.bits;
        break;
    default:
        break;
    }
}

// Everything that the line and the details are made of. The bytes belong to the description.
void describe_track(
    const Source& source, const Track& track, Description* text, ZatStream* stream) {
    const Codec* codec = find_codec(bounded_text(track.codec_id));
    *stream = track_stream(source, track, ZAT_STREAM_AUDIO);
    const double rate =
        track.audio.output_rate > 0 ? track.audio.output_rate : track.audio.sample_rate;
    stream->sample_rate = clamp_to_integer<uint32_t>(rate);
    stream->channels = track.audio.channels;
    text->track = &track;
    text->codec_private =
        read_private(source, track, text->private_bytes, sizeof text->private_bytes);
    text->start = read_first_frame(source, track, text->frame_bytes, sizeof text->frame_bytes);
    text->rate = (stream->estimated & ZAT_ESTIMATED_BIT_RATE) == 0 ? stream->bit_rate : 0;
    const bool tells_nothing =
        codec == nullptr || (codec->parser == Parser::acm && text->codec_private.empty());
    text->parser = tells_nothing ? Parser::plain : codec->parser;
    copy_text(text->codec, tells_nothing ? bounded_text(track.codec_id) : codec->text);
    describe(text->parser, text, stream);
    if (stream->codec[0] == '\0' && text->parser != Parser::acm) {
        copy_utf8(stream->codec, bounded_text(track.codec_id));
    }
    drop_nonsense(stream);
}

// A track that WAVEFORMATEX describes keeps its own identifier.
void add_acm(const Source& source, const Description& text, ZatStream* stream) {
    WaveStream wave;
    wave.format = text.codec_private;
    wave.start = text.start;
    wave.rate = text.rate;
    wave.rate_is_counted = text.rate != 0;
    add_wave_stream(source.out, wave, stream);
}

} // namespace

uint64_t known_audio_rate(const Source& source, const Track& track) {
    Description text;
    ZatStream stream;
    describe_track(source, track, &text, &stream);
    return text.parser == Parser::acm && stream.bit_rate == 0
               ? uint64_t{read_wave_format(text.codec_private).byte_rate} * 8
               : stream.bit_rate;
}

void add_audio(const Source& source, uint32_t index) {
    Description text;
    ZatStream stream;
    describe_track(source, source.segment->tracks[index], &text, &stream);
    if (text.parser == Parser::acm) {
        add_acm(source, text, &stream);
    } else if (text.line[0] != '\0') {
        add_stream_line(source.out, stream, bounded_text(text.line));
    } else {
        LineText line;
        line.codec = bounded_text(text.codec);
        line.bits = text.bits;
        add_audio_stream(source.out, stream, line);
    }
}

} // namespace zat::matroska
