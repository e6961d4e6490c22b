#include "container/mp4/audio_line.h"

#include "audio/aac.h"
#include "audio/first_frame.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/record/details.h"
#include "common/text/fourcc.h"
#include "common/text/text.h"
#include "container/mp4/audio_config.h"
#include "container/mp4/sample_entry.h"
#include "container/mp4/sample_tables.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zat::mp4 {

namespace {

// ISO/IEC 14496-3, 1.6.2.1, as far as the AAC parser reads it.
constexpr uint32_t aac_config_size = 64;

bool name_aac(const EsDescriptor& descriptor, const SampleEntry& entry, char* out) {
    AacConfig config;
    config.length =
        std::min(static_cast<uint32_t>(descriptor.specific_info.size()), aac_config_size);
    if (config.length == 0) {
        return false;
    }
    GetAACConfig(descriptor.specific_info.first(config.length), &config);
    config.container_channels = entry.channels;
    config.container_sample_rate = entry.sample_rate;
    config.maximum_bitrate = descriptor.maximum_bitrate;
    config.average_bitrate = descriptor.average_bitrate;
    const uint32_t bitrate =
        descriptor.average_bitrate != 0 ? descriptor.average_bitrate : descriptor.maximum_bitrate;
    format_text(out, codec_text_size, "AAC %dHz %s %dkbps", aac_config_rate(&config),
        AacChannelName(ResolveAacChannels(&config)), static_cast<int32_t>(bitrate / 1000));
    return true;
}

constexpr uint8_t aac_types[] = {
    object_mpeg4_audio, object_mpeg2_aac_main, object_mpeg2_aac_lc, object_mpeg2_aac_ssr};

// Streams whose own first frame says what they are, by sample entry or object type.
struct FramedFormat {
    char format[5]; // empty in rows for an object type
    uint8_t object_type;
    FrameDescriber describe;
};

constexpr FramedFormat framed_formats[] = {
    {"ac-3", 0, describe_ac3_frame},
    {"dtsc", 0, describe_dts_frame},
    {"dtsh", 0, describe_dts_frame},
    {"dtsl", 0, describe_dts_frame},
    {"dtse", 0, describe_dts_frame},
    {".mp3", 0, describe_mpeg_audio_frame},
    {"", object_ac3, describe_ac3_frame},
    {"", object_dts, describe_dts_frame},
    {"", object_mpeg2_audio, describe_mpeg_audio_frame},
    {"", object_mpeg1_audio, describe_mpeg_audio_frame},
};

FrameDescriber frame_describer(const SampleEntry& entry, uint8_t object_type) {
    for (const FramedFormat& row : framed_formats) {
        const bool matches = row.object_type != 0 ? row.object_type == object_type
                                                  : std::memcmp(row.format, entry.format, 4) == 0;
        if (matches) {
            return row.describe;
        }
    }
    return nullptr;
}

bool name_by_first_frame(Reader* reader, const Track& track, FrameDescriber describe, char* out) {
    uint8_t start[frame_start_size] = {};
    const uint32_t length = read_first_chunk(reader, track, start, sizeof start);
    char line[line_size] = {};
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    if (length == 0 || !describe({start, length}, &stream, line)) {
        return false;
    }
    copy_text(out, codec_text_size, line);
    return true;
}

// QuickTime wraps a WAVE format tag into "ms" and the tag, which then is shown in digits.
void name_by_catalogue(const SampleEntry& entry, uint8_t object_type, char* out) {
    char shown[fourcc_text_size];
    FourccText(entry.format, shown);
    if (shown[4] == '\0' || std::strncmp(shown, "6d73", 4) != 0) {
        catalogue_text("[QT-AUDIO]", entry.format, object_type, out);
        return;
    }
    char tag[5];
    std::transform(shown + 4, std::end(shown), tag, ascii_upper);
    codec_name("[AVI-Audio]", tag, shown, out, codec_text_size);
}

void name_codec(Reader* reader, const Track& track, const SampleEntry& entry, char* out) {
    EsBox box;
    read_es_box(reader, entry, &box);
    const EsDescriptor& descriptor = box.descriptor;
    const bool aac = std::find(std::begin(aac_types), std::end(aac_types),
                         descriptor.object_type) != std::end(aac_types);
    if (aac && name_aac(descriptor, entry, out)) {
        return;
    }
    const FrameDescriber describe = frame_describer(entry, descriptor.object_type);
    if (describe != nullptr && name_by_first_frame(reader, track, describe, out)) {
        return;
    }
    name_by_catalogue(entry, descriptor.object_type, out);
}

} // namespace

void read_audio_line(Reader* reader, Track* track, AudioLine* line) {
    SampleEntry entry;
    read_sample_entry(reader, *track, 0, &entry);
    const SampleTotals& totals = sample_totals(reader, track);
    line->bytes = totals.bytes;
    line->bitrate = apply_audio_config(reader, &entry);
    line->sample_rate = entry.sample_rate;
    line->channels = entry.channels;
    line->sample_size = entry.sample_size;
    if (entry.found) {
        name_codec(reader, *track, entry, line->codec);
    }
}

} // namespace zat::mp4
