#include "container/avi/movie.h"

#include <algorithm>
#include <cstring>

namespace zat::avi {

namespace {

constexpr uint32_t chunk_limit = 4096; // at the file's top level; most are of a gigabyte
constexpr uint32_t stream_header_size = 56;
constexpr uint32_t video_properties_size = 36;
constexpr int64_t byte_rate_at = 8; // in WAVEFORMATEX

// The type of a list or RIFF chunk inside `parent`, also when the size leaves no room for it; 0 for
// other chunks.
uint32_t list_type(Reader* reader, const Chunk& chunk, Span parent) {
    const bool has_type = chunk.id == fourcc("LIST") || chunk.id == fourcc("RIFF");
    return has_type ? read_be32(reader, {chunk.payload.start, parent.end}, 0) : 0;
}

// A size that a recorder never filled in: what it means reaches to the end of its surroundings.
bool is_open(const Chunk& chunk) {
    return chunk.size < list_type_size || chunk.size == UINT32_MAX;
}

Span list_content(const Chunk& list, Span parent) {
    const Span whole = is_open(list) ? Span{list.payload.start, parent.end} : list.payload;
    return sub_span(whole, list_type_size);
}

// The first bytes of a chunk in a buffer of fixed size, zeros where it is shorter.
template <uint32_t N>
void read_fields(Reader* reader, const Chunk& chunk, uint8_t (&fields)[N]) {
    std::memset(fields, 0, N);
    read_some(reader, chunk.payload, 0, fields, N);
}

void read_stream_header(Reader* reader, const Chunk& chunk, Stream* stream) {
    uint8_t fields[stream_header_size];
    read_fields(reader, chunk, fields);
    stream->type = ReadBE32(fields);
    std::memcpy(stream->handler, fields + 4, sizeof stream->handler);
    stream->language = ReadLE16(fields + 14);
    stream->scale = ReadLE32(fields + 20);
    stream->rate = ReadLE32(fields + 24);
    stream->start = ReadLE32(fields + 28);
    stream->length = ReadLE32(fields + 32);
    stream->sample_size = ReadLE32(fields + 44);
}

void read_video_properties(Reader* reader, const Chunk& chunk, Stream* stream) {
    uint8_t fields[video_properties_size];
    read_fields(reader, chunk, fields);
    stream->frame_aspect = ReadLE32(fields + 20);
    stream->fields = ReadLE32(fields + 32);
}

void read_stream_list(Reader* reader, Span space, Stream* stream) {
    Chunk chunk;
    while (next_chunk(reader, &space, &chunk)) {
        switch (chunk.id) {
        case fourcc("strh"):
            read_stream_header(reader, chunk, stream);
            break;
        case fourcc("strf"):
            stream->format = chunk.payload;
            stream->byte_rate = read_le32(reader, chunk.payload, byte_rate_at);
            break;
        case fourcc("strn"):
            stream->name = chunk.payload;
            break;
        case fourcc("indx"):
            stream->index = chunk.payload;
            break;
        case fourcc("vprp"):
            read_video_properties(reader, chunk, stream);
            break;
        default:
            break;
        }
    }
}

void read_odml_list(Reader* reader, Span space, Movie* movie) {
    Chunk chunk;
    while (next_chunk(reader, &space, &chunk)) {
        if (chunk.id == fourcc("dmlh")) {
            movie->total_frames = read_le32(reader, chunk.payload, 0);
        }
    }
}

void read_header_list(Reader* reader, Span space, Movie* movie) {
    Chunk chunk;
    for (Span rest = space; next_chunk(reader, &rest, &chunk);) {
        const uint32_t type = list_type(reader, chunk, space);
        const Span content = sub_span(chunk.payload, list_type_size);
        if (chunk.id == fourcc("avih")) {
            movie->frame_time = read_le32(reader, chunk.payload, 0);
            movie->first_part_frames = read_le32(reader, chunk.payload, 16);
        } else if (type == fourcc("strl") && movie->stream_count < stream_limit) {
            Stream* stream = &movie->streams[movie->stream_count++];
            *stream = {};
            read_stream_list(reader, content, stream);
        } else if (type == fourcc("odml")) {
            movie->has_odml = true;
            read_odml_list(reader, content, movie);
        }
    }
}

// The bytes of media data that a list announces, or those that are there when it does not.
int64_t announced_media(const Chunk& movi, Span content) {
    return is_open(movi) ? size_of(content) : int64_t{movi.size} - list_type_size;
}

void take_movi(const Chunk& list, Span parent, Movie* movie) {
    const Span content = list_content(list, parent);
    if (!movie->has_movi) {
        movie->has_movi = true;
        movie->movi = content;
    }
    movie->movi_bytes += announced_media(list, content);
    if (!is_open(list)) {
        movie->announced_end = std::max(movie->announced_end, list.payload.start + list.size);
    }
}

// The chunks of the first RIFF chunk. Media data that no size ends hides what follows.
void read_first_part(Reader* reader, Span space, Movie* movie) {
    Chunk chunk;
    for (Span rest = space; next_chunk(reader, &rest, &chunk);) {
        const uint32_t type = list_type(reader, chunk, space);
        const Span content = sub_span(chunk.payload, list_type_size);
        if (type == fourcc("hdrl")) {
            read_header_list(reader, content, movie);
        } else if (type == fourcc("INFO")) {
            movie->info = content;
        } else if (type == fourcc("movi")) {
            take_movi(chunk, space, movie);
            if (is_open(chunk)) {
                return;
            }
        } else if (chunk.id == fourcc("idx1")) {
            movie->idx1 = chunk.payload;
        }
    }
}

// A further RIFF chunk begins with its media data.
void read_further_part(Reader* reader, Span space, Movie* movie) {
    Chunk chunk;
    for (Span rest = space; next_chunk(reader, &rest, &chunk);) {
        if (list_type(reader, chunk, space) == fourcc("movi")) {
            take_movi(chunk, space, movie);
            return;
        }
    }
}

// OpenDML has the pictures of all parts in a place of its own; those of the main header count only
// where nothing else tells any.
void settle_length(Movie* movie) {
    for (Stream* stream = movie->streams; stream < movie->streams + movie->stream_count; ++stream) {
        if (is_video(*stream)) {
            stream->length = std::max(stream->length, movie->total_frames);
            if (stream->length == 0) {
                stream->length = movie->first_part_frames;
            }
            return;
        }
    }
}

} // namespace

void read_movie(Reader* reader, Movie* movie) {
    const Span file = whole_file(reader);
    Chunk chunk;
    uint32_t chunks = 0;
    for (Span rest = file; chunks < chunk_limit && next_chunk(reader, &rest, &chunk); ++chunks) {
        if (chunk.id != fourcc("RIFF") && movie->parts != 0) {
            continue;
        }
        if (!is_open(chunk)) {
            movie->announced_end = std::max(movie->announced_end, chunk.payload.start + chunk.size);
        }
        if (movie->parts++ == 0) {
            read_first_part(reader, list_content(chunk, file), movie);
        } else {
            read_further_part(reader, list_content(chunk, file), movie);
        }
        if (is_open(chunk)) {
            break;
        }
    }
    settle_length(movie);
}

double unit_time(const Movie& movie, const Stream& stream) {
    if (stream.scale != 0 && stream.rate != 0) {
        return static_cast<double>(stream.scale) / stream.rate;
    }
    return stream.type == fourcc("auds") ? 0 : movie.frame_time * 1e-6;
}

double declared_time(const Movie& movie, const Stream& stream) {
    return stream.length * unit_time(movie, stream);
}

} // namespace zat::avi
