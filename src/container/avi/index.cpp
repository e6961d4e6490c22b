#include "container/avi/index.h"

#include <algorithm>

namespace zat::avi {

namespace {

constexpr uint32_t idx1_entry_size = 16;
constexpr uint32_t index_head_size = 24; // of both kinds of OpenDML index
constexpr uint32_t super_entry_size = 16;
constexpr uint32_t super_entry_limit = 4096; // one for each gigabyte or so
constexpr int64_t chunk_header_size = 8;
constexpr uint32_t chunk_size_mask = 0x7FFFFFFF; // the top bit marks what is no key frame
constexpr uint32_t view_size = BlockReader::jump_size;

enum IndexType : uint8_t { index_of_indexes = 0, index_of_chunks = 1 };

struct IndexHead {
    uint32_t entry_size = 0; // bytes
    uint8_t type = 0;
    uint32_t entries = 0;
    int64_t base = 0; // that the entries of an index of chunks count from
};

bool read_head(Reader* reader, Span index, IndexHead* head) {
    const Bytes bytes = read_view(reader, index, 0, index_head_size);
    if (bytes.size() < index_head_size) {
        return false;
    }
    head->entry_size = uint32_t{ReadLE16(bytes.data())} * 4;
    head->type = bytes[3];
    head->entries = ReadLE32(bytes.data() + 4);
    head->base = ReadLE64(bytes.data() + 12);
    return head->entry_size >= 8;
}

// The part of an index that its entries fill.
Span entries_of(Span index, const IndexHead& head) {
    return sub_span(index, index_head_size, int64_t{head.entries} * head.entry_size);
}

Span super_entries_of(Span index, const IndexHead& head) {
    return sub_span(index, index_head_size,
        int64_t{std::min(head.entries, super_entry_limit)} * super_entry_size);
}

// Calls take(entry) for every entry of a table; the table is read in as large pieces as there are.
template <class Take>
void for_each_entry(Reader* reader, Span table, uint32_t entry_size, Take take) {
    const uint32_t step = view_size / entry_size * entry_size;
    for (int64_t offset = 0; offset < size_of(table) && step != 0; offset += step) {
        const Bytes view = read_view(reader, table, offset, step);
        for (size_t at = 0; at + entry_size <= view.size(); at += entry_size) {
            take(view.data() + at);
        }
        if (view.size() < step) {
            return;
        }
    }
}

// AVISTDINDEX, of which only the offset and the size are of interest.
void count_chunk_index(Reader* reader, Span index, Stream* stream) {
    IndexHead head;
    if (!read_head(reader, index, &head) || head.type != index_of_chunks) {
        return;
    }
    const Span file = whole_file(reader);
    for_each_entry(reader, entries_of(index, head), head.entry_size, [&](const uint8_t* entry) {
        const uint32_t size = ReadLE32(entry + 4) & chunk_size_mask;
        if (size != 0 && size_of(stream->first_data) == 0 && head.base >= 0 &&
            head.base < file.end) {
            stream->first_data = sub_span(file, head.base + ReadLE32(entry), size);
        }
        count_chunk(stream, size);
    });
}

// The index chunk that an entry of AVISUPERINDEX points at, without its header.
Span chunk_index_at(Reader* reader, const uint8_t* entry) {
    const Span file = whole_file(reader);
    const int64_t offset = ReadLE64(entry);
    return offset < 0 || offset >= file.end ? Span{}
                                            : sub_span(file, offset + chunk_header_size,
                                                  int64_t{ReadLE32(entry + 8)} - chunk_header_size);
}

// Bytes of index that a stream's OpenDML index consists of.
int64_t opendml_cost(Reader* reader, const Stream& stream) {
    IndexHead head;
    if (!read_head(reader, stream.index, &head)) {
        return 0;
    }
    if (head.type != index_of_indexes) {
        return size_of(stream.index);
    }
    int64_t cost = 0;
    for_each_entry(reader, super_entries_of(stream.index, head), super_entry_size,
        [&](const uint8_t* entry) { cost += size_of(chunk_index_at(reader, entry)); });
    return cost;
}

void count_opendml(Reader* reader, Stream* stream) {
    IndexHead head;
    if (!read_head(reader, stream->index, &head)) {
        return;
    }
    if (head.type == index_of_chunks) {
        count_chunk_index(reader, stream->index, stream);
        return;
    }
    // Each entry is read anew: the indexes it points at take the reader elsewhere.
    const Span entries = super_entries_of(stream->index, head);
    uint8_t entry[super_entry_size];
    for (int64_t at = 0; read_all(reader, entries, at, entry, sizeof entry); at += sizeof entry) {
        count_chunk_index(reader, chunk_index_at(reader, entry), stream);
    }
}

// The entries' offsets count from the "movi" of the list, in some files from the file's start.
int64_t idx1_base(Reader* reader, const Movie& movie, const uint8_t* entry) {
    const uint32_t id = ReadBE32(entry);
    const uint32_t offset = ReadLE32(entry + 8);
    const int64_t list = movie.movi.start - 4;
    return read_be32(reader, whole_file(reader), list + offset) != id &&
                   read_be32(reader, whole_file(reader), offset) == id
               ? 0
               : list;
}

void count_chunks(Stream* stream, uint32_t chunks, uint32_t empty, uint64_t bytes) {
    stream->chunks += chunks - (stream->type == fourcc("auds") ? empty : 0);
    stream->bytes += bytes;
}

// Sums over index entries of one ID. An index has few IDs, which take turns, so the stream of an ID
// is looked up when its tally begins, and not for each of hundreds of thousands of entries.
struct Tally {
    uint32_t id = 0;
    uint32_t chunks = 0;
    uint32_t empty = 0; // of the chunks
    uint64_t bytes = 0;
    Stream* unlocated = nullptr; // the stream, while its first data may be unknown
};

// Slots by the last digit of the stream's number. Consecutive entries of one stream go to different
// sets: adding to a sum must wait until the addition before it has been stored.
struct Tallies {
    static constexpr uint32_t sets = 4;
    static constexpr uint32_t slots = 16;

    Tally of[slots][sets];
    uint32_t entries = 0;
};

void end_tally(Movie* movie, const Tally& tally) {
    const uint32_t number = stream_of_chunk(*movie, tally.id);
    if (number != movie->stream_count) {
        count_chunks(&movie->streams[number], tally.chunks, tally.empty, tally.bytes);
    }
}

Tally* tally_of(Movie* movie, const uint8_t* entry, Tallies* tallies) {
    const uint32_t id = ReadBE32(entry);
    const uint32_t set = tallies->entries++ / 2 % Tallies::sets;
    Tally* tally = &tallies->of[entry[1] % Tallies::slots][set];
    if (tally->id != id) {
        end_tally(movie, *tally);
        const uint32_t number = stream_of_chunk(*movie, id);
        *tally = {.id = id};
        tally->unlocated = number == movie->stream_count ? nullptr : &movie->streams[number];
    }
    return tally;
}

void count_idx1(Reader* reader, Movie* movie) {
    uint8_t first[idx1_entry_size];
    if (!read_all(reader, movie->idx1, 0, first, sizeof first)) {
        return;
    }
    const int64_t base = idx1_base(reader, *movie, first);
    const Span file = whole_file(reader);
    Tallies tallies;
    for_each_entry(reader, movie->idx1, idx1_entry_size, [&](const uint8_t* entry) {
        Tally* tally = tally_of(movie, entry, &tallies);
        const uint32_t size = ReadLE32(entry + 12);
        ++tally->chunks;
        tally->empty += size == 0 ? 1 : 0;
        tally->bytes += size;
        if (size != 0 && tally->unlocated != nullptr) {
            Span* data = &tally->unlocated->first_data;
            if (size_of(*data) == 0) {
                *data = sub_span(file, base + ReadLE32(entry + 8) + chunk_header_size, size);
            }
            tally->unlocated = size_of(*data) == 0 ? tally->unlocated : nullptr;
        }
    });
    for (const auto& slot : tallies.of) {
        for (const Tally& tally : slot) {
            end_tally(movie, tally);
        }
    }
}

// False when no stream has such an index, or all together cost too much.
bool count_all_opendml(Reader* reader, Movie* movie) {
    int64_t cost = 0;
    for (uint32_t i = 0; i < movie->stream_count; ++i) {
        cost += opendml_cost(reader, movie->streams[i]);
    }
    if (cost > index_limit) {
        return false;
    }
    bool counted = false;
    for (uint32_t i = 0; i < movie->stream_count; ++i) {
        count_opendml(reader, &movie->streams[i]);
        counted = counted || movie->streams[i].chunks != 0;
    }
    return counted;
}

} // namespace

uint32_t stream_of_chunk(const Movie& movie, uint32_t id) {
    const uint32_t tens = (id >> 24) - '0';
    const uint32_t ones = (id >> 16 & 0xFF) - '0';
    const bool is_palette = (id & 0xFFFF) == (fourcc("00pc") & 0xFFFF);
    return tens > 9 || ones > 9 || is_palette ? movie.stream_count
                                              : std::min(tens * 10 + ones, movie.stream_count);
}

void count_chunk(Stream* stream, uint32_t bytes) {
    count_chunks(stream, 1, bytes == 0 ? 1 : 0, bytes);
}

bool has_index(const Movie& movie) {
    return size_of(movie.idx1) >= idx1_entry_size ||
           std::any_of(movie.streams, movie.streams + movie.stream_count,
               [](const Stream& stream) { return size_of(stream.index) > index_head_size; });
}

bool count_by_index(Reader* reader, Movie* movie) {
    // A single part is listed by either kind, and idx1 lies in one place.
    const bool has_idx1 = size_of(movie->idx1) >= idx1_entry_size;
    if ((movie->parts > 1 || !has_idx1) && count_all_opendml(reader, movie)) {
        return true;
    }
    if (!has_idx1 || size_of(movie->idx1) > index_limit) {
        return false;
    }
    count_idx1(reader, movie);
    return true;
}

} // namespace zat::avi
