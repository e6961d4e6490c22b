// Lines made from a stream's facts, and both handed over in one call: the line to the record, the
// facts to the details. A figure that is not known, or that is nonsense, is left out of the line
// together with its unit; one whose bit in `estimated` is set has "~" in front.
#pragma once

#include "common/record/details.h"
#include "common/text/text.h"

#include <cstdint>
#include <string_view>

namespace zat {

// What a line shows besides the facts of its stream.
struct LineText {
    std::string_view codec = {};  // in the brackets
    std::string_view prefix = {}; // before the line: "0x0111 "
    uint32_t bits = 0;            // per sample, or per pixel of uncompressed pictures
    // Video.
    double highest_frame_rate = 240; // more is nonsense
    uint32_t display_width = 0;      // shown as "display 853x480" when set
    uint32_t display_height = 0;
    // Audio.
    uint32_t channel_mask = 0;               // 0: the usual one for three to eight channels
    uint32_t sample_rate_limit = 10'000'000; // Hz: this and more is nonsense
};

// "%dx%d [%s] %dBit %.3ffps %.3fkbps %df Progressive" and the remarks.
void add_video_stream(const Output& out, const ZatStream& stream, const LineText& text);

// "[%s] %dHz %dch(%s) %dBit %.3fkbps" and the remarks.
void add_audio_stream(const Output& out, const ZatStream& stream, const LineText& text);

// A line that a stream's own parser made, behind `prefix`, with the remarks. The kind of the
// stream, video or audio, decides where it goes.
void add_stream_line(const Output& out, const ZatStream& stream, std::string_view line,
    std::string_view prefix = {});

// The same for a file that has but one stream of the kind: its line is the only one.
void set_stream_line(const Output& out, const ZatStream& stream, std::string_view line);

// The texts of the lines alone.
void format_video_line(const ZatStream& stream, const LineText& text, char (&line)[line_size]);
void format_audio_line(const ZatStream& stream, const LineText& text, char (&line)[line_size]);

// Appends, each behind a blank, what follows every stream's line: language, title, flags, HDR. A
// line that ends with a blank gets no further one.
void append_remarks(const ZatStream& stream, char (&line)[line_size]);

// Appends "~812.000kbps", unless the rate is unknown or nonsense.
void append_bit_rate(const ZatStream& stream, char (&line)[line_size]);

// Appends what printf makes of it behind a blank, unless the line is empty or ends with one.
void append_format(char (&line)[line_size], const char* format, ...) ZAT_PRINTF(2, 3);

// Appends the piece behind a blank, unless the line is empty or ends with one.
void append_word(char (&line)[line_size], std::string_view piece);

// Forgets what no stream can have, in the facts: sides over 65,535, rates of 10 Gbit/s, 10 MHz, 255
// channels, frame rates outside 0.05 to `highest_frame_rate` and values that are not finite.
void drop_nonsense(ZatStream* stream, double highest_frame_rate = 240);

} // namespace zat
