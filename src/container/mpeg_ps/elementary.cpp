#include "container/mpeg_ps/elementary.h"

#include "common/bytes/numbers.h"
#include "common/record/details.h"
#include "common/record/frame_timing.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "container/mpeg_ps/describe.h"
#include "container/mpeg_ps/picture_count.h"

#include <algorithm>
#include <string_view>

namespace zat::ps {

namespace {

// Up to this size every picture is counted.
constexpr int64_t counted_size = 4'194'304;
// Of larger files this much of the head and the tail, where groups of pictures have time codes.
constexpr int64_t end_size = 2'097'152;
// Of others so many stretches, the first at the start, the last at the end.
constexpr int64_t stretch_size = 65'536;
constexpr int64_t stretch_count = 32;
// Of the search for the picture behind a stretch.
constexpr int64_t next_picture_step = 16'384;

struct LabelRow {
    std::string_view codec;
    const char* label;
};

constexpr LabelRow labels[] = {
    {"MPEG-1 Video", "[MPEG1-ES]"},
    {"MPEG-2 Video", "[MPEG2-ES]"},
    {"H.264", "[H264-ES]"},
    {"HEVC", "[HEVC-ES]"},
    {"MPEG-4 Visual", "[MPEG4-ES]"},
    {"VC-1", "[VC1-ES]"},
};

void write_label(const Stream& stream, InfoRecord* record) {
    for (const LabelRow& row : labels) {
        if (row.codec == bounded_text(stream.facts.codec)) {
            set_label(record, "%s", row.label);
        }
    }
}

double seconds_of(const GopTime& gop, double rate) {
    return gop.hours * 3600.0 + gop.minutes * 60.0 + gop.seconds + gop.pictures / rate;
}

// By the time codes of the first and the last group. Sampled sizes of pictures speak against them
// where writers leave all codes at zero.
PlayTime length_by_codes(
    const PictureCount& head, const PictureCount& tail, double by_size, double rate) {
    constexpr double doubt = 3;
    constexpr double day = 86400;
    double between = seconds_of(tail.last_group, rate) - seconds_of(head.first_group, rate);
    between += between < 0 ? day : 0;
    const double by_codes = between + static_cast<double>(tail.fields_behind_group) / 2 / rate +
                            static_cast<double>(head.fields_before_group) / 2 / rate;
    if (by_codes * doubt > by_size && by_codes < by_size * doubt) {
        return {.seconds = by_codes};
    }
    return {.seconds = by_size, .estimated = true};
}

// Counts the whole stream.
PlayTime count_all(Source* source, Stream* stream, int64_t from) {
    PictureCount count = count_pictures(source, *stream, from, source->size);
    stream->facts.frames = static_cast<uint64_t>(count.coded_fields + 1) / 2;
    const bool told = stream->facts.frame_rate > 0;
    measure_picture_rate(stream, &count.times);
    const double rate = stream->facts.frame_rate;
    if (!(rate > 0)) {
        return {};
    }
    if (!told) {
        const auto ticks = static_cast<double>(count.last_time - count.first_time);
        return {.seconds = ticks / stream->mpeg4.time_increment_resolution + 1 / rate};
    }
    return {.seconds = static_cast<double>(count.fields) / 2 / rate};
}

// Fills in, by the pictures of `sampled` bytes, how many there are in all, and returns the time of
// these.
double scale(const PictureCount& count, int64_t sampled, int64_t size, Stream* stream) {
    ZatStream* facts = &stream->facts;
    const double share = static_cast<double>(size) / static_cast<double>(sampled) / 2;
    facts->frames =
        clamp_to_integer<uint64_t>(static_cast<double>(count.coded_fields) * share + 0.5);
    facts->estimated |= ZAT_ESTIMATED_FRAMES;
    return facts->frame_rate > 0 ? static_cast<double>(count.fields) * share / facts->frame_rate
                                 : 0;
}

PlayTime sample_ends(Source* source, Stream* stream, int64_t from) {
    const PictureCount head = count_pictures(source, *stream, from, from + end_size);
    const PictureCount tail =
        count_pictures(source, *stream, source->size - end_size, source->size);
    PictureCount both;
    both.fields = head.fields + tail.fields;
    both.coded_fields = head.coded_fields + tail.coded_fields;
    const double by_size = scale(both, 2 * end_size, source->size - from, stream);
    if (!head.first_group.found || !tail.last_group.found || by_size == 0) {
        return {.seconds = by_size, .estimated = by_size > 0};
    }
    return length_by_codes(head, tail, by_size, stream->facts.frame_rate);
}

// Position of the first picture at or behind `from`, the end where there is none; -1 when it is too
// far.
int64_t next_picture(Source* source, const Stream& stream, int64_t from) {
    constexpr int64_t step = next_picture_step;
    constexpr int64_t reach = 524'288;
    for (int64_t at = from; at < from + reach; at += step) {
        const PictureCount count =
            count_pictures(source, stream, at, std::min(at + step, source->size));
        if (count.first_picture >= 0 || at + step >= source->size) {
            return count.first_picture >= 0 ? count.first_picture : source->size;
        }
    }
    return -1;
}

// Of each stretch the pictures that begin in it, whole, so that small and large ones count alike.
PlayTime sample_stretches(Source* source, Stream* stream, int64_t from) {
    const int64_t size = source->size - from;
    PictureCount all;
    int64_t bytes = 0;
    for (int64_t i = 0; i < stretch_count; ++i) {
        const int64_t start = from + (size - stretch_size) / (stretch_count - 1) * i;
        source_read_ahead(source, start, stretch_size + next_picture_step);
        PictureCount count = count_pictures(source, *stream, start, start + stretch_size);
        if (i == 0) {
            measure_picture_rate(stream, &count.times);
        }
        const int64_t end =
            count.first_picture < 0 ? -1 : next_picture(source, *stream, start + stretch_size);
        if (end >= 0) {
            all.fields += count.fields;
            all.coded_fields += count.coded_fields;
            bytes += end - count.first_picture;
        }
    }
    const double by_size = bytes > 0 ? scale(all, bytes, size, stream) : 0;
    return {.seconds = by_size, .estimated = by_size > 0};
}

// Where a stream ends whose pictures were all counted: blocks of zeros behind it have not come yet.
int64_t end_of_pictures(Source* source, int64_t from) {
    constexpr uint32_t block = Source::view_limit;
    int64_t end = source->size;
    while (end - from > block && leading_zeros(source_view(source, end - block, block)) == block) {
        end -= block;
    }
    return end;
}

PlayTime measure(Source* source, Stream* stream, int64_t from) {
    if (source->size - from <= counted_size) {
        return count_all(source, stream, from);
    }
    return stream->form == Form::mpeg_sequence ? sample_ends(source, stream, from)
                                               : sample_stretches(source, stream, from);
}

} // namespace

bool analyze_elementary_stream(Program* program, int64_t from, const Output& out) {
    program->table.count = 0;
    program->clocks.count = 0;
    program->damaged = 0;
    const Payload payload = {.key = id_video_first << 8,
        .kind = Kind::video,
        .start = from,
        .end = program->source.size};
    Stream* stream = stream_of(&program->table, payload);
    stream->pictures = nullptr; // are counted by stretches
    collect_payload(&program->source, stream, payload);
    if (stream->form == Form::unknown &&
        (stream->collected == 0 || !describe_stream(stream, Follows::nothing))) {
        return false;
    }
    sort_streams(&program->table);
    drop_nonsense(&stream->facts); // of the frame rate
    const PlayTime length = measure(&program->source, stream, from);
    if (length.estimated) {
        stream->facts.estimated |= ZAT_ESTIMATED_DURATION | ZAT_ESTIMATED_BIT_RATE;
    }
    stream->packets = 1;
    const int64_t size = program->source.size - from;
    stream->bytes = static_cast<uint64_t>(
        size <= counted_size ? end_of_pictures(&program->source, from) - from : size);
    program->bare = true;
    program->whole = true;
    program->told = length;
    write_label(*stream, out.record);
    if (out.record->data_size == 0) {
        out.record->data_size = static_cast<uint64_t>(size);
    }
    write_program(program, out, "MPEG video");
    return true;
}

} // namespace zat::ps
