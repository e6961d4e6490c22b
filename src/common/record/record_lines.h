// Writing into the host's record: every line is bounded to its slot, every index to its ten slots.
#pragma once

#include "common/text/text.h"
#include "zat/zat.h"

namespace zat {

// Appends a line behind the lines of its kind and raises the count; a full array stays as it is.
void add_video_line(InfoRecord* record, const char* format, ...) ZAT_PRINTF(2, 3);
void add_audio_line(InfoRecord* record, const char* format, ...) ZAT_PRINTF(2, 3);
void add_extra_line(InfoRecord* record, const char* format, ...) ZAT_PRINTF(2, 3);

// The same for the two general lines.
void add_general_line(InfoRecord* record, const char* format, ...) ZAT_PRINTF(2, 3);

// Makes this the only general line.
void set_general_line(InfoRecord* record, const char* format, ...) ZAT_PRINTF(2, 3);

void set_label(InfoRecord* record, const char* format, ...) ZAT_PRINTF(2, 3);

} // namespace zat
