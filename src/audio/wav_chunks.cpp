#include "audio/wav_chunks.h"

#include "common/riff.h"
#include "common/text.h"

#include <algorithm>
#include <iterator>

namespace zat {

namespace {

// No chunk that begins at or behind it is looked at: positions there are more than RIFF's writers
// with signed sizes can say.
constexpr int64_t walk_limit = 0x7FFFFFFC;

// What the walk locates; the chunks are read behind it, so that a million of them cost no more than
// their headers.
struct Walk {
    Reader* reader;
    WavChunks* chunks;
    Span fmt = {};
    Span description = {};
    bool chain_is_full = false;
};

void add_to_chain(Walk* walk, const Chunk& chunk, bool follows_zeros) {
    if (walk->chain_is_full) {
        return;
    }
    char id[5] = {};
    for (int i = 0; i < 4; ++i) {
        id[i] = static_cast<char>(chunk.id >> (24 - 8 * i));
    }
    char chain[2 * wav_chain_size];
    const size_t length = format_text(chain, sizeof chain, "%s%s[%s%s]", walk->chunks->chain,
        follows_zeros ? "+" : "", id, chunk.id == fourcc("LIST") ? "(INFOTAG)" : "");
    walk->chain_is_full = length >= wav_chain_size;
    copy_text(walk->chunks->chain, chain);
}

void take_fmt(Walk* walk, const Chunk& chunk) {
    walk->chunks->fmt_size = chunk.size;
    walk->fmt = chunk.payload;
}

void take_data(Walk* walk, const Chunk& chunk) {
    walk->chunks->data_size = chunk.size;
    walk->chunks->data_position = chunk.payload.start;
}

void take_description(Walk* walk, const Chunk& chunk) {
    if (size_of(walk->description) == 0 &&
        byte_at(read_view(walk->reader, chunk.payload, 0, 1), 0) != 0) {
        walk->description = chunk.payload;
    }
}

void take_broadcast(Walk* walk, const Chunk& /*chunk*/) {
    walk->chunks->broadcast = true;
}

void take_fact(Walk* walk, const Chunk& chunk) {
    walk->chunks->samples = read_le32(walk->reader, chunk.payload, 0);
}

void take_list(Walk* walk, const Chunk& chunk) {
    constexpr int64_t list_type_size = 4;
    if (read_be32(walk->reader, chunk.payload, 0) == fourcc("INFO")) {
        walk->chunks->info_list = sub_span(chunk.payload, list_type_size);
    }
}

void take_id3v2(Walk* walk, const Chunk& chunk) {
    walk->chunks->id3v2 = chunk.payload;
}

struct Handler {
    uint32_t id;
    void (*take)(Walk* walk, const Chunk& chunk);
};

constexpr Handler handlers[] = {
    {fourcc("fmt "), take_fmt},
    {fourcc("data"), take_data},
    {fourcc("bext"), take_description},
    {fourcc("bext"), take_broadcast},
    {fourcc("fact"), take_description},
    {fourcc("fact"), take_fact},
    {fourcc("LIST"), take_list},
    {fourcc("id3 "), take_id3v2},
    {fourcc("ID3 "), take_id3v2},
};

int walk_chunks(Walk* walk) {
    const Span file = whole_file(walk->reader);
    int64_t position = riff_header_size;
    int64_t zeros = 0;
    while (position < file.end && position < walk_limit) {
        Chunk chunk;
        if (!read_chunk(walk->reader, sub_span(file, position), &chunk)) {
            return 1;
        }
        add_to_chain(walk, chunk, zeros != 0);
        for (const Handler& handler : handlers) {
            if (handler.id == chunk.id) {
                handler.take(walk, chunk);
            }
        }
        // Writers differ on the pad byte behind a chunk of odd size; passing over zeros serves all.
        position = chunk.payload.start + chunk.size;
        zeros = count_zeros(walk->reader, file, position);
        position = zeros < 0 ? std::max(position, file.end) : position + zeros;
    }
    walk->chunks->beyond_2gb = position < file.end;
    return 0;
}

} // namespace

int WalkWaveChunks(Reader* reader, WavChunks* chunks) {
    *chunks = {};
    const Bytes head = read_view(reader, whole_file(reader), 0, riff_header_size);
    if (!has_at(head, 0, "RIFF") || !has_at(head, 8, "WAVE")) {
        return 0;
    }
    Walk walk{.reader = reader, .chunks = chunks};
    const int result = walk_chunks(&walk);
    reader_allow(reader, walk_allowance);
    chunks->format = read_wave_format(read_view(reader, walk.fmt, 0, wave_extensible_size));
    read_some(reader, walk.description, 0, reinterpret_cast<uint8_t*>(chunks->description),
        sizeof chunks->description);
    return result;
}

} // namespace zat
