// The typed details of a file.
#pragma once

#include "container/mp4/movie.h"
#include "zat/details.h"

namespace zat::mp4 {

// Fills the details: the file's members and all tracks that are streams. `seconds` is the play time
// of the record. Reads what the lines did not need.
void describe_movie(Reader* reader, Movie* movie, double seconds, ZatDetails* details);

} // namespace zat::mp4
