// The host's record, from the movie's.
#pragma once

#include "container/mp4/movie.h"
#include "zat/zat.h"

namespace zat::mp4 {

// Describes the tracks and writes all that the analyser has to say.
void write_movie(InfoRecord* record, Reader* reader, Movie* movie);

} // namespace zat::mp4
