// Collects a file's extra lines, of which a record holds ten, and writes them in their order:
// further streams, facts, notes. When there are more than ten, the first six streams and all notes
// are kept, so that no warning is lost, then as many facts as fit. What room is left then goes to
// the other streams, behind the notes.
#pragma once

#include "common/record/details.h"
#include "common/text/text.h"

#include <cstdint>
#include <string_view>

namespace zat {

struct ExtraLines {
    enum Group : uint8_t { streams, facts, notes };
    static constexpr int32_t groups = 3;

    int32_t counts[groups] = {}; // all lines that were added
    int32_t kept[groups] = {};   // how many of them have a place in `lines`: the first ones
    uint8_t slots[groups][ZAT_LINE_COUNT]; // their places
    char lines[ZAT_LINE_COUNT][line_size]; // no more than can be written: it stands on the stack
};

void add_stream_fact(ExtraLines* extra, const char* format, ...) ZAT_PRINTF(2, 3);
void add_fact(ExtraLines* extra, const char* format, ...) ZAT_PRINTF(2, 3);

// "[SubRip] jpn "title" forced" behind `prefix`, with the stream's facts.
void add_text_stream(const Output& out, ExtraLines* extra, const ZatStream& stream,
    std::string_view name, std::string_view prefix = {});

// A line of ASCII words that warns of something; the details get it too, up to a parenthesis.
void add_note(const Output& out, ExtraLines* extra, const char* format, ...) ZAT_PRINTF(3, 4);

// "truncated(1,234 Byte missing)", with the number in the details.
void add_truncated_note(const Output& out, ExtraLines* extra, uint64_t missing_bytes);

// "trailing data(1,234 Byte)", for what stands behind the end that the file tells.
void add_trailing_data_note(const Output& out, ExtraLines* extra, uint64_t bytes);

// Appends the lines to the record's.
void write_extra_lines(const ExtraLines& extra, InfoRecord* record);

} // namespace zat
