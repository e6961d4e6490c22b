#include "common/record/record_lines.h"

namespace zat {

namespace {

void add_line(char (*lines)[ZAT_LINE_SIZE], int32_t* count, const char* format, va_list arguments)
    ZAT_PRINTF(3, 0);

void add_line(char (*lines)[ZAT_LINE_SIZE], int32_t* count, const char* format, va_list arguments) {
    if (*count >= 0 && *count < ZAT_LINE_COUNT) {
        format_text_v(lines[*count], ZAT_LINE_SIZE, format, arguments);
        ++*count;
    }
}

} // namespace

void add_video_line(InfoRecord* record, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(record->video, &record->video_count, format, arguments);
    va_end(arguments);
}

void add_audio_line(InfoRecord* record, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(record->audio, &record->audio_count, format, arguments);
    va_end(arguments);
}

void add_extra_line(InfoRecord* record, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(record->extra, &record->extra_count, format, arguments);
    va_end(arguments);
}

void add_general_line(InfoRecord* record, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    add_line(record->general, &record->general_count, format, arguments);
    va_end(arguments);
}

void set_general_line(InfoRecord* record, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    record->general_count = 0;
    add_line(record->general, &record->general_count, format, arguments);
    va_end(arguments);
}

void set_label(InfoRecord* record, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    format_text_v(record->label, ZAT_LABEL_SIZE, format, arguments);
    va_end(arguments);
}

} // namespace zat
