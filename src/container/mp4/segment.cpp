#include "container/mp4/segment.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zat::mp4 {

namespace {

constexpr uint32_t reference_size = 12; // a reference of an index

// The entry of a stream, new if need be; null when there is no room.
IndexedStream* indexed_stream(Movie* movie, uint32_t id) {
    IndexedStream* const end = movie->indexed + movie->indexed_count;
    IndexedStream* const found = std::find_if(
        movie->indexed, end, [id](const IndexedStream& stream) { return stream.id == id; });
    if (found != end) {
        return found;
    }
    if (movie->indexed_count == std::ssize(movie->indexed)) {
        return nullptr;
    }
    ++movie->indexed_count;
    *end = {.id = id};
    return end;
}

// Units of media that the index refers to. What it refers to by further indexes, these tell.
uint64_t sum_durations(Reader* reader, Span entries, uint32_t count) {
    constexpr uint32_t block_entries = 256;
    uint64_t sum = 0;
    int64_t at = 0;
    while (count != 0) {
        const uint32_t wanted = std::min(count, block_entries);
        const Bytes block = read_view(reader, entries, at, wanted * reference_size);
        for (size_t i = 0; i + reference_size <= block.size(); i += reference_size) {
            const bool is_index = (block[i] & 0x80) != 0;  // reference_type
            sum += is_index ? 0 : ReadBE32(&block[i + 4]); // subsegment_duration
        }
        if (block.size() < size_t{wanted} * reference_size) {
            break;
        }
        count -= wanted;
        at += int64_t{wanted} * reference_size;
    }
    return sum;
}

} // namespace

void visit_segment_type(Reader* reader, const Atom& atom, Movie* movie) {
    if (!movie->segment_brand_seen) {
        movie->segment_brand_seen =
            read_all(reader, atom.payload, 0, movie->segment_brand, sizeof movie->segment_brand);
    }
}

// 8.16.3: the times are of 64 bits in version 1.
void visit_segment_index(Reader* reader, const Atom& atom, Movie* movie) {
    constexpr uint32_t most_before_entries = 32;
    uint8_t fields[most_before_entries] = {};
    const uint32_t size = read_some(reader, atom.payload, 0, fields, sizeof fields);
    const uint32_t entries_at = fields[0] == 0 ? 24 : most_before_entries;
    if (movie->movie_seen || size < entries_at) {
        return;
    }
    IndexedStream* stream = indexed_stream(movie, ReadBE32(fields + 4)); // reference_ID
    if (stream != nullptr) {
        stream->time_scale = ReadBE32(fields + 8);
        const uint32_t count = ReadBE16(fields + entries_at - 2); // reference_count
        stream->duration += sum_durations(reader, sub_span(atom.payload, entries_at), count);
    }
}

void visit_event_message(Reader* /*reader*/, const Atom& /*atom*/, Movie* movie) {
    ++movie->event_messages;
}

bool is_segment(const Movie& movie) {
    return !movie.movie_seen && (movie.fragments != 0 || movie.indexed_count != 0 ||
                                    movie.segment_brand_seen || movie.event_messages != 0);
}

void settle_segment(Movie* movie) {
    if (!movie->brand_seen && movie->segment_brand_seen && !movie->movie_seen) {
        std::memcpy(movie->brand, movie->segment_brand, sizeof movie->brand);
        movie->brand_seen = true;
    }
}

double segment_seconds(const Movie& movie) {
    double longest = 0;
    for (int i = 0; i < movie.indexed_count; ++i) {
        const IndexedStream& stream = movie.indexed[i];
        if (stream.time_scale != 0) {
            longest = std::max(longest, static_cast<double>(stream.duration) / stream.time_scale);
        }
    }
    return longest;
}

} // namespace zat::mp4
