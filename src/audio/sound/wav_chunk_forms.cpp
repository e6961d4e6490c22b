#include "audio/sound/wav_chunk_forms.h"

#include "common/file/riff.h"
#include "common/text/text.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace zat {

namespace {

constexpr int64_t riff_chunk_header_size = 8;
constexpr uint32_t size_elsewhere = 0xFFFFFFFF; // a size that "ds64" tells

// No RIFF chunk that begins at or behind it is looked at: positions there are more than RIFF's
// writers with signed sizes can say.
constexpr int64_t riff_walk_limit = 0x7FFFFFFC;
constexpr int64_t no_limit = std::numeric_limits<int64_t>::max();

// Bytes: what writers put in place of a size that they do not know is far above.
constexpr int64_t largest_size = int64_t{1} << 48;

// "ds64" (EBU Tech 3306, 3.5): the sizes of the file and of "data", the samples, and a table of
// other chunks' sizes.
constexpr int64_t ds64_data_at = 8;
constexpr int64_t ds64_samples_at = 16;
constexpr int64_t ds64_count_at = 24;
constexpr int64_t ds64_table_at = 28;
constexpr int64_t ds64_entry_size = 12; // id, size
constexpr uint32_t ds64_entry_limit = 64;

// Wave64 has GUIDs, most of them a chunk id with the same twelve bytes behind it, and sizes of 64
// bits that count the header. Chunks begin at multiples of eight bytes.
constexpr int64_t wave64_chunk_header_size = 24;
constexpr int64_t wave64_first_chunk = 40; // "riff", its size, "wave"
constexpr int64_t wave64_alignment = 8;
constexpr uint8_t wave64_riff[guid_size] = {
    'r', 'i', 'f', 'f', 0x2E, 0x91, 0xCF, 0x11, 0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0, 0};
constexpr uint8_t wave64_wave[guid_size] = {
    'w', 'a', 'v', 'e', 0xF3, 0xAC, 0xD3, 0x11, 0x8C, 0xD1, 0, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A};

struct RiffRow {
    uint32_t id;
    WaveForm form;
    int64_t walk_limit;
};

constexpr RiffRow riff_rows[] = {
    {fourcc("RIFF"), WaveForm::riff, riff_walk_limit},
    {fourcc("RF64"), WaveForm::rf64, no_limit},
    {fourcc("BW64"), WaveForm::bw64, no_limit},
};

// Eight bytes of a span, or `missing` where it ends before.
uint64_t read_le64(Reader* reader, Span span, int64_t offset, uint64_t missing) {
    uint8_t bytes[8];
    return read_all(reader, span, offset, bytes, sizeof bytes)
               ? static_cast<uint64_t>(ReadLE64(bytes))
               : missing;
}

// The size that "ds64" tells; 0 when it does not.
uint64_t large_size(Reader* reader, Span ds64, uint32_t id) {
    if (id == fourcc("data")) {
        return read_le64(reader, ds64, ds64_data_at, 0);
    }
    const uint32_t count = std::min(read_le32(reader, ds64, ds64_count_at), ds64_entry_limit);
    for (uint32_t i = 0; i < count; ++i) {
        const int64_t at = ds64_table_at + i * ds64_entry_size;
        if (read_be32(reader, ds64, at) == id) {
            return read_le64(reader, ds64, at + 4, 0);
        }
    }
    return 0;
}

// In a file that was never finished a chunk takes up what there is.
void set_large_size(uint64_t size, Span space, int64_t header_size, WaveChunk* chunk) {
    const bool is_known = size != 0 && size <= uint64_t{largest_size};
    chunk->payload = sub_span(space, header_size, is_known ? static_cast<int64_t>(size) : no_limit);
    chunk->size = is_known ? size : static_cast<uint64_t>(size_of(chunk->payload));
}

bool read_riff_chunk(Reader* reader, const WaveHead& head, Span space, WaveChunk* chunk) {
    Chunk riff;
    if (!read_chunk(reader, space, &riff)) {
        return false;
    }
    *chunk = {riff.id, riff.size, riff.payload};
    if (head.form == WaveForm::riff || riff.size != size_elsewhere) {
        return true;
    }
    set_large_size(
        large_size(reader, head.large_sizes, riff.id), space, riff_chunk_header_size, chunk);
    return true;
}

bool read_wave64_chunk(Reader* reader, Span space, WaveChunk* chunk) {
    const Bytes header = read_view(reader, space, 0, wave64_chunk_header_size);
    if (header.size() < wave64_chunk_header_size) {
        return false;
    }
    const int64_t whole = ReadLE64(header.data() + guid_size);
    if (whole < wave64_chunk_header_size) {
        return false;
    }
    const auto is_letter = [](uint8_t c) { return IsNotPrintable(static_cast<char>(c)) == 0; };
    const bool has_name = std::all_of(header.begin(), header.begin() + 4, is_letter);
    *chunk = {};
    chunk->id = has_name ? ReadBE32(header.data()) : fourcc("GUID");
    if (whole > wave64_chunk_header_size) {
        const auto size = static_cast<uint64_t>(whole - wave64_chunk_header_size);
        set_large_size(size, space, wave64_chunk_header_size, chunk);
    } else {
        chunk->payload = sub_span(space, wave64_chunk_header_size, 0);
    }
    return true;
}

} // namespace

bool read_wave_head(Reader* reader, WaveHead* head) {
    const Bytes start = read_view(reader, whole_file(reader), 0, wave64_first_chunk);
    if (start.size() == wave64_first_chunk &&
        std::memcmp(start.data(), wave64_riff, guid_size) == 0 &&
        std::memcmp(start.data() + 24, wave64_wave, guid_size) == 0) {
        *head = {WaveForm::wave64, wave64_first_chunk, no_limit, wave64_alignment, {}};
        return true;
    }
    for (const RiffRow& row : riff_rows) {
        if (has_at(start, 8, "WAVE") && ReadBE32(start.data()) == row.id) {
            *head = {row.form, riff_header_size, row.walk_limit, 1, {}};
            Chunk first;
            if (row.form != WaveForm::riff &&
                read_chunk(reader, sub_span(whole_file(reader), riff_header_size), &first) &&
                first.id == fourcc("ds64")) {
                head->large_sizes = first.payload;
            }
            return true;
        }
    }
    return false;
}

bool read_wave_chunk(Reader* reader, const WaveHead& head, Span space, WaveChunk* chunk) {
    return head.form == WaveForm::wave64 ? read_wave64_chunk(reader, space, chunk)
                                         : read_riff_chunk(reader, head, space, chunk);
}

uint64_t read_fact_samples(Reader* reader, const WaveHead& head, Span fact) {
    const uint32_t samples = read_le32(reader, fact, 0);
    if (head.form == WaveForm::wave64) {
        return read_le64(reader, fact, 0, samples);
    }
    return head.form != WaveForm::riff && samples == size_elsewhere
               ? read_le64(reader, head.large_sizes, ds64_samples_at, 0)
               : samples;
}

} // namespace zat
