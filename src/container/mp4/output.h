// The host's record and details, from the movie's.
#pragma once

#include "common/record/output.h"
#include "container/mp4/movie.h"

namespace zat::mp4 {

// Describes the tracks and writes all that the analyser has to say.
void write_movie(const Output& out, Reader* reader, Movie* movie);

} // namespace zat::mp4
