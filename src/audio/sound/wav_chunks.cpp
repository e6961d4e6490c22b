#include "audio/sound/wav_chunks.h"

#include "audio/sound/wav_chunk_forms.h"
#include "common/file/riff.h"
#include "common/text/fourcc.h"

#include <algorithm>
#include <limits>

namespace zat {

namespace {

// What the walk locates; the chunks are read behind it, so that a million of them cost no more than
// their headers.
struct Walk {
    Reader* reader;
    WavChunks* chunks;
    WaveHead head = {};
    Span fmt = {};
    Span description = {};
};

void take_fmt(Walk* walk, const WaveChunk& chunk) {
    walk->chunks->fmt_size =
        static_cast<uint32_t>(std::min<uint64_t>(chunk.size, std::numeric_limits<uint32_t>::max()));
    walk->fmt = chunk.payload;
}

void take_data(Walk* walk, const WaveChunk& chunk) {
    walk->chunks->data_size = chunk.size;
    walk->chunks->data_position = chunk.payload.start;
}

void take_description(Walk* walk, const WaveChunk& chunk) {
    if (size_of(walk->description) == 0 &&
        byte_at(read_view(walk->reader, chunk.payload, 0, 1), 0) != 0) {
        walk->description = chunk.payload;
    }
}

void take_broadcast(Walk* walk, const WaveChunk& /*chunk*/) {
    walk->chunks->broadcast = true;
}

void take_fact(Walk* walk, const WaveChunk& chunk) {
    walk->chunks->samples = read_fact_samples(walk->reader, walk->head, chunk.payload);
}

void take_list(Walk* walk, const WaveChunk& chunk) {
    if (read_be32(walk->reader, chunk.payload, 0) == fourcc("INFO")) {
        walk->chunks->info_list = sub_span(chunk.payload, list_type_size);
    }
}

void take_id3v2(Walk* walk, const WaveChunk& chunk) {
    walk->chunks->id3v2 = chunk.payload;
}

struct WaveHandler {
    uint32_t id;
    void (*take)(Walk* walk, const WaveChunk& chunk);
};

constexpr WaveHandler wave_handlers[] = {
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
    const int64_t alignment = walk->head.alignment;
    int64_t position = walk->head.first_chunk;
    bool follows_zeros = false;
    while (position < file.end && position < walk->head.walk_limit) {
        WaveChunk chunk;
        if (!read_wave_chunk(walk->reader, walk->head, sub_span(file, position), &chunk)) {
            return 1;
        }
        add_to_chain(
            &walk->chunks->chain, {.id = chunk.id,
                                      .follows_zeros = follows_zeros,
                                      .remark = chunk.id == fourcc("LIST") ? "(INFOTAG)" : ""});
        for (const WaveHandler& handler : wave_handlers) {
            if (handler.id == chunk.id) {
                handler.take(walk, chunk);
            }
        }
        // Writers differ on the pad byte behind a chunk of odd size; passing over zeros serves all.
        const int64_t end = chunk.payload.start + static_cast<int64_t>(chunk.size);
        position = (end + alignment - 1) / alignment * alignment;
        const int64_t zeros = count_zeros(walk->reader, file, position);
        follows_zeros = position != end || zeros != 0;
        position = zeros < 0 ? std::max(position, file.end) : position + zeros;
    }
    walk->chunks->beyond_2gb = position < file.end;
    return 0;
}

} // namespace

int WalkWaveChunks(Reader* reader, WavChunks* chunks) {
    *chunks = {};
    Walk walk{.reader = reader, .chunks = chunks};
    if (!read_wave_head(reader, &walk.head)) {
        return 0;
    }
    chunks->form = walk.head.form;
    const int result = walk_chunks(&walk);
    reader_allow(reader, walk_allowance);
    chunks->format = read_wave_format(read_view(reader, walk.fmt, 0, wave_extensible_size));
    read_some(reader, walk.description, 0, reinterpret_cast<uint8_t*>(chunks->description),
        sizeof chunks->description);
    return result;
}

} // namespace zat
