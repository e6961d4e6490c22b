#include "audio/wave_stream.h"

#include "audio/aac.h"
#include "audio/first_frame.h"
#include "audio/stream_facts.h"
#include "audio/wave_format.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/catalogue/codec_names.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"

#include <algorithm>

namespace zat {

namespace {

constexpr size_t extension_at = 18; // behind the extension's size
constexpr size_t extensible_part = wave_extensible_size - extension_at;

// Format tags (RFC 2361 and the multimedia registry).
enum Tag : uint16_t {
    tag_wma_pro = 0x0162,
    tag_wma_lossless = 0x0163,
    tag_aac = 0x00FF,
    tag_mpeg_aac = 0xA106,
    tag_adts_aac = 0x1600,
};

struct Parsed {
    WaveFormat format;
    uint16_t tag = 0;
    Bytes extension;
    uint32_t bits = 0; // that count
    uint32_t mask = 0; // of channels
};

Parsed parse(Bytes bytes) {
    Parsed parsed;
    parsed.format = read_wave_format(bytes);
    parsed.tag = codec_tag(parsed.format);
    parsed.bits = parsed.format.bits_per_sample;
    if (bytes.size() > extension_at) {
        const size_t size =
            std::min<size_t>(parsed.format.extension_size, bytes.size() - extension_at);
        parsed.extension = bytes.subspan(extension_at, size);
    }
    const bool is_wma = parsed.tag == tag_wma_pro || parsed.tag == tag_wma_lossless;
    if (parsed.format.tag == wave_tag_extensible || (is_wma && parsed.extension.size() >= 6)) {
        // Both begin with the valid bits and the channel mask.
        parsed.mask = parsed.format.channel_mask;
        parsed.bits = parsed.format.valid_bits != 0 ? parsed.format.valid_bits : parsed.bits;
    }
    if (parsed.format.tag == wave_tag_extensible) { // the codec's own bytes stand behind that
        parsed.extension =
            parsed.extension.subspan(std::min(extensible_part, parsed.extension.size()));
    }
    return parsed;
}

bool is_aac(uint16_t tag) {
    return tag == tag_aac || tag == tag_mpeg_aac || tag == tag_adts_aac;
}

// Frames of one size by their headers whose bytes say otherwise: the stream varies.
bool describe_mpeg_audio(const WaveStream& wave, ZatStream* stream, char (&line)[line_size]) {
    if (!describe_mpeg_audio_frame(wave.start, stream, line)) {
        return false;
    }
    if (wave.rate_is_counted && wave.rate != 0 && !is_same_bit_rate(wave.rate, stream->bit_rate)) {
        describe_mpeg_audio_at_rate(wave.start, wave.rate, stream, line);
    }
    return true;
}

bool describe_aac(
    const WaveStream& wave, const Parsed& parsed, ZatStream* stream, char (&line)[line_size]) {
    constexpr size_t smallest_config = 2;
    if (parsed.extension.size() >= smallest_config) {
        AacConfig config;
        GetAACConfig(parsed.extension, &config);
        config.container_channels = parsed.format.channels;
        config.container_sample_rate = parsed.format.sample_rate;
        config.average_bitrate =
            static_cast<uint32_t>(std::min<uint64_t>(stream->bit_rate, UINT32_MAX));
        format_known_aac_line(&config, line);
        AudioSpecificConfig specific;
        read_audio_specific_config(parsed.extension, &specific);
        aac_facts(specific, stream);
        return true;
    }
    AdtsHeader header;
    const uint8_t sync[2] = {byte_at(wave.start, 0), byte_at(wave.start, 1)};
    if (!IsAdtsSync(sync) || ParseAdtsHeader(wave.start, &header) != 0) {
        return false;
    }
    const uint64_t rate = stream->bit_rate;
    const uint32_t estimated = stream->estimated;
    adts_facts(header, wave.start, stream);
    if (rate != 0) {
        header.bitrate = static_cast<uint32_t>(std::min<uint64_t>(rate, UINT32_MAX));
        stream->bit_rate = rate;
        stream->estimated = estimated;
    }
    FormatAdtsLine(&header, line);
    return true;
}

// AC-3 and DTS also go as PCM, for players that hand it on to a decoder, and by GUIDs of their own.
bool describe_by_sync(Bytes start, ZatStream* stream, char (&line)[line_size]) {
    const ZatStream told = *stream;
    stream->profile[0] = '\0';
    stream->bit_depth = 0;
    stream->bit_rate_mode = 0;
    if (describe_dolby_frame(start, stream, line) || describe_dts_frame(start, stream, line)) {
        return true;
    }
    *stream = told;
    return false;
}

bool describe_frames(
    const WaveStream& wave, const Parsed& parsed, ZatStream* stream, char (&line)[line_size]) {
    if (is_aac(parsed.tag)) {
        return describe_aac(wave, parsed, stream, line);
    }
    if (parsed.tag == wave_tag_mpeg || parsed.tag == wave_tag_mpeg_layer3) {
        return describe_mpeg_audio(wave, stream, line);
    }
    if (parsed.tag == wave_tag_pcm || parsed.tag == wave_tag_extensible) {
        return describe_by_sync(wave.start, stream, line);
    }
    const FrameDescriber describe = frame_describer(parsed.tag);
    return describe != nullptr && describe(wave.start, stream, line);
}

// Whether a sample has a size that says something of the sound.
bool has_bits(const ZatStream& stream) {
    static constexpr std::string_view codecs[] = {"PCM", "ADPCM", "A-law", "mu-law", "WMA Pro"};
    return (stream.flags & ZAT_FLAG_LOSSLESS) != 0 ||
           std::find(std::begin(codecs), std::end(codecs), bounded_text(stream.codec)) !=
               std::end(codecs);
}

void codec_text(const Parsed& parsed, char (&out)[codec_name_size]) {
    if (parsed.tag == wave_tag_extensible) {
        wave_guid_name(parsed.format.guid, out);
    } else {
        wave_tag_name(parsed.tag, out);
    }
}

uint64_t told_rate(const Parsed& parsed) {
    return uint64_t{parsed.format.byte_rate} * 8;
}

void set_format_facts(const WaveStream& wave, const Parsed& parsed, ZatStream* stream) {
    set_format_tag_codec(stream, parsed.tag, parsed.format.bits_per_sample);
    if (std::string_view(stream->codec) == "PCM") {
        stream->bit_rate_mode = ZAT_BIT_RATE_CONSTANT;
        stream->bit_depth = std::min(stream->bit_depth, parsed.bits); // some may be unused
    }
    stream->sample_rate = parsed.format.sample_rate;
    stream->channels = parsed.format.channels;
    if ((stream->flags & ZAT_FLAG_LOSSLESS) != 0) {
        stream->bit_depth = parsed.bits;
    }
    set_layout(parsed.mask, stream);
    stream->bit_rate = wave.rate != 0 ? wave.rate : told_rate(parsed);
    const bool is_estimated = wave.rate != 0 && wave.rate_is_estimated;
    stream->estimated &= ~uint32_t{ZAT_ESTIMATED_BIT_RATE}; // of a rate that gave way
    stream->estimated |= is_estimated ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0;
}

void keep_claim(const Parsed& parsed, ZatStream* stream) {
    const uint64_t told = told_rate(parsed);
    if (told != 0 && !is_same_bit_rate(stream->bit_rate, told)) {
        stream->nominal_bit_rate = told;
    }
}

void take_details_rate(const WaveStream& wave, ZatStream* stream) {
    if (wave.details_rate != 0 && !is_same_bit_rate(wave.details_rate, stream->bit_rate)) {
        stream->nominal_bit_rate = stream->bit_rate;
        stream->bit_rate = wave.details_rate;
    }
}

void format_named_line(const Parsed& parsed, const ZatStream& stream, char (&line)[line_size]) {
    char name[codec_name_size];
    codec_text(parsed, name);
    LineText text;
    text.codec = bounded_text(name);
    text.bits = has_bits(stream) ? parsed.bits : 0;
    text.channel_mask = parsed.mask;
    format_audio_line(stream, text, line);
}

} // namespace

void add_wave_stream(const Output& out, const WaveStream& wave, ZatStream* stream) {
    const Parsed parsed = parse(wave.format);
    const double duration = stream->duration;
    set_format_facts(wave, parsed, stream);
    char line[line_size];
    const bool has_line = describe_frames(wave, parsed, stream, line);
    if (has_line) {
        stream->duration = duration != 0 ? duration : stream->duration;
        if (wave.rate_is_estimated && stream->bit_rate != wave.rate) { // the frame's own
            stream->estimated &= ~uint32_t{ZAT_ESTIMATED_BIT_RATE};
        }
    }
    keep_claim(parsed, stream);
    drop_nonsense(stream);
    if (!has_line) {
        format_named_line(parsed, *stream, line);
    }
    take_details_rate(wave, stream);
    add_stream_line(out, *stream, bounded_text(line));
}

} // namespace zat
