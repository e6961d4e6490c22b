#include "audio/aac.h"

#include "audio/audio_specific_config.h"
#include "common/bytes/bits.h"
#include "common/text/text.h"

#include <iterator>
#include <string_view>

namespace zat {

namespace {

// -1 for reserved indices and the explicit rate.
int32_t table_rate_of(uint32_t index) {
    const uint32_t rate = aac_sample_rate(index);
    return rate != 0 ? static_cast<int32_t>(rate) : -1;
}

// Whether the container's rate tells of SBR that the configuration does not announce, or confirms
// that which it does.
bool container_tells_sbr(const AacConfig* cfg) {
    const int32_t table_rate = table_rate_of(cfg->sampling_frequency_index);
    if (static_cast<uint32_t>(table_rate) == cfg->container_sample_rate) {
        return false;
    }
    const bool is_double = static_cast<uint32_t>(2 * table_rate) == cfg->container_sample_rate;
    if (cfg->extension_object_type == object_type_sbr) {
        return is_double || cfg->sync_extension_type != sbr_sync_extension;
    }
    return cfg->object_type == object_type_aac_lc && is_double;
}

// The kind of AAC with its SBR and PS marks.
void stream_name(const AacConfig* cfg, char (&name)[aac_name_size]) {
    copy_text(name, "AAC");
    if (cfg->object_type == object_type_aac_lc) {
        copy_text(name, cfg->extension_object_type == object_type_sbr ? "AAC HE(LC)" : "AAC LC");
    }
    if (cfg->sbr_flag == 1) {
        copy_text(name, "AAC HE+SBR");
    } else if (container_tells_sbr(cfg)) {
        append_text(name, "+(SBR)");
    }
    if (std::string_view(name) == "AAC") {
        AacObjectTypeName(cfg->object_type, name);
    }
    if (cfg->ps_implicit_flag != 0) {
        append_text(name, "+(PS)");
    }
    if (cfg->ps_flag == 1) {
        append_text(name, "+PS");
    }
}

// Bit/s: the container's average, else that of frames of 1024 samples, else the maximum.
double line_bitrate(const AacConfig* cfg) {
    if (cfg->average_bitrate != 0) {
        return cfg->average_bitrate;
    }
    const int64_t by_frame = int64_t{cfg->frame_size} * 8 * aac_config_rate(cfg) >> 10;
    return by_frame != 0 ? static_cast<double>(by_frame) : cfg->maximum_bitrate;
}

// Tables have -1 for a rate that is reserved or stands elsewhere.
enum class UnknownRate { as_number, left_out };

// "[AAC LC] 44100Hz stereo(L,R)".
void format_start(AacConfig* cfg, UnknownRate unknown_rate, char (&out)[line_size]) {
    const char* channels = AacChannelName(ResolveAacChannels(cfg)); // before the name: sets PS
    char name[aac_name_size] = "";
    stream_name(cfg, name);
    const int32_t rate = aac_config_rate(cfg);
    if (rate < 0 && unknown_rate == UnknownRate::left_out) {
        format_text(out, line_size, "[%s] %s", name, channels);
    } else {
        format_text(out, line_size, "[%s] %dHz %s", name, rate, channels);
    }
}

} // namespace

void GetAACConfig(Bytes bytes, AacConfig* cfg) {
    cfg->length = static_cast<uint32_t>(bytes.size());
    if (bytes.empty()) {
        return;
    }
    // The configuration counts up to its first zero byte only, as the text that it once was copied
    // as: fields behind one read as zero.
    uint8_t text[8] = {};
    for (size_t i = 0; i < std::size(text) && i < bytes.size() && bytes[i] != 0; ++i) {
        text[i] = bytes[i];
    }
    BitReader reader{text};
    cfg->object_type = static_cast<uint8_t>(read_bits(&reader, 5)); // no escape for 31
    cfg->sampling_frequency_index = static_cast<uint8_t>(read_bits(&reader, 4));
    cfg->channel_configuration = static_cast<uint8_t>(read_bits(&reader, 4));
    // GASpecificConfig
    skip_bits(&reader, 1); // frameLengthFlag
    skip_bits(&reader, 1); // dependsOnCoreCoder
    skip_bits(&reader, 1); // extensionFlag
    if (cfg->length < 3) {
        return;
    }
    cfg->sync_extension_type = read_bits(&reader, 11);
    if (cfg->sync_extension_type != sbr_sync_extension) {
        return;
    }
    cfg->extension_object_type = static_cast<uint8_t>(read_bits(&reader, 5));
    cfg->sbr_flag = static_cast<uint8_t>(read_bits(&reader, 1));
    cfg->extension_sampling_frequency_index = read_bits(&reader, 4);
    if (cfg->length > 5) {
        cfg->sync_extension_type2 = read_bits(&reader, 11);
        cfg->ps_flag = read_bits(&reader, 1);
    }
}

uint32_t ResolveAacChannels(AacConfig* cfg) {
    const uint32_t configured = cfg->channel_configuration;
    const uint32_t contained = cfg->container_channels;
    if (contained == 0) {
        return configured >= 1 && cfg->ps_flag == 1 ? 2 : configured;
    }
    if (contained == configured) {
        return cfg->ps_flag == 0 ? contained : 0;
    }
    if (configured == 1 && contained == 2) {
        if (cfg->ps_flag != 1) {
            cfg->ps_implicit_flag = 1;
        }
        return 2;
    }
    return configured;
}

const char* AacChannelName(uint32_t channel_configuration) {
    // ISO/IEC 14496-3, table 1.19.
    static constexpr const char* names[] = {
        "custom",
        "mono(C)",
        "stereo(L,R)",
        "3ch(C,L,R)",
        "4ch(C,L,R,BC)",
        "5ch(C,L,R,BL,BR)",
        "5.1ch(C,L,R,BL,BR,LFE)",
        "7.1ch(C,L,R,BL,BR,SL,SR,LFE)",
    };
    static_assert(std::size(names) == 8);
    return channel_configuration < std::size(names) ? names[channel_configuration] : "UnKnown";
}

void AacObjectTypeName(uint32_t object_type, char (&out)[aac_name_size]) {
    // ISO/IEC 14496-3, table 1.17.
    static constexpr const char* names[] = {
        "NULL",
        "Main",
        "LC",
        "SSR",
        "Long term prediction",
        "HE",
        "Scalable",
        "TwinVQ",
        "CELP",
        "HVXC",
        "Reserved-0xA",
        "Reserved-0xB",
        "TTSI",
        "Main synthetic",
        "Wavetable synthesis",
        "General MIDI",
        "Algorithmic Synthesis and Audio FX",
        "LC with error recovery",
        "Reserved-0x12",
        "Long term prediction with error recovery",
        "scalable with error recovery",
        "TwinVQ with error recovery",
        "BSAC with error recovery",
        "LD with error recovery",
        "CELP with error recovery",
        "HXVC with error recovery",
        "HILN with error recovery",
        "Parametric with error recovery",
        "Reserved-0x1C",
        "Reserved-0x1D",
        "Reserved-0x1E",
        "Reserved-0x1F",
    };
    static_assert(std::size(names) == 32);
    if (object_type < std::size(names)) {
        copy_text(out, names[object_type]);
    } else {
        format_text(out, sizeof out, "MPEG4-AAC(%u)", object_type);
    }
}

int32_t aac_config_rate(const AacConfig* cfg) {
    const int32_t table_rate = table_rate_of(cfg->sampling_frequency_index);
    return cfg->sbr_flag == 1 || container_tells_sbr(cfg) ? 2 * table_rate : table_rate;
}

void FormatAacConfigLine(AacConfig* cfg, char (&out)[line_size]) {
    format_start(cfg, UnknownRate::as_number, out);
    char figures[64];
    format_text(
        figures, sizeof figures, " %dBit %.3fkbps", cfg->bit_depth, line_bitrate(cfg) * 0.001);
    append_text(out, figures);
}

void format_known_aac_line(AacConfig* cfg, char (&out)[line_size]) {
    format_start(cfg, UnknownRate::left_out, out);
    char figure[32];
    if (cfg->bit_depth != 0) {
        format_text(figure, sizeof figure, " %dBit", cfg->bit_depth);
        append_text(out, figure);
    }
    if (line_bitrate(cfg) > 0) {
        format_text(figure, sizeof figure, " %.3fkbps", line_bitrate(cfg) * 0.001);
        append_text(out, figure);
    }
}

} // namespace zat
