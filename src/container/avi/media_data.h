// The chunks of media data themselves.
#pragma once

#include "container/avi/movie.h"

namespace zat::avi {

// What a walk over the media data met.
struct MediaWalk {
    int64_t bytes = 0;     // of the first part's media data
    bool complete = false; // all of it
};

// Finds the first data of every stream that has none yet, among the first few hundred chunks. When
// the index `counted`, streams without bytes have no data to find.
void find_first_data(Reader* reader, bool counted, Movie* movie);

// Counts chunks and bytes of all streams in the first `chunk_limit` chunks, for a file without an
// index.
MediaWalk count_media(Reader* reader, uint32_t chunk_limit, Movie* movie);

} // namespace zat::avi
