#include "audio/lossless/dsdiff_file.h"

#include "audio/lossless/lossless_file.h"
#include "common/bytes/bytes.h"
#include "common/text/fourcc.h"
#include "common/text/text_codes.h"

#include <algorithm>
#include <bit>

namespace zat {

namespace {

constexpr LosslessKind dsdiff_kind = {"[DSDIFF]", "DSDIFF", "DSD"};
constexpr LosslessKind packed_kind = {"[DSDIFF]", "DSDIFF", "DST"};

constexpr uint32_t dsdiff_chunk_limit = 4096; // of one level
constexpr uint32_t dsdiff_chunk_header_size = 12;
constexpr int64_t form_header_size = 16; // "FRM8", its size, which is often wrong, "DSD "
constexpr uint32_t channel_limit = 64;

struct DsdiffSpeaker {
    char id[5];
    uint32_t mask;
};

constexpr DsdiffSpeaker dsdiff_speakers[] = {
    {"SLFT", 0x1},
    {"SRGT", 0x2},
    {"MLFT", 0x1},
    {"MRGT", 0x2},
    {"C   ", 0x4},
    {"LFE ", 0x8},
    {"LS  ", 0x200},
    {"RS  ", 0x400},
};

struct DsdiffFile {
    LosslessFile lossless;
    uint32_t channel_mask = 0;
    bool is_packed = false;
    uint32_t packed_frames = 0;
    uint32_t packed_rate = 0; // frames per second
};

struct DsdiffChunk {
    uint32_t id = 0;
    int64_t size = 0; // as it is told
    Span content;     // what the file holds of it
};

using Take = void (*)(const DsdiffChunk& chunk, DsdiffFile* dsdiff);

struct DsdiffRow {
    uint32_t id;
    Take take;
};

// Chunks are padded to an even size, but some writers leave that out.
bool is_chunk_id(Bytes bytes) {
    return bytes.size() == 4 && std::all_of(bytes.begin(), bytes.end(), [](uint8_t c) {
        return c == ' ' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z');
    });
}

int64_t padding(Reader* reader, Span space, int64_t end) {
    if (end % 2 == 0) {
        return 0;
    }
    const bool without = is_chunk_id(read_view(reader, space, end, 4));
    return without && !is_chunk_id(read_view(reader, space, end + 1, 4)) ? 0 : 1;
}

void walk_chunks(DsdiffFile* dsdiff, Span space, std::span<const DsdiffRow> rows) {
    Reader* reader = &dsdiff->lossless.reader;
    int64_t at = 0;
    for (uint32_t i = 0; i < dsdiff_chunk_limit; ++i) {
        const Bytes header = read_view(reader, space, at, dsdiff_chunk_header_size);
        if (header.size() < dsdiff_chunk_header_size) {
            return;
        }
        DsdiffChunk chunk;
        chunk.id = ReadBE32(header.data());
        chunk.size = ReadBE64(&header[4]);
        at += dsdiff_chunk_header_size;
        if (chunk.size < 0) {
            return;
        }
        chunk.content = sub_span(space, at, chunk.size);
        for (const DsdiffRow& row : rows) {
            if (row.id == chunk.id) {
                row.take(chunk, dsdiff);
            }
        }
        if (chunk.size > size_of(space) - at) {
            return;
        }
        // Padding counts from the chunk's start, which is even in files that keep to the rule.
        at += chunk.size + (chunk.size % 2 == 0 ? 0 : padding(reader, space, at + chunk.size));
    }
}

void take_rate(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    set_sample_rate(&dsdiff->lossless, read_be32(&dsdiff->lossless.reader, chunk.content, 0));
}

void take_channels(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    Reader* reader = &dsdiff->lossless.reader;
    uint8_t count[2] = {};
    read_all(reader, chunk.content, 0, count, sizeof count);
    const uint32_t channels = ReadBE16(count);
    set_channels(&dsdiff->lossless, channels);
    for (uint32_t i = 0; i < std::min(channels, channel_limit); ++i) {
        const Bytes id = read_view(reader, chunk.content, 2 + int64_t{i} * 4, 4);
        for (const DsdiffSpeaker& speaker : dsdiff_speakers) {
            if (text_of(id) == speaker.id) {
                dsdiff->channel_mask |= speaker.mask;
            }
        }
    }
}

void take_compression(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    dsdiff->is_packed = read_be32(&dsdiff->lossless.reader, chunk.content, 0) == fourcc("DST ");
}

constexpr DsdiffRow property_rows[] = {
    {fourcc("FS  "), take_rate},
    {fourcc("CHNL"), take_channels},
    {fourcc("CMPR"), take_compression},
};

void take_properties(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    if (read_be32(&dsdiff->lossless.reader, chunk.content, 0) == fourcc("SND ")) {
        walk_chunks(dsdiff, sub_span(chunk.content, 4), property_rows);
    }
}

void take_sound(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    dsdiff->lossless.declared_payload = chunk.size;
    dsdiff->lossless.payload = size_of(chunk.content);
}

// The frame information stands first: their number, and how many make a second.
void take_packed_sound(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    take_sound(chunk, dsdiff);
    dsdiff->is_packed = true;
    uint8_t info[dsdiff_chunk_header_size + 6];
    if (read_all(&dsdiff->lossless.reader, chunk.content, 0, info, sizeof info) &&
        ReadBE32(info) == fourcc("FRTE")) {
        dsdiff->packed_frames = ReadBE32(info + dsdiff_chunk_header_size);
        dsdiff->packed_rate = ReadBE16(info + dsdiff_chunk_header_size + 4);
    }
}

void take_id3v2(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    uint8_t header[id3v2_header_size];
    if (read_all(&dsdiff->lossless.reader, chunk.content, 0, header, sizeof header)) {
        dsdiff->lossless.id3v2 = sub_span(chunk.content, 0, whole_id3v2_size(header));
    }
}

// A text behind its length.
void take_text(const DsdiffChunk& chunk, DsdiffFile* dsdiff, TagText& field) {
    Reader* reader = &dsdiff->lossless.reader;
    const uint32_t length = std::min<uint32_t>(read_be32(reader, chunk.content, 0), 1024);
    TagText value;
    unknown_to_utf8(text_of(read_view(reader, chunk.content, 4, length)), value);
    add_tag_value(field, value);
}

void take_artist(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    take_text(chunk, dsdiff, dsdiff->lossless.own_texts.artist);
}

void take_title(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    take_text(chunk, dsdiff, dsdiff->lossless.own_texts.title);
}

constexpr DsdiffRow edited_rows[] = {
    {fourcc("DIAR"), take_artist},
    {fourcc("DITI"), take_title},
};

void take_edited_information(const DsdiffChunk& chunk, DsdiffFile* dsdiff) {
    walk_chunks(dsdiff, chunk.content, edited_rows);
}

constexpr DsdiffRow form_rows[] = {
    {fourcc("PROP"), take_properties},
    {fourcc("DSD "), take_sound},
    {fourcc("DST "), take_packed_sound},
    {fourcc("DIIN"), take_edited_information},
    {fourcc("ID3 "), take_id3v2},
};

void set_length(DsdiffFile* dsdiff) {
    LosslessFile* lossless = &dsdiff->lossless;
    const uint32_t channels = lossless->facts.channels;
    const uint32_t rate = lossless->facts.sample_rate;
    if (!dsdiff->is_packed) {
        lossless->constant_rate = true;
        const auto bytes = static_cast<uint64_t>(std::max<int64_t>(lossless->declared_payload, 0));
        set_samples(lossless, channels == 0 || bytes > UINT64_MAX / 8 ? 0 : bytes * 8 / channels);
    } else if (dsdiff->packed_rate != 0) {
        set_samples(lossless, uint64_t{dsdiff->packed_frames} * rate / dsdiff->packed_rate);
    } else {
        lossless->damaged = true;
    }
}

void describe_stream(DsdiffFile* dsdiff) {
    LosslessFile* lossless = &dsdiff->lossless;
    lossless->is_dsd = true;
    lossless->damaged = !find_stream_start(lossless, "FRM8");
    if (lossless->damaged) {
        return;
    }
    walk_chunks(dsdiff, sub_span(lossless->tags.stream, form_header_size), form_rows);
    const uint32_t rate = lossless->facts.sample_rate;
    lossless->damaged = lossless->damaged || rate == 0 || lossless->facts.channels == 0;
    lossless->facts.bit_depth = 1;
    if (static_cast<uint32_t>(std::popcount(dsdiff->channel_mask)) == lossless->facts.channels) {
        set_channel_mask(lossless, dsdiff->channel_mask);
    }
    if (dsdiff->is_packed) {
        add_name_word(lossless, "DST");
    }
    char name[16];
    dsd_name(rate, name);
    add_name_word(lossless, name);
    set_length(dsdiff);
}

} // namespace

int AnalyzeDsdiffFile(FileRecord* file, const Output& out) {
    DsdiffFile dsdiff;
    open_lossless_file(&dsdiff.lossless, file);
    dsdiff.lossless.facts.flags |= ZAT_FLAG_LOSSLESS;
    describe_stream(&dsdiff);
    write_lossless_file(&dsdiff.lossless, dsdiff.is_packed ? packed_kind : dsdiff_kind, out);
    return 0;
}

} // namespace zat
