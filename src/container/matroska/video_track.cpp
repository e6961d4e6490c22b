#include "common/bytes/numbers.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/catalogue/codec_names.h"
#include "common/record/stream_lines.h"
#include "container/matroska/track_stream.h"
#include "video/bitmap_stream.h"
#include "video/dolby_vision.h"
#include "video/theora.h"

#include <algorithm>

namespace zat::matroska {

namespace {

constexpr uint32_t video_private_size = 4096; // bytes: parameter sets stand at the start
constexpr uint32_t video_frame_size = 4096;
constexpr uint32_t dolby_vision_size = 24; // bytes

// DisplayUnit
enum DisplayUnit : uint8_t { unit_pixels, unit_centimetres, unit_inches, unit_ratio };

void set_scan(const VideoSettings& video, ZatStream* stream) {
    enum : uint8_t { interlaced = 1, progressive = 2 };
    enum : uint8_t { top_first = 1, bottom_first = 6, bottom_stored = 14, top_stored = 9 };
    stream->scan = video.interlaced == interlaced    ? ZAT_SCAN_INTERLACED
                   : video.interlaced == progressive ? ZAT_SCAN_PROGRESSIVE
                                                     : 0;
    if (video.interlaced == interlaced) {
        const uint8_t order = video.field_order;
        stream->field_order = order == top_first || order == top_stored         ? ZAT_FIELD_TOP
                              : order == bottom_first || order == bottom_stored ? ZAT_FIELD_BOTTOM
                                                                                : 0;
    }
}

// The codec of a four-character code; the track keeps its own identifier.
void set_codec_of_code(uint32_t code, ZatStream* stream) {
    ZatStream named = *stream;
    set_fourcc_codec(&named, code);
    copy_text(stream->codec, bounded_text(named.codec));
    copy_text(stream->profile, bounded_text(named.profile));
}

// A default duration that is near a usual rate to its last digits is that.
void set_told_rate(const Track& track, ZatStream* stream) {
    constexpr double tolerance = 1e-5;
    constexpr double highest = 240; // whole nanoseconds may come out a little above it
    const double seconds = frame_duration(track);
    const double rate = seconds > 0 ? std::min(1 / seconds, highest) : track.video.frame_rate;
    const RateRatio usual = usual_frame_rate(rate, tolerance);
    stream->frame_rate = rate;
    stream->frame_rate_numerator = usual.numerator;
    stream->frame_rate_denominator = usual.denominator;
    drop_nonsense(stream);
}

void set_measured_rate(const Source& source, uint32_t index, ZatStream* stream) {
    for (uint32_t i = 0; i < source.walk->timed_count; ++i) {
        if (source.walk->timed[i] == index) {
            measure_frame_rate(stream, &source.walk->times[i], seconds_of(*source.segment, 1));
        }
    }
}

void set_frames(const Source& source, const Track& track, ZatStream* stream) {
    if (track.statistics.frames != 0 || source.segment->counted) {
        stream->frames = source.segment->counted ? track.counts.frames : track.statistics.frames;
        return;
    }
    const double seconds = stream->duration > 0 ? stream->duration : source.duration;
    const double frames = seconds * stream->frame_rate;
    if (frames > 0) {
        stream->frames = clamp_to_integer<uint64_t>(frames + 0.5);
        stream->estimated |= ZAT_ESTIMATED_FRAMES;
    }
}

bool is_only_video(const Segment& segment) {
    return std::count_if(segment.tracks, segment.tracks + kept_tracks(segment),
               [](const Track& track) { return track.type == track_video; }) == 1;
}

uint64_t rate_of_all_audio(const Source& source) {
    uint64_t rate = 0;
    for (uint32_t i = 0; i < kept_tracks(*source.segment); ++i) {
        const Track& track = source.segment->tracks[i];
        rate += track.type == track_audio ? known_audio_rate(source, track) : 0;
    }
    return rate;
}

// The rate of what the segment holds besides the audio and attachments.
void set_rest_rate(const Source& source, ZatStream* stream) {
    const Segment& segment = *source.segment;
    stream->bit_rate = 0;
    stream->estimated &= ~uint32_t{ZAT_ESTIMATED_BIT_RATE};
    constexpr double shortest = 0.01; // seconds; less says nothing of a rate
    if (segment.first_cluster < 0 || source.duration < shortest || !is_only_video(segment)) {
        return;
    }
    const int64_t size = (segment.unknown_size ? segment.span.end : segment.said_end) -
                         segment.first_cluster - segment.bytes_behind_clusters;
    const double rate = static_cast<double>(size) * 8 / source.duration -
                        static_cast<double>(rate_of_all_audio(source));
    if (rate > 0) {
        stream->bit_rate = clamp_to_integer<uint64_t>(rate + 0.5);
        stream->estimated |= ZAT_ESTIMATED_BIT_RATE;
    }
}

// What the container tells where the stream's headers do not.
void set_container_facts(const Source& source, const Track& track, ZatStream* stream) {
    const VideoSettings& video = track.video;
    set_dolby_vision(stream, read_view(source.reader, video.dolby_vision, 0, dolby_vision_size));
    ZatStream told = new_stream(ZAT_STREAM_VIDEO);
    set_colour(&told, video.colour);
    const auto fill = [](auto& member, std::string_view value) {
        if (member[0] == '\0') {
            copy_text(member, value);
        }
    };
    fill(stream->primaries, bounded_text(told.primaries));
    fill(stream->transfer, bounded_text(told.transfer));
    fill(stream->matrix, bounded_text(told.matrix));
    fill(stream->range, bounded_text(told.range));
    fill(stream->hdr, bounded_text(told.hdr));
    if (video.chroma_format != 0) {
        fill(stream->chroma, chroma_format_name(video.chroma_format - 1U));
    }
    if (stream->bit_depth == 0) {
        stream->bit_depth = video.bits_per_channel;
    }
    // By default the display is as large as the picture (RFC 9559, 5.1.4.1.28.12).
    const bool default_display =
        video.display_unit == unit_pixels && (video.display_width | video.display_height) == 0;
    if (stream->pixel_aspect_width == 0 && default_display && stream->width != 0) {
        set_pixel_aspect(stream, 1, 1);
    }
}

// The display's shape; one in centimetres or inches is as good as one in pixels.
void set_display(const VideoSettings& video, BitmapStream* bitmap, VideoDescription* description) {
    const uint32_t width = video.display_width != 0 ? video.display_width : video.width;
    const uint32_t height = video.display_height != 0 ? video.display_height : video.height;
    if (video.display_unit > unit_ratio || (video.display_width | video.display_height) == 0) {
        return;
    }
    bitmap->display_width = width;
    bitmap->display_height = height;
    // Some writers put a ratio where pixels are wanted.
    if (video.display_unit == unit_pixels && width > video.width / 2) {
        description->display = {width, height};
    }
}

// Names the codec by the code of a sample entry.
void name_by_entry(uint32_t code, ZatStream* stream, VideoDescription* description) {
    fourcc_codec_name("[QT-VIDEO]", code, description->codec, sizeof description->codec);
    set_codec(stream, video_entry_name(code));
}

void describe_theora(Bytes codec_private, ZatStream* stream, VideoDescription* description) {
    TheoraHead head;
    if (!read_theora_head(first_xiph_packet(codec_private), &head)) {
        return;
    }
    const ZatStream told = *stream;
    set_theora_facts(head, stream);
    theora_codec_text(head, description->codec, sizeof description->codec);
    description->bits = stream->bit_depth;
    stream->width = told.width;
    stream->height = told.height;
    stream->bit_rate = told.bit_rate;
    if (told.frame_rate > 0) {
        stream->frame_rate = told.frame_rate;
        stream->frame_rate_numerator = told.frame_rate_numerator;
        stream->frame_rate_denominator = told.frame_rate_denominator;
    }
    // The display aspect follows the size.
    set_pixel_aspect(stream, stream->pixel_aspect_width, stream->pixel_aspect_height);
}

// Sets a code for the reader of codec headers, where there is one.
void set_code(uint32_t code, BitmapInfo* info) {
    for (size_t i = 0; i < sizeof info->compression; ++i) {
        info->compression[i] = static_cast<uint8_t>(code >> (24 - 8 * i));
    }
}

// By the headers of the codec. What it finds counts behind what the container told.
void describe(const Track& track, const Codec* codec, Bytes codec_private, BitmapStream* bitmap,
    ZatStream* stream, VideoDescription* description) {
    constexpr size_t entry_code_at = 4;
    switch (codec != nullptr ? codec->parser : Parser::plain) {
    case Parser::code:
        set_code(codec->code, &bitmap->info);
        bitmap->info.codec_data = codec_private;
        break;
    case Parser::vfw:
        if (read_bitmap_info(codec_private, &bitmap->info)) {
            set_codec_of_code(ReadBE32(bitmap->info.compression), stream);
        }
        break;
    case Parser::stsd:
        if (codec_private.size() >= entry_code_at + 4) {
            name_by_entry(ReadBE32(codec_private.data() + entry_code_at), stream, description);
        }
        break;
    case Parser::fourcc:
        if (codec_private.size() >= 4) {
            name_by_entry(ReadBE32(codec_private.data()), stream, description);
        }
        break;
    case Parser::theora:
        describe_theora(codec_private, stream, description);
        break;
    case Parser::raw:
        set_code(ReadBE32(track.video.uncompressed_fourcc), &bitmap->info);
        break;
    default:
        break;
    }
    if (stream->codec[0] == '\0') { // the private data should have told it
        copy_utf8(stream->codec, bounded_text(track.codec_id));
        bitmap->name = bitmap->name.empty() ? bounded_text(track.codec_id) : bitmap->name;
    }
    describe_bitmap_stream(*bitmap, stream, description);
    if (track.codec_id[0] == '\0') { // the code that stands for none is no name
        stream->codec[0] = '\0';
        stream->codec_id[0] = '\0';
        description->codec[0] = '\0';
    }
}

} // namespace

void add_video(const Source& source, uint32_t index) {
    const Track& track = source.segment->tracks[index];
    const Codec* codec = find_codec(bounded_text(track.codec_id));
    ZatStream stream = track_stream(source, track, ZAT_STREAM_VIDEO);
    stream.width = track.video.width;
    stream.height = track.video.height;
    set_scan(track.video, &stream);
    set_told_rate(track, &stream);
    if (stream.bit_rate == 0 || (stream.estimated & ZAT_ESTIMATED_BIT_RATE) != 0) {
        set_rest_rate(source, &stream); // a part says less: pictures differ more than sounds
    }

    uint8_t private_bytes[video_private_size];
    uint8_t frame_bytes[video_frame_size];
    BitmapStream bitmap;
    set_code(UINT32_MAX, &bitmap.info); // no codec's; 0 is one
    VideoDescription description;
    const bool is_code = codec != nullptr && codec->parser != Parser::vfw;
    bitmap.name = codec == nullptr ? bounded_text(track.codec_id)
                  : is_code        ? codec->text
                                   : std::string_view{};
    bitmap.start = read_first_frame(source, track, frame_bytes, sizeof frame_bytes);
    set_display(track.video, &bitmap, &description);
    const bool told_rate = stream.frame_rate > 0;
    describe(track, codec, read_private(source, track, private_bytes, sizeof private_bytes),
        &bitmap, &stream, &description);
    if (!told_rate) {
        drop_nonsense(&stream);
    }
    if (stream.frame_rate == 0) {
        set_measured_rate(source, index, &stream);
    }
    set_frames(source, track, &stream);
    set_container_facts(source, track, &stream);
    add_described_stream(source.out, bitmap, description, &stream);
}

} // namespace zat::matroska
