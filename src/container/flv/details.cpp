#include "container/flv/details.h"

#include "audio/audio_specific_config.h"
#include "audio/first_frame.h"
#include "audio/flac_streaminfo.h"
#include "audio/opus.h"
#include "audio/stream_facts.h"
#include "common/bytes/numbers.h"
#include "common/catalogue/codec_names.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"
#include "video/av1_config.h"
#include "video/avc_config.h"
#include "video/hevc_sps.h"
#include "video/stream_facts.h"
#include "video/vp9.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>

namespace zat {

namespace {

// Streams have no number of their own; the type of their tags stands for it.
constexpr uint64_t video_id = 9;
constexpr uint64_t audio_id = 8;

// By CodecID; those behind 7 are not Adobe's.
constexpr CodecName video_codecs[] = {{}, {}, {"Sorenson H.263"}, {"Flash Screen Video"}, {"VP6"},
    {"VP6"}, {"Flash Screen Video 2"}, {"H.264"}, {"H.263"}, {"MPEG-4 Visual"}, {}, {}, {"HEVC"}};

// By SoundFormat.
constexpr CodecName sound_codecs[] = {{"PCM"}, {"ADPCM", "Flash"}, {"MP3"}, {"PCM"}, {"Nellymoser"},
    {"Nellymoser"}, {"Nellymoser"}, {"A-law"}, {"mu-law"}, {}, {"AAC"}, {"Speex"}, {}, {}, {"MP3"},
    {}};

template <size_t N>
void set_listed_codec(const CodecName (&names)[N], uint32_t code, ZatStream* stream) {
    format_text(stream->codec_id, sizeof stream->codec_id, "%u", code);
    const CodecName name = code < N ? names[code] : CodecName{};
    set_codec(stream, name.codec.empty() ? CodecName{stream->codec_id} : name);
}

// Milliseconds from one tag to the next, on the whole.
double mean_step(const FlvTags& tags) {
    return tags.frames > 1
               ? (static_cast<double>(tags.last_time) - tags.first_time) / (tags.frames - 1)
               : 0;
}

// Whether the tags that were seen reach the end of the declared time.
bool reach_end(const FlvInfo& info, double seconds) {
    constexpr double most = 0.75; // durations are not exact, of short files least
    const uint32_t last =
        info.whole ? info.last_timestamp : std::max(info.video.last_time, info.audio.last_time);
    const double end = last + std::max(mean_step(info.video), mean_step(info.audio));
    return info.to_end && info.missing_bytes == 0 && end >= most * 1000 * seconds;
}

// Of the tags that were seen, over the time that they cover.
void measure_rate(const FlvTags& tags, ZatStream* stream) {
    const double seconds = mean_step(tags) * tags.frames / 1000;
    if (seconds > 0) {
        stream->bit_rate = mean_bit_rate(static_cast<double>(tags.bytes), seconds);
        stream->estimated |= ZAT_ESTIMATED_BIT_RATE;
    }
}

// Counted where all tags were seen, else as the metadata claims in 1000 bit/s, else measured: the
// bytes of a file that was cut are those of a part of the declared time.
void set_rate(const FlvInfo& info, const FlvTags& tags, double claim, ZatStream* stream) {
    const auto claimed = clamp_to_integer<uint64_t>(claim > 0 ? claim * 1000 + 0.5 : 0);
    stream->bit_rate = claimed;
    stream->bytes = info.whole ? tags.bytes : 0;
    if (!reach_end(info, stream->duration)) {
        if (claimed == 0) {
            measure_rate(tags, stream);
        }
        return;
    }
    if (tags.bytes != 0 && stream->duration > 0) {
        stream->bit_rate = mean_bit_rate(static_cast<double>(tags.bytes), stream->duration);
        if (claimed != 0 && !is_same_bit_rate(claimed, stream->bit_rate)) {
            stream->nominal_bit_rate = claimed;
        }
    }
}

void read_video_configuration(Bytes config, ZatStream* stream) {
    const std::string_view codec = bounded_text(stream->codec);
    AvcConfig record;
    HevcSequence hevc;
    Av1Sequence av1;
    Vp9Sequence vp9;
    if (codec == "H.264" && read_avc_config(config, &record)) {
        AvcSequenceInfo info;
        if (read_avc_sps(record.first_sps, &info)) {
            avc_facts(info, stream);
        }
    } else if (codec == "HEVC" && parse_hevc_config(config, &hevc)) {
        set_hevc_facts(stream, hevc);
    } else if (codec == "AV1" && parse_av1_config(config, &av1)) {
        set_av1_facts(stream, av1);
    } else if (codec == "VP9" && parse_vp9_config(config, &vp9)) {
        set_vp9_facts(stream, vp9);
    }
}

FlvPictureSize picture_size(const FlvInfo& info, Bytes first) {
    const Bytes packet = first.empty() ? first : first.subspan(1);
    switch (info.video_codec) {
    case flv_video_h263:
        return info.picture;
    case flv_video_vp6:
    case flv_video_vp6_alpha:
        return flv_vp6_picture_size(packet, info.video_codec == flv_video_vp6_alpha);
    case flv_video_screen:
    case flv_video_screen_2:
        return flv_screen_picture_size(packet);
    default:
        return {};
    }
}

void set_frames(const FlvInfo& info, ZatStream* stream) {
    const double declared = info.metadata.frame_rate;
    constexpr double highest_rate = 240; // more in a parameter set is a clock, no rate
    if (stream->frame_rate > highest_rate) {
        stream->frame_rate = 0;
        stream->frame_rate_numerator = 0;
        stream->frame_rate_denominator = 0;
    }
    const double own = stream->frame_rate;
    const FlvTags& tags = info.video;
    stream->frames = info.whole ? tags.frames : 0;
    if (declared > 0 && std::isfinite(declared)) {
        constexpr double same_rate = 0.005;
        if (std::abs(own - declared) > same_rate * declared) {
            stream->frame_rate = declared;
            stream->frame_rate_numerator = 0;
            stream->frame_rate_denominator = 0;
            stream->nominal_frame_rate = own;
        }
    } else if (own == 0 && tags.frames > 1 && tags.last_time > tags.first_time) {
        stream->frame_rate = (tags.frames - 1) * 1000.0 / (tags.last_time - tags.first_time);
        stream->estimated |= ZAT_ESTIMATED_FRAME_RATE;
    }
}

void set_duration(FlvTime time, ZatStream* stream) {
    stream->duration = time.seconds;
    stream->estimated |= time.estimated ? uint32_t{ZAT_ESTIMATED_DURATION} : 0;
}

void describe_video(Reader* reader, const FlvInfo& info, FlvTime time, ZatDetails* details) {
    ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
    stream.id = video_id;
    set_duration(time, &stream);
    if (info.video_fourcc != 0) {
        set_fourcc_codec(&stream, info.video_fourcc);
    } else {
        set_listed_codec(video_codecs, info.video_codec, &stream);
    }
    uint8_t bytes[4096];
    const uint32_t length = read_some(reader, info.video.configuration, 0, bytes, sizeof bytes);
    read_video_configuration({bytes, length}, &stream);
    if (stream.width == 0 || stream.height == 0) {
        const FlvPictureSize size =
            picture_size(info, {bytes, read_some(reader, info.video.first, 0, bytes, 64)});
        stream.width =
            size.width != 0 ? size.width : clamp_to_integer<uint32_t>(info.metadata.width);
        stream.height =
            size.height != 0 ? size.height : clamp_to_integer<uint32_t>(info.metadata.height);
        set_pixel_aspect(&stream, stream.pixel_aspect_width, stream.pixel_aspect_height);
    }
    set_frames(info, &stream);
    set_rate(info, info.video, info.metadata.video_rate, &stream);
    drop_nonsense(&stream, 1000);
    add_stream(details, stream);
}

void read_aac(Bytes config, ZatStream* stream) {
    AudioSpecificConfig aac;
    read_audio_specific_config(config, &aac);
    if (aac.object_type != 0) {
        aac_facts(aac, stream);
    }
}

void read_audio_configuration(Bytes config, ZatStream* stream) {
    const std::string_view codec = bounded_text(stream->codec);
    OpusHead opus;
    FlacStreamInfo flac;
    if (codec == "AAC") {
        read_aac(config, stream);
    } else if (codec == "Opus") {
        stream->sample_rate = opus_rate;
        if (read_opus_head(config, &opus)) {
            set_opus_facts(opus.channels, opus.mapping_family, stream);
        }
    } else if (codec == "FLAC") {
        const Bytes blocks = has_at(config, 0, "fLaC") ? config.subspan(4) : config;
        if (read_flac_streaminfo(flac_streaminfo_of_blocks(blocks), &flac)) {
            flac_facts(flac, stream);
        }
    }
}

// SoundRate, SoundSize and SoundType (annex E.4.2.1); some formats have fixed ones.
void read_sound_header(uint8_t header, ZatStream* stream) {
    static constexpr uint32_t rates[4] = {5512, 11025, 22050, 44100};
    enum : uint8_t { nellymoser_16khz = 4, nellymoser_8khz = 5, a_law = 7, mu_law = 8, speex = 11 };
    const uint8_t format = header >> 4;
    stream->sample_rate = rates[header >> 2 & 3];
    stream->channels = (header & 1U) + 1;
    if (format == flv_sound_pcm || format == flv_sound_pcm_le) {
        const bool wide = (header & 2) != 0;
        set_pcm(stream, wide ? PcmKind::signed_integer : PcmKind::unsigned_integer, wide ? 16 : 8,
            std::endian::little);
    } else if (format == nellymoser_16khz || format == speex) {
        stream->sample_rate = 16000;
        stream->channels = 1;
    } else if (format == nellymoser_8khz) {
        stream->sample_rate = 8000;
        stream->channels = 1;
    } else if (format == a_law || format == mu_law || format == flv_sound_mp3_8khz) {
        stream->sample_rate = 8000;
    }
}

// The frame tells better than the tag, which has no room for every rate.
void read_first_frame(Bytes data, size_t head_size, ZatStream* stream) {
    const std::string_view codec = bounded_text(stream->codec);
    const FrameDescriber describe = codec == "MP3"    ? describe_mpeg_audio_frame
                                    : codec == "AC-3" ? describe_ac3_frame
                                                      : nullptr;
    char line[line_size];
    const double duration = stream->duration;
    if (describe != nullptr && data.size() > head_size &&
        describe(data.subspan(head_size), stream, line)) {
        stream->duration = duration;
        stream->samples = 0;
    }
}

void describe_audio(Reader* reader, const FlvInfo& info, FlvTime time, ZatDetails* details) {
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    stream.id = audio_id;
    set_duration(time, &stream);
    size_t head_size = 1;
    if (info.audio_fourcc != 0) {
        set_fourcc_codec(&stream, info.audio_fourcc);
        head_size = 5;
    } else {
        set_listed_codec(sound_codecs, info.audio_header >> 4, &stream);
        read_sound_header(info.audio_header, &stream);
    }
    uint8_t bytes[frame_start_size];
    const uint32_t config_length =
        read_some(reader, info.audio.configuration, 0, bytes, sizeof bytes);
    read_audio_configuration({bytes, config_length}, &stream);
    const uint32_t length = read_some(reader, info.audio.first, 0, bytes, sizeof bytes);
    read_first_frame({bytes, length}, head_size, &stream);
    set_rate(info, info.audio, info.metadata.audio_rate, &stream);
    drop_nonsense(&stream, 1000);
    add_stream(details, stream);
}

void take_text(const char* text, char (&out)[256]) {
    if (out[0] == '\0') {
        claimed_utf8_to_utf8(text, out, sizeof out);
    }
}

// By the declared size of a file that does not reach its end, else of the tag that is cut.
int64_t missing_bytes(const FlvInfo& info, int64_t size, double seconds) {
    const auto declared = clamp_to_integer<int64_t>(info.metadata.file_size);
    return declared > size && !reach_end(info, seconds) ? declared - size : info.missing_bytes;
}

} // namespace

void describe_flv(Reader* reader, const FlvInfo& info, double seconds, ZatDetails* details) {
    copy_utf8(details->format, "FLV");
    const FlvMetadata& metadata = info.metadata;
    take_text(metadata.title, details->title);
    take_text(metadata.artist, details->artist);
    take_text(metadata.encoder, details->writer);
    take_text(metadata.creator, details->writer);
    take_text(metadata.metadata_creator, details->writer);
    FlvTime time = {.seconds = seconds};
    if (metadata.duration == 0) {
        time = measure_flv_time(reader, info);
        details->duration = time.seconds;
        details->estimated |= time.estimated ? uint32_t{ZAT_ESTIMATED_DURATION} : 0;
    }
    if (!std::isfinite(time.seconds) || time.seconds < 0) {
        time.seconds = 0;
    }
    const bool video_first = info.video.first.start <= info.audio.first.start;
    if (info.has_video && (video_first || !info.has_audio)) {
        describe_video(reader, info, time, details);
    }
    if (info.has_audio) {
        describe_audio(reader, info, time, details);
    }
    if (info.has_video && info.has_audio && !video_first) {
        describe_video(reader, info, time, details);
    }
    const int64_t missing = missing_bytes(info, reader->block.file->size, time.seconds);
    if (missing != 0) {
        note_missing_bytes(details, static_cast<uint64_t>(missing));
    }
}

} // namespace zat
