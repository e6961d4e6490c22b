// What the container tells of a stream, whatever its codec.
#pragma once

#include "common/record/extra_lines.h"
#include "common/record/output.h"
#include "container/avi/movie.h"

namespace zat::avi {

// What all streams are described from.
struct Source {
    Reader* reader = nullptr;
    const Movie* movie = nullptr;
    bool counted = false;   // chunks and bytes are those of the index, or of all media data
    bool estimated = false; // lengths are those of a part of the media data, scaled to all of it
    Output out = {};
    ExtraLines* extra = nullptr;
};

// A stream with its number, times, language, title and what was counted of it.
ZatStream stream_facts(const Source& source, uint32_t number, ZatStreamKind kind);

// Bit/s of the chunks that were counted; 0 when none were, or their time is not known.
uint64_t counted_rate(const Source& source, const Stream& stream);

// "vids" streams and the others. Each adds its line and its details.
void add_video(const Source& source, uint32_t number);
void add_audio(const Source& source, uint32_t number);
void add_interleaved_dv(const Source& source, uint32_t number);
void add_text(const Source& source, uint32_t number);
void add_data(const Source& source, uint32_t number);

} // namespace zat::avi
