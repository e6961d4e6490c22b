#include "container/avi.h"

#include "common/extra_info.h"
#include "common/record_lines.h"
#include "common/text_codes.h"
#include "container/avi/index.h"
#include "container/avi/info_list.h"
#include "container/avi/media_data.h"
#include "container/avi/stream_facts.h"

#include <algorithm>

namespace zat {

namespace {

using namespace avi;

enum Options : uint32_t { option_thorough = 1 };

constexpr uint32_t counted_chunks = 1024; // of a file that neither declares lengths nor has an index

// Streams whose lengths nobody filled in: a recording that was broken off.
bool lacks_lengths(const Movie& movie) {
    return std::all_of(movie.streams, movie.streams + movie.stream_count,
        [](const Stream& stream) { return stream.length == 0; });
}

// Takes the lengths from what was counted; of a part of the media data for all of it.
void estimate_lengths(const MediaWalk& walk, Movie* movie) {
    const double whole = walk.complete || walk.bytes == 0
                             ? 1
                             : static_cast<double>(size_of(movie->movi)) /
                                   static_cast<double>(walk.bytes);
    for (uint32_t i = 0; i < movie->stream_count; ++i) {
        Stream* stream = &movie->streams[i];
        const uint64_t units =
            stream->sample_size != 0 && stream->type == fourcc("auds") ? stream->bytes / stream->sample_size : stream->chunks;
        stream->length = clamp_to_integer<uint32_t>(static_cast<double>(units) * whole);
    }
}
