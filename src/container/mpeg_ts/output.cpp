#include "container/mpeg_ts/output.h"

#include "common/record/extra_lines.h"
#include "common/record/record_lines.h"
#include "container/mpeg_ts/pid_line.h"
#include "container/mpeg_ts/service_lines.h"
#include "container/mpeg_ts/stream_output.h"

#include <algorithm>
#include <numeric>

namespace zat::ts {

namespace {

void set_format(const Analysis* analysis, const PlayTime& time, const Output& out) {
    set_label(out.record, "[MPEG2-TS(%u)]", analysis->layout.stride);
    out.record->play_time = time.seconds;
    if (out.details == nullptr) {
        return;
    }
    copy_utf8(out.details->format, "MPEG-TS");
    if (analysis->layout.stride != packet_size) {
        format_text(out.details->format_profile, sizeof out.details->format_profile, "%u",
            analysis->layout.stride);
    }
    out.details->duration = time.seconds;
    out.details->estimated |= time.joined ? uint32_t{ZAT_ESTIMATED_DURATION} : 0;
}

bool has_hidden_stream(const Analysis* analysis) {
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        if (is_encrypted(analysis, i)) {
            return true;
        }
    }
    return false;
}

} // namespace

uint32_t order_programs(const Analysis* analysis, uint16_t (&order)[program_slots]) {
    constexpr uint32_t stream_weight =
        stream_slots + 1; // of equals the one with more to play is first
    uint32_t described[program_slots] = {};
    for (uint32_t i = 0; i < analysis->stream_count; ++i) {
        const Stream& stream = analysis->streams[i];
        if (stream.program < program_slots && analysis->units[i].described) {
            const ZatStreamKind kind = text_of(stream.codec).kind;
            const bool played = kind == ZAT_STREAM_VIDEO || kind == ZAT_STREAM_AUDIO;
            described[stream.program] += stream_weight + (played ? 1U : 0U);
        }
    }
    uint32_t count = 0;
    for (uint16_t i = 0; i < analysis->program_count; ++i) {
        if (is_active(analysis, analysis->programs[i])) {
            order[count++] = i;
        }
    }
    // By insertion, which keeps the order of equals.
    for (uint32_t i = 1; i < count; ++i) {
        for (uint32_t j = i; j > 0 && described[order[j]] > described[order[j - 1]]; --j) {
            std::swap(order[j], order[j - 1]);
        }
    }
    return count;
}

void write_analysis(const Analysis* analysis, const uint16_t* order, uint32_t program_count,
    const PlayTime& time, const Output& out) {
    set_format(analysis, time, out);
    ExtraLines extra;
    for (uint32_t i = 0; i < program_count; ++i) {
        add_program_streams(analysis, order[i], time, out, &extra);
    }
    if (program_count == 0) {
        add_program_streams(analysis, program_slots, time, out, &extra);
    }
    write_services(analysis, order, program_count, out, &extra);
    if (program_count == 0) {
        add_note(out, &extra, "no PMT");
    }
    if (has_hidden_stream(analysis)) {
        add_note(out, &extra, "scrambled");
    }
    if (time.joined) {
        add_note(out, &extra, "joined");
        add_note(out, &extra, "time estimated");
    }
    write_extra_lines(extra, out.record);
    write_pid_line(analysis, out.record);
}

} // namespace zat::ts
