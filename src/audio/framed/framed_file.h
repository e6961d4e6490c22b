// Files that are nothing but frames of audio one behind the other, between tags: one stream, whose
// length and mean rate the frames themselves tell.
#pragma once

#include "audio/framed/frame_count.h"
#include "common/file/reader.h"
#include "common/record/output.h"
#include "common/tags/outer_tags.h"
#include "common/text/text.h"

#include <cstdint>
#include <string_view>

namespace zat {

// What an analyser finds out; from it the record and the details are written.
struct FramedFile {
    Reader reader;
    OuterTags tags;
    Span stream; // behind the tags and the zeros that may follow them

    ZatStream facts;
    char line[line_size] = {}; // made from the facts
    FrameCount count;
};

// Starts on an open file and measures the tags.
void open_framed_file(FramedFile* framed, FileRecord* file);

// Up to `length` bytes of the stream's start.
Bytes framed_start(FramedFile* framed, uint32_t length);

// Counts the frames and sets samples, duration, rate and bytes of the facts, whose sample rate is
// known. `unit` samples are what a counted sample stands for. False without a frame.
bool count_framed_file(
    FramedFile* framed, const FrameFormat& format, const Output& out, uint32_t unit = 1);

// Writes what the file is: the record's label, empty for kinds without one, and the details'
// format.
void name_framed_file(const Output& out, const char* label, std::string_view format);

// Writes what was found out.
void write_framed_file(FramedFile* framed, const Output& out);

} // namespace zat
