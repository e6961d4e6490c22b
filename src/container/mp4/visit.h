// From the tree of atoms to the movie's record.
#pragma once

#include "container/mp4/movie.h"

namespace zat::mp4 {

// Walks the whole file once and fills the cleared record.
void collect_movie(Reader* reader, Movie* movie);

} // namespace zat::mp4
