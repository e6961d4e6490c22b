#include "audio/latm.h"

#include "audio/aac.h"
#include "audio/stream_facts.h"

namespace zat {

namespace {

constexpr uint32_t loas_sync = 0x2B7; // 11 bits
constexpr uint32_t latm_frame_samples = 1024;

// LatmGetValue
uint32_t read_value(BitReader* reader) {
    const uint32_t bytes = read_bits(reader, 2) + 1;
    return read_bits(reader, static_cast<int>(8 * bytes));
}

// StreamMuxConfig, up to the first layer's configuration.
bool read_stream_mux_config(BitReader* reader, LatmInfo* info) {
    const bool version_1 = read_bits(reader, 1) != 0; // audioMuxVersion
    if (version_1 && read_bits(reader, 1) != 0) {     // audioMuxVersionA
        return false;
    }
    if (version_1) {
        read_value(reader); // taraBufferFullness
    }
    skip_bits(reader, 1);                                 // allStreamsSameTimeFraming
    const uint32_t sub_frames = read_bits(reader, 6) + 1; // numSubFrames
    skip_bits(reader, 4 + 3);                             // numProgram, numLayer
    size_t end = 0;
    if (version_1) {
        const uint32_t bits = read_value(reader); // ascLen
        end = reader->position + bits;
    }
    AudioSpecificConfig config;
    read_audio_specific_config(reader, end, &config);
    if (reader->failed || config.sample_rate == 0) {
        return false;
    }
    info->config = config;
    info->sub_frames = sub_frames;
    return true;
}

bool read_element(Bytes element, LatmInfo* info) {
    BitReader reader{.bytes = element};
    return read_bits(&reader, 1) == 0 && // useSameStreamMux
           read_stream_mux_config(&reader, info);
}

} // namespace

uint32_t loas_frame_size(Bytes bytes) {
    if (bytes.size() < loas_header_size) {
        return 0;
    }
    const uint32_t header = ReadBE24(bytes.data());
    return header >> 13 == loas_sync ? (header & 0x1FFF) + loas_header_size : 0;
}

int64_t find_loas_sync(Bytes bytes) {
    for (size_t at = 0; at < bytes.size(); ++at) {
        const uint32_t size = loas_frame_size(bytes.subspan(at));
        if (size != 0 && at + size <= bytes.size() &&
            (at + size == bytes.size() || loas_frame_size(bytes.subspan(at + size)) != 0)) {
            return static_cast<int64_t>(at);
        }
    }
    return -1;
}

bool latm_info(Bytes bytes, LatmInfo* info) {
    const int64_t start = find_loas_sync(bytes);
    if (start < 0) {
        return false;
    }
    bool configured = false;
    uint64_t size = 0;
    uint64_t frames = 0;
    for (Bytes rest = bytes.subspan(static_cast<size_t>(start)); !rest.empty();) {
        const uint32_t frame = loas_frame_size(rest);
        if (frame == 0 || frame > rest.size()) {
            break;
        }
        configured = configured ||
                     read_element(rest.subspan(loas_header_size, frame - loas_header_size), info);
        size += frame;
        ++frames;
        rest = rest.subspan(frame);
    }
    if (!configured) {
        return false;
    }
    const uint64_t samples = frames * info->sub_frames * latm_frame_samples;
    info->bitrate =
        static_cast<uint32_t>((size * 8 * info->config.sample_rate + samples / 2) / samples);
    return true;
}

void aac_stream_name(const AudioSpecificConfig& config, char (&out)[line_size]) {
    char name[aac_name_size];
    if (config.sbr) {
        copy_text(name, config.ps ? "AAC HE+SBR+PS" : "AAC HE+SBR");
    } else if (config.object_type == object_type_aac_lc) {
        copy_text(name, "AAC LC");
    } else {
        AacObjectTypeName(config.object_type, name);
    }
    const bool parametric = config.ps && config.channel_configuration == 1;
    format_text(out, line_size, "[%s] %dHz %s", name,
        static_cast<int32_t>(config.sbr && config.sbr_sample_rate != 0 ? config.sbr_sample_rate
                                                                       : config.sample_rate),
        AacChannelName(parametric ? 2 : config.channel_configuration));
}

void latm_line(const LatmInfo* info, char (&out)[line_size]) {
    aac_stream_name(info->config, out);
    char rate[32];
    format_text(rate, sizeof rate, " %.3fkbps", info->bitrate * 0.001);
    append_text(out, rate);
}

void latm_facts(const LatmInfo& info, ZatStream* stream) {
    aac_facts(info.config, stream);
    stream->bit_rate = info.bitrate;
    stream->estimated |= ZAT_ESTIMATED_BIT_RATE;
}

} // namespace zat
