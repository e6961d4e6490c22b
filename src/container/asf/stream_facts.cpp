#include "container/asf/stream_facts.h"

#include "audio/first_frame.h"
#include "audio/wave_stream.h"
#include "common/record/details.h"
#include "common/record/stream_lines.h"
#include "video/bitmap_stream.h"

#include <algorithm>
#include <cmath>

namespace zat::asf {

namespace {

constexpr double ticks_per_second = 1e7; // of 100 ns
constexpr uint32_t audio_format_size = 256;
constexpr uint32_t video_format_size = 2048;
constexpr uint32_t video_start_size = 4096;
constexpr uint32_t bitmap_info_at = 11; // in a video stream's type data
constexpr double milliseconds = 0.001;

enum SettingType : uint16_t { setting_of_video = 1, setting_of_audio = 2 };

struct Described {
    const Stream* stream = nullptr;
    const StreamExtras* extras = nullptr;
    StreamScan* scan = nullptr;
    uint32_t order = 0; // among the streams of its type
};

ZatStream container_facts(
    const Source& source, const Described& described, ZatStreamKind kind, uint16_t setting_type) {
    ZatStream facts = new_stream(kind);
    facts.id = described.stream->number;
    facts.duration = source.play_time;
    facts.flags |= described.stream->encrypted ? uint32_t{ZAT_FLAG_ENCRYPTED} : 0;
    if (described.extras->has_language) {
        read_language(source.reader, *source.header, described.extras->language, facts.language);
    }
    if (setting_type != 0) {
        read_setting(source.reader, *source.header, setting_type, described.order, facts.title);
    }
    if (facts.title[0] == '\0') {
        read_text(source.reader, described.extras->name, facts.title);
    }
    if (described.extras->tells_vbr) {
        facts.bit_rate_mode = described.extras->vbr ? ZAT_BIT_RATE_VARIABLE : ZAT_BIT_RATE_CONSTANT;
    }
    if (source.scan->complete) {
        facts.bytes = described.scan->bytes;
        facts.flags |= described.scan->bytes == 0 ? uint32_t{ZAT_FLAG_NO_DATA} : 0;
    }
    return facts;
}

// Bit/s over the time from the first to the last object, or, of more packets than were read, over
// the play time if all are like those; 0 when there is no time.
uint64_t counted_rate(const Source& source, const StreamScan& scan) {
    const MediaScan& media = *source.scan;
    const bool extends = !media.complete && media.read != 0 && source.play_time > 0;
    const double share =
        extends ? static_cast<double>(media.all) / static_cast<double>(media.read) : 1;
    const double seconds =
        extends ? source.play_time : (scan.last_time - scan.first_time) * milliseconds;
    return mean_bit_rate(static_cast<double>(scan.bytes) * share, seconds);
}

// A claim counts, unless all packets show that it is far from true.
void set_video_rate(const Source& source, const Described& described, ZatStream* facts) {
    const uint64_t told = described.extras->data_rate != 0 ? described.extras->data_rate
                                                           : described.extras->packet_rate;
    const uint64_t counted = counted_rate(source, *described.scan);
    const bool is_wrong = source.scan->complete && counted != 0 && told > 2 * counted;
    facts->bit_rate = told == 0 || is_wrong ? counted : told;
    facts->nominal_bit_rate = is_wrong ? told : 0;
    facts->estimated |= told == 0 && !source.scan->complete ? uint32_t{ZAT_ESTIMATED_BIT_RATE} : 0;
}

// The declared rate, or the measured one where that is another.
void set_frame_rates(const Source& source, const Described& described, ZatStream* facts) {
    constexpr double tolerance = 0.1;
    ZatStream measured = new_stream(ZAT_STREAM_VIDEO);
    for (uint32_t i = 0; i < source.scan->timed_count; ++i) {
        TimedStream* timed = &source.scan->timed[i];
        if (timed->number == described.stream->number) {
            measure_frame_rate(&measured, &timed->times, milliseconds);
        }
    }
    set_frame_rate(facts, static_cast<uint64_t>(ticks_per_second), described.extras->frame_time);
    drop_nonsense(facts);
    const double declared = facts->frame_rate;
    if (measured.frame_rate == 0 ||
        (declared != 0 && std::abs(measured.frame_rate - declared) <= tolerance * declared)) {
        return;
    }
    facts->frame_rate = measured.frame_rate;
    facts->frame_rate_numerator = measured.frame_rate_numerator;
    facts->frame_rate_denominator = measured.frame_rate_denominator;
    facts->nominal_frame_rate = declared;
    facts->estimated |= measured.estimated;
}

void add_video(const Source& source, const Described& described) {
    ZatStream facts = container_facts(source, described, ZAT_STREAM_VIDEO, setting_of_video);
    uint8_t format[video_format_size];
    const uint32_t size =
        read_some(source.reader, described.stream->type_data, 0, format, sizeof format);
    BitmapStream bitmap;
    if (size > bitmap_info_at) {
        facts.width = ReadLE32(format);
        facts.height = ReadLE32(format + 4);
        read_bitmap_info({format + bitmap_info_at, size - bitmap_info_at}, &bitmap.info);
    }
    set_frame_rates(source, described, &facts);
    set_video_rate(source, described, &facts);
    facts.frames = source.scan->complete ? described.scan->objects : 0;
    uint8_t start[video_start_size];
    bitmap.start = {
        start, read_some(source.reader, described.scan->first_data, 0, start, sizeof start)};
    bitmap.display_width = uint64_t{facts.width} * described.extras->aspect_x;
    bitmap.display_height = uint64_t{facts.height} * described.extras->aspect_y;
    bitmap.shows_wmv3_profile = true;
    add_bitmap_stream(source.out, bitmap, &facts);
}

void add_audio(const Source& source, const Described& described) {
    constexpr size_t byte_rate_at = 8;
    ZatStream facts = container_facts(source, described, ZAT_STREAM_AUDIO, setting_of_audio);
    uint8_t format[audio_format_size];
    const uint32_t size =
        read_some(source.reader, described.stream->type_data, 0, format, sizeof format);
    WaveStream wave;
    wave.format = {format, size};
    wave.start = read_view(source.reader, described.scan->first_data, 0, frame_start_size);
    wave.rate = described.extras->data_rate;
    const bool tells_rate = size >= byte_rate_at + 4 && ReadLE32(format + byte_rate_at) != 0;
    if (wave.rate == 0 && !tells_rate) {
        const uint64_t told = described.extras->packet_rate;
        wave.rate = told != 0 ? told : counted_rate(source, *described.scan);
        wave.rate_is_estimated = told == 0 && !source.scan->complete;
    }
    add_wave_stream(source.out, wave, &facts);
}

void add_image(const Source& source, const Described& described) {
    ZatStream facts = container_facts(source, described, ZAT_STREAM_VIDEO, 0);
    facts.width = read_le32(source.reader, described.stream->type_data, 0);
    facts.height = read_le32(source.reader, described.stream->type_data, 4);
    copy_utf8(facts.codec, "MJPEG");
    drop_nonsense(&facts);
    LineText text;
    text.codec = "JPEG";
    add_video_stream(source.out, facts, text);
}

const char* data_name(StreamType type) {
    return type == StreamType::command         ? "command"
           : type == StreamType::file_transfer ? "file transfer"
           : type == StreamType::binary        ? "binary"
                                               : "unknown stream";
}

void add_data(const Source& source, const Described& described) {
    ZatStream facts = container_facts(source, described, ZAT_STREAM_DATA, 0);
    const char* name = data_name(described.stream->type);
    copy_utf8(facts.codec, name);
    add_text_stream(source.out, source.extra, facts, name);
}

} // namespace

void add_streams(const Source& source) {
    uint32_t videos = 0;
    uint32_t audios = 0;
    for (uint32_t i = 0; i < source.header->stream_count; ++i) {
        const Stream& stream = source.header->streams[i];
        Described described{&stream, &source.header->extras[stream.number],
            &source.scan->streams[stream.number], 0};
        switch (stream.type) {
        case StreamType::video:
            described.order = videos++;
            add_video(source, described);
            break;
        case StreamType::audio:
            described.order = audios++;
            add_audio(source, described);
            break;
        case StreamType::image:
            add_image(source, described);
            break;
        default:
            add_data(source, described);
            break;
        }
    }
}

} // namespace zat::asf
