// The two indexes of AVI files: idx1 and OpenDML's.
#pragma once

#include "container/avi/movie.h"

namespace zat::avi {

constexpr int64_t index_limit = 16 << 20; // bytes of index that are read

bool has_index(const Movie& movie);

// Counts every stream's chunks and their bytes by the index that lists them, and finds its first
// data. False when there is no index or it costs more than index_limit.
bool count_by_index(Reader* reader, Movie* movie);

// The stream that a chunk of media data belongs to by its code, such as "01wb"; stream_count when
// it is no such chunk or has no data for the stream ("ix01", "01pc").
uint32_t stream_of_chunk(const Movie& movie, uint32_t id);

// Counts a chunk of the stream.
void count_chunk(Stream* stream, uint32_t bytes);

} // namespace zat::avi
