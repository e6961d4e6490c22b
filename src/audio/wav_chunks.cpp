#include "audio/wav_chunks.h"

#include "common/bytes.h"
#include "common/text.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// No chunk that begins at or behind it is looked at: positions there are more than RIFF's writers
// with signed sizes can say.
constexpr int64_t walk_limit = 0x7FFFFFFC;

constexpr uint32_t chunk_header_size = 8;

// The bytes of a "fmt " chunk that matter: WAVEFORMATEXTENSIBLE.
constexpr uint32_t fmt_record_size = 40;
constexpr uint32_t plain_fmt_size = 16;

struct Walk {
    BlockReader* reader;
    WavFormatInfo* info;
    uint8_t fmt[fmt_record_size] = {}; // of the last "fmt " chunk, zeros where that ended
    bool chain_is_full = false;
};

struct Chunk {
    const uint8_t* id;
    int64_t payload; // file position
    uint32_t size;   // bytes, as announced
};

void add_to_chain(Walk* walk, const uint8_t* id, bool follows_zeros) {
    if (walk->chain_is_full) {
        return;
    }
    char text[5] = {};
    std::memcpy(text, id, 4);
    char chain[2 * wav_chain_size];
    const size_t length = format_text(chain, sizeof chain, "%s%s[%s%s]", walk->info->chunk_chain,
        follows_zeros ? "+" : "", text, starts_with(id, "LIST") ? "(INFOTAG)" : "");
    walk->chain_is_full = length >= wav_chain_size;
    copy_text(walk->info->chunk_chain, chain);
}

void take_fmt(Walk* walk, const Chunk& chunk) {
    walk->info->fmt_size = chunk.size;
    std::memset(walk->fmt, 0, sizeof walk->fmt);
    block_read(walk->reader, chunk.payload, walk->fmt, std::min(chunk.size, fmt_record_size));
}

void take_data(Walk* walk, const Chunk& chunk) {
    walk->info->data_size = chunk.size;
    walk->info->data_position = static_cast<uint32_t>(chunk.payload);
}

void take_description(Walk* walk, const Chunk& chunk) {
    char* text = walk->info->description;
    constexpr uint32_t room = sizeof walk->info->description;
    if (text[0] == '\0') {
        std::memset(text, 0, room);
        block_read(walk->reader, chunk.payload, text, std::min(chunk.size, room));
    }
}

struct Handler {
    char id[5];
    void (*take)(Walk* walk, const Chunk& chunk);
};

constexpr Handler handlers[] = {
    {"fmt ", take_fmt},
    {"data", take_data},
    {"bext", take_description},
    {"fact", take_description},
};

int walk_chunks(Walk* walk) {
    const int64_t file_size = walk->reader->file->size;
    int64_t position = 12;
    int64_t zeros = 0;
    while (position < file_size && position < walk_limit) {
        uint8_t header[chunk_header_size];
        if (block_read(walk->reader, position, header, sizeof header) < sizeof header) {
            return 1;
        }
        const Chunk chunk = {header, position + chunk_header_size, ReadLE32(header + 4)};
        add_to_chain(walk, chunk.id, zeros != 0);
        for (const Handler& handler : handlers) {
            if (std::memcmp(handler.id, chunk.id, 4) == 0) {
                handler.take(walk, chunk);
            }
        }
        // Writers differ on the pad byte behind a chunk of odd size; passing over zeros serves all.
        position = chunk.payload + chunk.size;
        zeros = block_count_zeros(walk->reader, position);
        position = zeros < 0 ? std::max(position, file_size) : position + zeros;
    }
    walk->info->beyond_2gb = position < file_size;
    return 0;
}

void decode_fmt(const uint8_t* fmt, WavFormatInfo* info) {
    info->format_tag = ReadLE16(fmt);
    info->channels = ReadLE16(fmt + 2);
    info->sample_rate = ReadLE32(fmt + 4);
    info->byte_rate = ReadLE32(fmt + 8);
    info->block_align = ReadLE16(fmt + 12);
    info->bits_per_sample = ReadLE16(fmt + 14);
    if (info->fmt_size <= plain_fmt_size) {
        return;
    }
    const uint16_t extension_size = ReadLE16(fmt + 16);
    if (info->format_tag == wav_tag_pcm && extension_size != 0) {
        info->is_extended_pcm = true;
        info->valid_bits = ReadLE16(fmt + 18);
        info->channel_mask = ReadLE32(fmt + 20);
        info->sub_format = ReadLE32(fmt + 24);
        speakers_of_mask(info->channel_mask, info->speakers);
    } else if (info->format_tag == wav_tag_extensible) {
        guid_text(fmt + 24, info->guid);
        speakers_of_count(info->channels, info->speakers);
    }
}

} // namespace

int WalkWaveChunks(BlockReader* reader, WavFormatInfo* info) {
    *info = {};
    uint8_t head[16] = {};
    block_read(reader, 0, head, sizeof head);
    if (!starts_with(head, "RIFF") || !starts_with(head + 8, "WAVE")) {
        info->status = -1;
        return 0;
    }
    info->riff_size = ReadLE32(head + 4);
    Walk walk{reader, info};
    const int result = walk_chunks(&walk);
    // Decoded once, however many "fmt " chunks there are: each replaces the one before.
    decode_fmt(walk.fmt, info);
    return result;
}

} // namespace zat
