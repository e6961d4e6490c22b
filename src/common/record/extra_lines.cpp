#include "common/record/extra_lines.h"

#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "common/text/value_text.h"

#include <algorithm>

namespace zat {

namespace {

constexpr int32_t first_streams = 6; // shown before facts and notes when not all lines fit

// How many of each group would be written by now. A line that is added can only take places from
// the other groups, so what has lost its place never needs it back.
struct Share {
    int32_t of[ExtraLines::groups];
    int32_t before_facts; // streams
};

Share share_lines(const ExtraLines& extra) {
    const int32_t streams = extra.counts[ExtraLines::streams];
    const int32_t notes = std::min(extra.counts[ExtraLines::notes], int32_t{ZAT_LINE_COUNT});
    const bool all_fit = streams + extra.counts[ExtraLines::facts] + notes <= ZAT_LINE_COUNT;
    const int32_t first = all_fit ? streams : std::min(streams, first_streams);
    const int32_t facts =
        std::min(extra.counts[ExtraLines::facts], std::max(ZAT_LINE_COUNT - first - notes, 0));
    return {{std::min(streams, ZAT_LINE_COUNT - facts - notes), facts, notes},
        std::min(first, ZAT_LINE_COUNT - notes)};
}

// A place for one more line of the group: a free one, or that of the last line of a group that has
// more than its share by now. Null when the line would not be written.
char* new_line(ExtraLines* extra, ExtraLines::Group group) {
    ++extra->counts[group];
    const Share share = share_lines(*extra);
    if (share.of[group] < extra->counts[group]) {
        return nullptr;
    }
    int32_t slot = extra->kept[0] + extra->kept[1] + extra->kept[2];
    for (int32_t i = 0; i < ExtraLines::groups && slot == ZAT_LINE_COUNT; ++i) {
        if (extra->kept[i] > share.of[i]) {
            slot = extra->slots[i][--extra->kept[i]];
        }
    }
    extra->slots[group][extra->kept[group]++] = static_cast<uint8_t>(slot);
    return extra->lines[slot];
}

void add_line(ExtraLines* extra, ExtraLines::Group group, const char* format, va_list arguments)
    ZAT_PRINTF(3, 0);

void add_line(ExtraLines* extra, ExtraLines::Group group, const char* format, va_list arguments) {
    if (char* line = new_line(extra, group); line != nullptr) {
        format_text_v(line, line_size, format, arguments);
    }
}

void write_lines(const ExtraLines& extra, ExtraLines::Group group, int32_t from, int32_t to,
    InfoRecord* record) {
    for (int32_t i = from; i < std::min(to, extra.kept[group]); ++i) {
        add_extra_line(record, "%s", extra.lines[extra.slots[group][i]]);
    }
}

} // namespace

void add_stream_fact(ExtraLines* extra, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(extra, ExtraLines::streams, format, arguments);
    va_end(arguments);
}

void add_fact(ExtraLines* extra, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(extra, ExtraLines::facts, format, arguments);
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
    if (char* line = new_line(extra, ExtraLines::notes); line != nullptr) {
        copy_text(line, line_size, bounded_text(note));
    }
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

void add_trailing_data_note(const Output& out, ExtraLines* extra, uint64_t bytes) {
    char grouped[value_text_size];
    FormatGroupedSize(bytes, grouped);
    add_note(out, extra, "trailing data(%s Byte)", grouped);
}

void write_extra_lines(const ExtraLines& extra, InfoRecord* record) {
    const int32_t before_facts = share_lines(extra).before_facts;
    write_lines(extra, ExtraLines::streams, 0, before_facts, record);
    write_lines(extra, ExtraLines::facts, 0, ZAT_LINE_COUNT, record);
    write_lines(extra, ExtraLines::notes, 0, ZAT_LINE_COUNT, record);
    write_lines(extra, ExtraLines::streams, before_facts, ZAT_LINE_COUNT, record);
}

} // namespace zat
