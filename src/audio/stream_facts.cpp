#include "audio/stream_facts.h"

#include "common/bytes/bits.h"
#include "common/bytes/numbers.h"
#include "common/catalogue/codec_names.h"
#include "common/record/channel_layout.h"
#include "common/record/details.h"
#include "common/text/text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <iterator>

namespace zat {

namespace {

// Speakers by the bits of a channel mask.
constexpr uint32_t front = 0x3;
constexpr uint32_t centre = 0x4;
constexpr uint32_t lfe = 0x8;
constexpr uint32_t back = 0x30;
constexpr uint32_t front_of_centre = 0xC0;
constexpr uint32_t back_centre = 0x100;
constexpr uint32_t side = 0x600;
constexpr uint32_t top_centre = 0x800;
constexpr uint32_t top_front = 0x5000;
constexpr uint32_t top_front_centre = 0x2000;

template <size_t N>
uint32_t mask_of(const uint32_t (&masks)[N], size_t code) {
    return code < N ? masks[code] : 0;
}

// Sets channels and layout by a mask.
void set_speakers(uint32_t mask, ZatStream* stream) {
    stream->channels = static_cast<uint32_t>(std::popcount(mask));
    set_layout(mask, stream);
}

void set_rates(int64_t sample_rate, int64_t bit_rate, ZatStream* stream) {
    stream->sample_rate = sample_rate > 0 ? static_cast<uint32_t>(sample_rate) : 0;
    stream->bit_rate = bit_rate > 0 ? static_cast<uint64_t>(bit_rate) : 0;
}

// The rates of MPEG audio frames are multiples of 1000 bit/s; padding keeps a mean from being one.
uint64_t whole_kilobits(double bit_rate) {
    constexpr double tolerance = 0.005;
    const auto kilobits = clamp_to_integer<uint64_t>(bit_rate / 1000 + 0.5);
    const double rounded = static_cast<double>(kilobits) * 1000;
    return std::abs(rounded - bit_rate) <= bit_rate * tolerance
               ? kilobits * 1000
               : clamp_to_integer<uint64_t>(bit_rate + 0.5);
}

// `stored_channels` and `stored_bits` are those that bytes are spent on.
void set_lpcm(const LpcmInfo& info, uint32_t stored_channels, int stored_bits, ZatStream* stream) {
    const bool known = info.bits > 0;
    set_pcm(stream, PcmKind::signed_integer, known ? static_cast<uint32_t>(info.bits) : 0,
        std::endian::big);
    stream->bit_rate =
        known ? uint64_t{stream->sample_rate} * stored_channels * static_cast<uint32_t>(stored_bits)
              : 0;
    stream->bit_rate_mode = ZAT_BIT_RATE_CONSTANT;
}

// What an encoder wrote of itself. LAME's name and version fill nine bytes; what stands behind them
// is not text, though it may look like it.
void set_encoder(const MpegAudioInfo& info, ZatStream* stream) {
    constexpr size_t lame_size = 9;
    std::string_view encoder = printable_text(bounded_text(info.encoder_string));
    if (encoder.starts_with("LAME")) {
        encoder = encoder.substr(0, lame_size);
    }
    copy_utf8(stream->encoder, encoder);
}

// ISO/IEC 14496-3, table 1.17, in the words of the details.
const char* object_type_profile(uint32_t object_type) {
    switch (object_type) {
    case 1:
        return "Main";
    case object_type_aac_lc:
        return "LC";
    case 3:
        return "SSR";
    case 4:
        return "LTP";
    case 6:
        return "Scalable";
    case 17:
        return "ER LC";
    case 19:
        return "ER LTP";
    case 20:
        return "ER Scalable";
    case 22:
        return "BSAC";
    case 23:
        return "LD";
    case 39:
        return "ELD";
    case object_type_usac:
        return "xHE-AAC";
    default:
        return "";
    }
}

// The codecs that share AAC's configuration.
const char* object_type_codec(uint32_t object_type) {
    switch (object_type) {
    case 8:
    case 24:
        return "CELP";
    case 9:
    case 25:
        return "HVXC";
    case 7:
    case 21:
        return "TwinVQ";
    case 32:
        return "MP1";
    case 33:
        return "MP2";
    case 34:
        return "MP3";
    case 36:
        return "MPEG-4 ALS";
    case 37:
    case 38:
        return "MPEG-4 SLS";
    default:
        return "AAC";
    }
}

// By channelConfiguration.
constexpr uint32_t aac_masks[] = {0, centre, front, front | centre, front | centre | back_centre,
    front | centre | side, front | centre | side | lfe,
    front | centre | side | lfe | front_of_centre, 0, 0, 0,
    front | centre | side | lfe | back_centre, front | centre | side | lfe | back, 0,
    front | centre | side | lfe | top_front};

// `channels` by a channel configuration of theirs, which may be 0.
void set_aac_channels(uint32_t channel_configuration, uint32_t channels, ZatStream* stream) {
    if (channels != 0) { // else what the container told stands
        stream->channels = channels;
        set_layout(mask_of(aac_masks, channel_configuration), stream);
    }
}

// A stream without a channel configuration may begin with a program_config_element.
void set_channels_of_first_element(Bytes frame, ZatStream* stream) {
    constexpr uint32_t program_config = 5; // id_syn_ele
    constexpr uint32_t crc_size = 2;
    const bool protection_absent = (byte_at(frame, 1) & 1) != 0;
    const size_t header = adts_header_size + (protection_absent ? 0 : crc_size);
    BitReader reader{.bytes = frame.subspan(std::min(header, frame.size()))};
    const bool has_element = read_bits(&reader, 3) == program_config;
    const ProgramConfig program = read_program_config(&reader, 0);
    if (has_element && !reader.failed) {
        set_aac_channels(program.channel_configuration, program.channels, stream);
    }
}

} // namespace

void set_layout(uint32_t mask, ZatStream* stream) {
    details_layout(mask, stream->channels, stream->layout);
}

void mpeg_audio_facts(const MpegAudioInfo& info, ZatStream* stream) {
    if (info.layer < 1) {
        return;
    }
    format_text(stream->codec, sizeof stream->codec, "MP%d", info.layer);
    constexpr uint8_t single_channel = 3;
    constexpr uint8_t dual_channel = 2;
    stream->channels = info.channel_mode == single_channel ? 1 : 2;
    if (info.channel_mode != dual_channel) {
        set_layout(stream->channels == 1 ? centre : front, stream);
    }
    const bool constant = info.rate_mode == rate_mode_constant;
    set_rates(static_cast<int32_t>(info.sample_rate), constant ? info.bitrate * 1000 : 0, stream);
    // Without a header that counts frames, one of Layer III says nothing of those behind it.
    if (info.rate_mode == rate_mode_variable) {
        stream->bit_rate_mode = ZAT_BIT_RATE_VARIABLE;
    } else if (info.frame_count != 0 || info.layer < 3) {
        stream->bit_rate_mode = ZAT_BIT_RATE_CONSTANT;
    }
    set_encoder(info, stream);
    if (info.frame_count == 0 || stream->sample_rate == 0) {
        return;
    }
    // What the header counts; a Xing header's own frame is among the bytes, but not part of the
    // stream. Of a constant rate it tells that of the other frames, which may differ from its own.
    stream->samples = uint64_t{info.frame_count} * mpeg_audio_frame_samples(&info);
    stream->duration = static_cast<double>(stream->samples) / stream->sample_rate;
    const uint32_t own_size =
        std::string_view(info.vbr_header_kind) == "VBRI" ? 0 : info.frame_size;
    if (info.byte_count > own_size) {
        const double rate = (info.byte_count - own_size) * 8.0 / stream->duration;
        stream->bit_rate = constant ? whole_kilobits(rate) : clamp_to_integer<uint64_t>(rate + 0.5);
    }
}

void ac3_facts(const Ac3Info& info, ZatStream* stream) {
    copy_utf8(stream->codec, "AC-3");
    set_speakers(ac3_channel_mask(info.acmod, info.has_lfe), stream);
    if (info.acmod == 0) {
        stream->layout[0] = '\0'; // two programmes
    }
    set_rates(info.sample_rate, int64_t{info.bitrate} * 1000, stream);
    stream->bit_rate_mode = ZAT_BIT_RATE_CONSTANT;
}

void dts_facts(const DtsInfo& info, ZatStream* stream) {
    // By AMODE (ETSI TS 102 114, table 5-4); the other arrangements have speakers without names.
    static constexpr uint32_t masks[] = {centre, 0, front, front, front, front | centre,
        front | back_centre, front | centre | back_centre, front | side, front | centre | side};
    copy_utf8(stream->codec, "DTS");
    const bool has_lfe = info.lfe[0] != '\0';
    const bool xch = info.has_extension && (info.extension_id == dts_extension_xch ||
                                               info.extension_id == dts_extension_xch_x96);
    const bool x96 = info.has_extension && (info.extension_id == dts_extension_x96 ||
                                               info.extension_id == dts_extension_xch_x96);
    uint32_t mask = mask_of(masks, info.amode);
    if (info.channels > 0) {
        stream->channels = static_cast<uint32_t>(info.channels) + (has_lfe ? 1 : 0) + (xch ? 1 : 0);
    }
    if (mask != 0) {
        mask |= (has_lfe ? lfe : 0) | (xch ? back_centre : 0);
        set_layout(mask, stream);
    }
    set_rates(int64_t{info.sample_rate} * (x96 ? 2 : 1), info.bitrate, stream);
    stream->bit_rate_mode = ZAT_BIT_RATE_CONSTANT;
    copy_utf8(stream->profile, x96 ? "96/24" : xch || info.es[0] != '\0' ? "ES" : "");
}

void truehd_format_facts(const TrueHdInfo& info, ZatStream* stream) {
    // By the bits of the channel assignment; those without a name make the mask one that does not
    // fit the count.
    static constexpr uint32_t masks[] = {front, centre, lfe, side, top_front, front_of_centre, back,
        back_centre, top_centre, 0, 0, top_front_centre, 0};
    stream->channels = info.channels;
    uint32_t mask = 0;
    for (size_t bit = 0; bit < std::size(masks); ++bit) {
        mask |= (info.assignment >> bit & 1) != 0 ? masks[bit] : 0;
    }
    set_layout(mask, stream);
    stream->sample_rate = info.sample_rate;
}

void truehd_facts(const TrueHdInfo& info, ZatStream* stream) {
    copy_utf8(stream->codec, "TrueHD");
    truehd_format_facts(info, stream);
    stream->bit_rate_mode = info.vbr != 0 ? ZAT_BIT_RATE_VARIABLE : ZAT_BIT_RATE_CONSTANT;
    stream->flags |= ZAT_FLAG_LOSSLESS;
}

void mlp_facts(const MlpInfo& info, ZatStream* stream) {
    copy_utf8(stream->codec, "MLP");
    stream->sample_rate = info.sample_rate;
    stream->bit_depth = info.bits;
    set_speakers(info.channel_mask, stream);
    stream->bit_rate_mode = info.variable_rate ? ZAT_BIT_RATE_VARIABLE : ZAT_BIT_RATE_CONSTANT;
    stream->flags |= ZAT_FLAG_LOSSLESS;
}

void aac_facts(const AudioSpecificConfig& config, ZatStream* stream) {
    copy_utf8(stream->codec, object_type_codec(config.object_type));
    const bool high_efficiency = config.object_type == object_type_aac_lc && config.sbr;
    copy_utf8(stream->profile, high_efficiency && config.ps ? "HE-AACv2"
                               : high_efficiency            ? "HE-AAC"
                                                 : object_type_profile(config.object_type));
    const bool doubled = config.sbr && config.sbr_sample_rate != 0;
    stream->sample_rate = doubled ? config.sbr_sample_rate : config.sample_rate;
    // Parametric stereo makes two channels of one.
    const bool parametric = config.ps && config.channels == 1;
    constexpr uint32_t stereo = 2;
    set_aac_channels(parametric ? stereo : config.channel_configuration,
        parametric ? stereo : config.channels, stream);
}

void adts_facts(const AdtsHeader& header, Bytes frame, ZatStream* stream) {
    aac_facts({.object_type = header.profile + 1,
                  .sample_rate = aac_sample_rate(header.sampling_frequency_index),
                  .channel_configuration = header.channel_configuration,
                  .channels = aac_channels(header.channel_configuration)},
        stream);
    if (header.channel_configuration == 0) {
        set_channels_of_first_element(frame, stream);
    }
    stream->bit_rate =
        uint64_t{header.frame_length} * 8 * stream->sample_rate / adts_frame_samples(frame);
    stream->estimated |= ZAT_ESTIMATED_BIT_RATE;
}

void vorbis_facts(const VorbisInfo& info, ZatStream* stream) {
    // Vorbis I, 4.3.9.
    static constexpr uint32_t masks[] = {0, centre, front, front | centre, front | back,
        front | centre | back, front | centre | lfe | back,
        front | centre | lfe | side | back_centre, front | centre | lfe | side | back};
    constexpr uint32_t limit = 0x80000000; // a negative rate is not set
    copy_utf8(stream->codec, "Vorbis");
    stream->channels = info.channels;
    set_layout(mask_of(masks, info.channels), stream);
    const uint32_t bit_rate = vorbis_bitrate(&info);
    set_rates(info.sample_rate, bit_rate < limit ? bit_rate : 0, stream);
    stream->bit_rate_mode = info.bitrate_minimum == info.bitrate_maximum &&
                                    info.bitrate_maximum == bit_rate && stream->bit_rate != 0
                                ? ZAT_BIT_RATE_CONSTANT
                                : ZAT_BIT_RATE_VARIABLE;
}

void dvd_lpcm_facts(const LpcmInfo& info, ZatStream* stream) {
    stream->sample_rate = static_cast<uint32_t>(info.coded_rate);
    stream->channels = static_cast<uint8_t>(info.channels);
    set_layout(stream->channels <= 2 ? default_channel_mask(stream->channels) : 0, stream);
    set_lpcm(info, stream->channels, info.bits, stream);
}

void bd_lpcm_facts(const LpcmInfo& info, ZatStream* stream) {
    // By channel_assignment.
    static constexpr uint32_t masks[] = {0, centre, 0, front, front | centre, front | back_centre,
        front | centre | back_centre, front | side, front | centre | side,
        front | centre | side | lfe, front | centre | side | back,
        front | centre | side | back | lfe};
    stream->sample_rate = static_cast<uint32_t>(info.coded_rate);
    set_speakers(mask_of(masks, info.assignment), stream);
    // Samples have whole bytes, and channels come in pairs.
    set_lpcm(info, (stream->channels + 1) / 2 * 2, (info.bits + 7) / 8 * 8, stream);
}

void wave_facts(const WaveFormat& format, ZatStream* stream) {
    const uint16_t tag = codec_tag(format);
    const uint32_t channels = format.channels;
    // The bytes that a sample takes; fewer of its bits may be used.
    const uint32_t block = sample_block_size(format);
    const uint32_t stored_bits =
        channels != 0 && block % channels == 0 ? block / channels * 8 : format.bits_per_sample;
    set_format_tag_codec(stream, tag, stored_bits);
    if (tag == wave_tag_extensible) {
        char guid[guid_text_size];
        guid_text(format.guid, guid);
        copy_utf8(stream->codec_id, guid);
        copy_utf8(stream->codec, guid);
    }
    const uint32_t used_bits = format.tag == wave_tag_extensible && format.valid_bits != 0
                                   ? format.valid_bits
                                   : format.bits_per_sample;
    if (stream->bit_depth > used_bits && used_bits != 0) {
        stream->bit_depth = used_bits;
    }
    stream->channels = channels;
    set_layout(format.tag == wave_tag_extensible ? format.channel_mask
               : channels <= 2                   ? default_channel_mask(channels)
                                                 : 0,
        stream);
    set_rates(format.sample_rate, int64_t{format.byte_rate} * 8, stream);
}

void alac_facts(const AlacConfig& config, ZatStream* stream) {
    // Apple Lossless Format Description, "Channel Layout Info": MPEG's layouts.
    constexpr uint32_t five = front | centre | side;
    static constexpr uint32_t masks[] = {0, centre, front, front | centre,
        front | centre | back_centre, five, five | lfe, five | lfe | back_centre,
        five | lfe | front_of_centre};
    stream->sample_rate = config.sample_rate != 0 ? config.sample_rate : stream->sample_rate;
    stream->channels = config.channels != 0 ? config.channels : stream->channels;
    stream->bit_depth = config.bit_depth;
    set_layout(mask_of(masks, stream->channels), stream);
}

void flac_facts(const FlacStreamInfo& info, ZatStream* stream) {
    stream->sample_rate = info.sample_rate;
    stream->channels = info.channels;
    stream->bit_depth = info.bits;
    set_layout(default_channel_mask(info.channels), stream); // RFC 9639, 9.1.3
}

void complete_by_bytes(int64_t bytes, ZatStream* stream) {
    if (bytes <= 0) {
        return;
    }
    stream->bytes = static_cast<uint64_t>(bytes);
    if (stream->duration == 0 && stream->bit_rate != 0) {
        stream->duration = static_cast<double>(bytes) * 8 / static_cast<double>(stream->bit_rate);
        stream->estimated |=
            stream->bit_rate_mode == ZAT_BIT_RATE_CONSTANT ? 0 : uint32_t{ZAT_ESTIMATED_DURATION};
    } else if (stream->duration > 0 && stream->bit_rate == 0) {
        stream->bit_rate = mean_bit_rate(static_cast<double>(bytes), stream->duration);
    }
}

} // namespace zat
