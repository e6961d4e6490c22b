#include "container/mpeg_ps/elementary.h"

#include "common/details.h"
#include "common/record_lines.h"
#include "container/mpeg_ps/describe.h"
#include "container/mpeg_ps/picture_count.h"

#include <algorithm>
#include <string_view>

namespace zat::ps {

namespace {

// Up to this size every picture is counted.
constexpr int64_t counted_size = 4'194'304;
// Of larger files this much of the head and the tail.
constexpr int64_t sampled_size = 2'097'152;

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

// By the time codes of the first and the last group, unless the sizes of the pictures speak against
// it: many writers leave all codes at zero.
PlayTime length_of_large(
    const PictureCount& head, const PictureCount& tail, int64_t bytes, double rate) {
    PlayTime length;
    const double by_size = head.fields == 0
                               ? 0
                               : static_cast<double>(bytes) / static_cast<double>(sampled_size) *
                                     static_cast<double>(head.fields) / 2 / rate;
    length.seconds = by_size;
    length.estimated = true;
    if (head.first_group.found && tail.last_group.found) {
        constexpr double doubt = 3;
        constexpr double day = 86400;
        double between = seconds_of(tail.last_group, rate) - seconds_of(head.first_group, rate);
        between += between < 0 ? day : 0;
        const double by_codes = between + static_cast<double>(tail.fields_behind_group) / 2 / rate +
                                static_cast<double>(head.fields_before_group) / 2 / rate;
        if (by_codes * doubt > by_size && by_codes < by_size * doubt) {
            length = {.seconds = by_codes};
        }
    }
    return length;
}

PlayTime measure(Program* program, const Stream& stream, int64_t from) {
    const double rate = stream.facts.frame_rate;
    if (rate <= 0) {
        return {};
    }
    const int64_t size = program->source.size;
    const bool counts_all = size - from <= counted_size;
    PictureCount head;
    count_pictures(&program->source, stream, from, counts_all ? size : from + sampled_size, &head);
    if (counts_all) {
        return {.seconds = static_cast<double>(head.fields) / 2 / rate};
    }
    PictureCount tail;
    if (head.first_group.found) {
        count_pictures(&program->source, stream, size - sampled_size, size, &tail);
    }
    return length_of_large(head, tail, size - from, rate);
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
    collect_payload(&program->source, stream, payload);
    if (stream->form == Form::unknown &&
        (stream->collected == 0 || !describe_stream(stream, true))) {
        return false;
    }
    sort_streams(&program->table);
    const PlayTime length = measure(program, *stream, from);
    stream->packets = 1;
    stream->bytes = static_cast<uint64_t>(program->source.size - from);
    program->bare = true;
    program->whole = true;
    program->told = length;
    write_label(*stream, out.record);
    if (out.record->data_size == 0) {
        out.record->data_size = stream->bytes;
    }
    write_program(program, out, "MPEG video");
    return true;
}

} // namespace zat::ps
