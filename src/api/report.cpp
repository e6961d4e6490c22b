#include "api/report.h"

#include "common/bytes/numbers.h"
#include "common/text/text.h"
#include "common/text/value_text.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

struct Report {
    char* out;
    size_t size;      // of `out`
    size_t body_size; // of the body, terminator included
    size_t length;    // so far, kept or not
    bool body_full;
};

void put(Report* report, std::string_view text) {
    if (report->length < report->size) {
        std::memcpy(report->out + report->length, text.data(),
            std::min(text.size(), report->size - report->length));
    }
    report->length += text.size();
}

void put_body_line(Report* report, std::string_view line) {
    report->body_full = report->body_full || line.size() + 2 >= report->body_size - report->length;
    if (!report->body_full) {
        put(report, line);
        put(report, "\r\n");
    }
}

// The lines of one kind, with a header when there are two or more.
void put_lines(Report* report, const char (*lines)[ZAT_LINE_SIZE], int32_t slots, int32_t count,
    const char* header_format) {
    if (count > 1 && header_format != nullptr) {
        char header[64];
        const size_t length = format_text(header, sizeof header, header_format, count);
        put_body_line(report, {header, length});
    }
    for (int32_t i = 0; i < std::min(count, slots); ++i) {
        put_body_line(report, bounded_text(lines[i]));
    }
}

// The label is a field of the record, so it may lack its terminator.
void put_summary(Report* report, const InfoRecord* record) {
    char label[ZAT_LABEL_SIZE + 1];
    copy_text(label, bounded_text(record->label));
    char size_text[value_text_size] = {};
    FormatGroupedSize(record->file_size, size_text);
    char time_text[value_text_size] = {};
    FormatPlayTime(record->play_time, time_text);
    char summary[line_size];
    format_text(summary, sizeof summary, "%s %sByte %s(%.4fsec)", label, size_text, time_text,
        without_negative_zero(record->play_time));
    put(report, summary);
}

// Hosts may pass any counts: the sum is taken where it cannot overflow.
bool has_streams(const InfoRecord* record) {
    return int64_t{record->video_count} + record->audio_count + record->extra_count != 0;
}

} // namespace

size_t write_report(const InfoRecord* record, char* out, size_t size, size_t body_size) {
    Report report{out, size, body_size, 0, false};
    put_lines(&report, record->general, 2, record->general_count, nullptr);
    put_lines(&report, record->video, ZAT_LINE_COUNT, record->video_count, "[%d videos]");
    put_lines(&report, record->audio, ZAT_LINE_COUNT, record->audio_count, "[%d audios]");
    if (record->extra_info[0] != '\0') {
        put_body_line(&report, bounded_text(record->extra_info));
    }
    put_lines(&report, record->extra, ZAT_LINE_COUNT, record->extra_count, "[%d extras]");
    put_summary(&report, record);
    if (has_streams(record)) {
        put(&report, "\r\n");
    } else {
        char marker[64];
        const size_t length = format_text(marker, sizeof marker, "[%d:%d.%d.%d]\r\n",
            static_cast<int32_t>(record->type_code), record->video_count, record->audio_count,
            record->extra_count);
        put(&report, {marker, length});
    }
    if (size != 0) {
        out[report.length < size ? report.length : whole_characters(out, size - 1)] = '\0';
    }
    return report.length;
}

} // namespace zat
