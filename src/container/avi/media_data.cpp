#include "container/avi/media_data.h"

#include "container/avi/index.h"

namespace zat::avi {

namespace {

constexpr uint32_t search_limit = 256; // chunks
constexpr int64_t list_header_size = 12;
constexpr uint32_t misplaced_bytes = 4; // by which a chunk may be padded wrongly

bool is_printable(uint32_t id) {
    for (int shift = 0; shift < 32; shift += 8) {
        const uint32_t c = id >> shift & 0xFF;
        if (c < 0x20 || c > 0x7E) {
            return false;
        }
    }
    return true;
}

// The next chunk of media data; those of "rec " lists stand in line with the others. Some writers
// pad chunks wrongly: a few bytes that are no code are stepped over.
bool next_media_chunk(Reader* reader, Span* space, Chunk* chunk) {
    for (uint32_t skipped = 0; skipped <= misplaced_bytes;) {
        if (!read_chunk(reader, *space, chunk)) {
            return false;
        }
        if (chunk->id == fourcc("LIST")) {
            *space = sub_span(*space, list_header_size);
        } else if (is_printable(chunk->id)) {
            return next_chunk(reader, space, chunk);
        } else {
            *space = sub_span(*space, 1);
            ++skipped;
        }
    }
    return false;
}

bool wants_data(const Stream& stream, bool counted) {
    return size_of(stream.first_data) == 0 && (!counted || stream.bytes != 0);
}

uint32_t count_wanted(const Movie& movie, bool counted) {
    uint32_t wanted = 0;
    for (uint32_t i = 0; i < movie.stream_count; ++i) {
        wanted += wants_data(movie.streams[i], counted) ? 1 : 0;
    }
    return wanted;
}

} // namespace

void find_first_data(Reader* reader, bool counted, Movie* movie) {
    uint32_t wanted = count_wanted(*movie, counted);
    Span space = movie->movi;
    Chunk chunk;
    for (uint32_t i = 0; i < search_limit && wanted != 0; ++i) {
        if (!next_media_chunk(reader, &space, &chunk)) {
            return;
        }
        const uint32_t number = stream_of_chunk(*movie, chunk.id);
        if (number == movie->stream_count || chunk.size == 0) {
            continue;
        }
        Stream* stream = &movie->streams[number];
        if (wants_data(*stream, counted)) {
            stream->first_data = chunk.payload;
            --wanted;
        }
    }
}

MediaWalk count_media(Reader* reader, uint32_t chunk_limit, Movie* movie) {
    MediaWalk walk;
    Span space = movie->movi;
    Chunk chunk;
    for (uint32_t i = 0; i < chunk_limit; ++i) {
        if (!next_media_chunk(reader, &space, &chunk)) {
            walk.complete = !reader->limited;
            break;
        }
        const uint32_t number = stream_of_chunk(*movie, chunk.id);
        if (number != movie->stream_count) {
            Stream* stream = &movie->streams[number];
            count_chunk(stream, chunk.size);
            if (chunk.size != 0 && size_of(stream->first_data) == 0) {
                stream->first_data = chunk.payload;
            }
        }
    }
    walk.bytes = space.start - movie->movi.start;
    return walk;
}

} // namespace zat::avi
