#include "common/extra_lines.h"

#include "common/record_lines.h"
#include "common/stream_lines.h"
#include "common/value_text.h"

#include <algorithm>

namespace zat {

namespace {

constexpr int32_t first_streams = 6; // shown before facts and notes when not all lines fit

void add_line(ExtraLines::Group* group, const char* format, va_list arguments) ZAT_PRINTF(2, 0);

void add_line(ExtraLines::Group* group, const char* format, va_list arguments) {
    if (group->count < ZAT_LINE_COUNT) {
        format_text_v(group->lines[group->count], line_size, format, arguments);
    }
    ++group->count;
}

void write_lines(const ExtraLines::Group& group, int32_t from, int32_t to, InfoRecord* record) {
    for (int32_t i = from; i < std::min(to, int32_t{ZAT_LINE_COUNT}); ++i) {
        add_extra_line(record, "%s", group.lines[i]);
    }
}

} // namespace

void add_stream_fact(ExtraLines* extra, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(&extra->streams, format, arguments);
    va_end(arguments);
}

void add_fact(ExtraLines* extra, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(&extra->facts, format, arguments);
    va_end(arguments);
}

void add_text_stream(const Output& out, ExtraLines* extra, const ZatStream& stream,
    std::string_view name, std::string_view prefix) {
    char line[line_size];
    copy_text(line, prefix);
    append_text(line, "[");
    append_text(line, name);
    append_text(line, "]");
    append_remarks(stream, line);
    add_stream_fact(extra, "%s", line);
    add_stream(out.details, stream);
}

void add_note(const Output& out, ExtraLines* extra, const char* format, ...) {
    char note[line_size];
    va_list arguments;
    va_start(arguments, format);
    format_text_v(note, sizeof note, format, arguments);
    va_end(arguments);
    ExtraLines::Group* group = &extra->notes;
    if (group->count < ZAT_LINE_COUNT) {
        copy_text(group->lines[group->count], bounded_text(note));
    }
    ++group->count;
    const std::string_view words = bounded_text(note);
    note_details(out.details, words.substr(0, words.find('(')));
}

void add_truncated_note(const Output& out, ExtraLines* extra, uint64_t missing_bytes) {
    char grouped[value_text_size];
    FormatGroupedSize(missing_bytes, grouped);
    add_note(out, extra, "truncated(%s Byte missing)", grouped);
    if (out.details != nullptr) {
        out.details->missing_bytes = missing_bytes;
    }
}

void write_extra_lines(const ExtraLines& extra, InfoRecord* record) {
    const int32_t streams = extra.streams.count;
    const int32_t notes = std::min(extra.notes.count, int32_t{ZAT_LINE_COUNT});
    const bool all_fit = streams + extra.facts.count + notes <= ZAT_LINE_COUNT;
    const int32_t shown_streams = all_fit ? streams : std::min(streams, first_streams);
    const int32_t room = std::max(ZAT_LINE_COUNT - shown_streams - notes, 0);
    const int32_t shown_facts = std::min(extra.facts.count, room);
    write_lines(extra.streams, 0, std::min(shown_streams, ZAT_LINE_COUNT - notes), record);
    write_lines(extra.facts, 0, shown_facts, record);
    write_lines(extra.notes, 0, notes, record);
    write_lines(extra.streams, shown_streams, streams, record);
}

} // namespace zat
