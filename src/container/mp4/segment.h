// What a media segment tells of itself, without the movie atom of its presentation (ISO/IEC
// 14496-12, 8.16; ISO/IEC 23009-1, 5.10).
#pragma once

#include "container/mp4/atom_reader.h"
#include "container/mp4/movie.h"

namespace zat::mp4 {

void visit_segment_type(Reader* reader, const Atom& atom, Movie* movie);
void visit_segment_index(Reader* reader, const Atom& atom, Movie* movie);
void visit_event_message(Reader* reader, const Atom& atom, Movie* movie);

// Whether the file is one or more segments without a movie.
bool is_segment(const Movie& movie);

// Makes the segment's brand that of a file that has no other.
void settle_segment(Movie* movie);

// The play time of the longest stream that an index describes, in seconds; 0 without one.
double segment_seconds(const Movie& movie);

} // namespace zat::mp4
