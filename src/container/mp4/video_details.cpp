// The typed details of video tracks.
#include "common/bytes/tables.h"
#include "common/record/details.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"
#include "container/mp4/sample_tables.h"
#include "container/mp4/track_details.h"
#include "video/av1_config.h"
#include "video/avc_config.h"
#include "video/bitmap_stream.h"
#include "video/colour_names.h"
#include "video/dolby_vision.h"
#include "video/hevc_sps.h"
#include "video/stream_facts.h"
#include "video/vp9.h"

#include <algorithm>
#include <cmath>

namespace zat::mp4 {

namespace {

// Bytes of a decoder configuration that are read: some hundred are usual.
constexpr uint32_t video_config_size = 4096;

void read_avc(const TrackFacts& facts, ZatStream* stream) {
    uint8_t record[avc_config_head_size];
    AvcConfig config;
    if (!read_avc_config(read_box(facts.reader, facts.entry.avc_configuration, record), &config)) {
        return;
    }
    AvcSequenceInfo info;
    if (read_avc_sps(config.first_sps, &info)) {
        avc_facts(info, stream);
        return;
    }
    const char* profile = avc_profile_name(config.profile, AvcRules::standard);
    const char* level =
        avc_level_name(config.profile, config.compatibility, config.level, AvcRules::standard);
    copy_utf8(stream->profile, profile != nullptr ? profile : "");
    copy_utf8(stream->level, level != nullptr ? level : "");
}

void read_video_configuration(const TrackFacts& facts, ZatStream* stream) {
    uint8_t buffer[video_config_size];
    const Bytes record = read_box(facts.reader, facts.entry.video_configuration, buffer);
    const std::string_view codec = bounded_text(stream->codec);
    HevcSequence hevc;
    Av1Sequence av1;
    Vp9Sequence vp9;
    Vc1Sequence vc1;
    if (codec == "HEVC" && parse_hevc_config(record, &hevc)) {
        set_hevc_facts(stream, hevc);
        stream->height = hevc.height; // of fields where the samples are fields, which are counted
    } else if (codec == "AV1" && parse_av1_config(record, &av1)) {
        set_av1_facts(stream, av1);
    } else if (codec == "VP9" && parse_vp9_config(record, &vp9)) {
        set_vp9_facts(stream, vp9);
    } else if (codec == "VC-1" && find_vc1_sequence(record, &vc1) == 0) {
        vc1_facts(vc1, stream);
    }
}

void read_visual_headers(const TrackFacts& facts, ZatStream* stream) {
    const Bytes headers = facts.es.descriptor.specific_info;
    const std::string_view codec = bounded_text(stream->codec);
    Mpeg4Headers visual;
    if (codec == "MPEG-4 Visual" && find_mpeg4_headers(headers, &visual) == 0) {
        mpeg4_facts(visual, stream);
    }
}

// Codecs that have no configuration here, and the codes that they have elsewhere.
struct PictureCodec {
    std::string_view codec;
    uint32_t code;
};

constexpr PictureCodec picture_codecs[] = {
    {"MPEG-1 Video", fourcc("MPG1")},
    {"MPEG-2 Video", fourcc("MPG2")},
    {"MJPEG", fourcc("MJPG")},
    {"DV", fourcc("dvsd")},
};

// What the first picture's own headers tell; the entry's size stays.
void read_first_picture(const TrackFacts& facts, ZatStream* stream) {
    const std::string_view codec = bounded_text(stream->codec);
    const PictureCodec* row = find_row(picture_codecs, &PictureCodec::codec, codec);
    if (row == nullptr || (stream->flags & ZAT_FLAG_ENCRYPTED) != 0) {
        return;
    }
    uint8_t start[video_config_size];
    BitmapStream picture;
    for (size_t i = 0; i < sizeof picture.info.compression; ++i) {
        picture.info.compression[i] = static_cast<uint8_t>(row->code >> (24 - 8 * i));
    }
    picture.info.codec_data = facts.es.descriptor.specific_info;
    picture.start = {start, read_first_chunk(facts.reader, *facts.track, start, sizeof start)};
    VideoDescription description;
    stream->width = facts.entry.width;
    stream->height = facts.entry.height;
    describe_bitmap_stream(picture, stream, &description);
}

// "nclx" (ISO/IEC 14496-12, 12.1.5) and QuickTime's "nclc", which has no range.
void read_colour(const TrackFacts& facts, ZatStream* stream) {
    uint8_t fields[11] = {};
    const Bytes colour = read_box(facts.reader, facts.entry.colour, fields);
    constexpr size_t without_range = 10;
    if (colour.size() < without_range) {
        return;
    }
    ColourCodes codes;
    codes.primaries = byte_at(colour, 5);
    codes.transfer = byte_at(colour, 7);
    codes.matrix = byte_at(colour, 9);
    codes.range_known = has_at(colour, 0, "nclx") && colour.size() > without_range;
    codes.full_range = codes.range_known && (colour[without_range] & 0x80) != 0;
    set_colour(stream, codes);
}

// "fiel": the number of fields and their order (QuickTime File Format, "Field handling").
void read_fields(const TrackFacts& facts, ZatStream* stream) {
    uint8_t fields[2] = {};
    const Bytes bytes = read_box(facts.reader, facts.entry.fields, fields);
    if (bytes.size() == 2 && bytes[0] == 1) {
        stream->scan = ZAT_SCAN_PROGRESSIVE;
        stream->field_order = 0;
    } else if (bytes.size() == 2 && bytes[0] == 2) {
        const uint8_t order = bytes[1];
        stream->scan = ZAT_SCAN_INTERLACED;
        stream->field_order = order == 1 || order == 14  ? ZAT_FIELD_TOP
                              : order == 6 || order == 9 ? ZAT_FIELD_BOTTOM
                                                         : 0;
    }
}

// The container's aspect, else the stream's own, else that of the track's size in the movie.
void read_aspect(const TrackFacts& facts, ZatStream* stream) {
    Reader* reader = facts.reader;
    const Span spacing = facts.entry.pixel_aspect;
    const uint32_t pixel_width = stream->pixel_aspect_width;
    const uint32_t pixel_height = stream->pixel_aspect_height;
    set_pixel_aspect(stream, pixel_width, pixel_height); // of a size that came behind it
    set_pixel_aspect(stream, read_be32(reader, spacing, 0), read_be32(reader, spacing, 4));
    if (stream->pixel_aspect_width != 0 || facts.entry.width == 0 || facts.entry.height == 0) {
        return;
    }
    const Span header = facts.track->header;
    const int64_t size_at = read_be32(reader, header, 0) >> 24 == 1 ? 88 : 76;
    const uint64_t width = read_be32(reader, header, size_at) >> 16;
    const uint64_t height = read_be32(reader, header, size_at + 4) >> 16;
    set_pixel_aspect(stream, width * facts.entry.height, height * facts.entry.width);
}

// The one duration of all samples, the last perhaps aside; 0 when they vary.
uint32_t sample_duration(const TrackFacts& facts) {
    Reader* reader = facts.reader;
    const Span table = facts.track->time_to_sample;
    const uint32_t entries = read_be32(reader, table, 4);
    const bool constant = entries == 1 || (entries == 2 && read_be32(reader, table, 16) == 1);
    return constant ? read_be32(reader, table, 12) : 0;
}

// A declared rate that is this close to the counted one is the same.
constexpr double same_frame_rate = 0.005;

void count_frames(const TrackFacts& facts, ZatStream* stream) {
    const double declared = stream->frame_rate;
    stream->frames = facts.track->totals.samples;
    const uint32_t duration = sample_duration(facts);
    if (duration != 0 && facts.track->fragment_samples == 0) {
        set_frame_rate(stream, facts.track->time_scale, duration);
    } else if (stream->frames != 0 && facts.seconds > 0) {
        stream->frame_rate = static_cast<double>(stream->frames) / facts.seconds;
        if (std::abs(declared - stream->frame_rate) > same_frame_rate * stream->frame_rate) {
            stream->frame_rate_numerator = 0;
            stream->frame_rate_denominator = 0;
        }
    }
    constexpr double highest_rate = 240; // more in a parameter set is a clock, no rate
    if (declared > 0 && declared <= highest_rate &&
        std::abs(declared - stream->frame_rate) > same_frame_rate * declared) {
        stream->nominal_frame_rate = declared;
    }
}

// The compressor's name, counted in its first byte: some encoders tell themselves and their
// version, others only what the codec is.
void read_compressor(const TrackFacts& facts, ZatStream* stream) {
    static constexpr std::string_view encoders[] = {"Lavc", "x264", "x265"};
    constexpr int64_t name_at = 34; // behind the common fields
    uint8_t field[32] = {};
    read_some(facts.reader, facts.entry.fixed, name_at, field, sizeof field);
    const size_t length = std::min<size_t>(field[0], sizeof field - 1);
    const std::string_view name = bounded_text(reinterpret_cast<const char*>(field + 1), length);
    for (const std::string_view encoder : encoders) {
        if (name.starts_with(encoder)) {
            claimed_utf8_to_utf8(name, stream->encoder, sizeof stream->encoder);
        }
    }
}

} // namespace

void describe_video_track(TrackFacts* facts, ZatStream* stream) {
    set_track_codec(*facts, stream);
    read_avc(*facts, stream);
    read_video_configuration(*facts, stream);
    read_visual_headers(*facts, stream);
    read_first_picture(*facts, stream);
    if (stream->width == 0 || stream->height == 0) {
        stream->width = facts->entry.width;
        stream->height = facts->entry.height;
    }
    read_aspect(*facts, stream);
    read_colour(*facts, stream);
    read_fields(*facts, stream);
    uint8_t record[32];
    set_dolby_vision(stream, read_box(facts->reader, facts->entry.dolby_vision, record));
    read_compressor(*facts, stream);
    count_frames(*facts, stream);
}

} // namespace zat::mp4
