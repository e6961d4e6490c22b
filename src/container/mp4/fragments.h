// Movie fragments (ISO/IEC 14496-12, 8.8): samples that stand outside the movie atom.
#pragma once

#include "container/mp4/movie.h"

namespace zat::mp4 {

// "mvex": the fragments' whole duration and the tracks' defaults.
void visit_fragment_announcement(Reader* reader, const Atom& atom, Movie* movie);

// "moof"
void visit_fragment(Reader* reader, const Atom& atom, Movie* movie);

// "traf", and "tfhd" and "trun" in it: the run's samples, bytes and durations add to its track.
void visit_track_fragment(Reader* reader, const Atom& atom, Movie* movie);
void visit_track_fragment_header(Reader* reader, const Atom& atom, Movie* movie);
void visit_track_run(Reader* reader, const Atom& atom, Movie* movie);

} // namespace zat::mp4
