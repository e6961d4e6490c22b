#include "container/mp4/fragments.h"

#include "container/mp4/sample_tables.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace zat::mp4 {

namespace {

// tf_flags: which fields stand behind the track ID (8.8.7.1).
enum TrackFragmentFlag : uint32_t {
    has_base_data_offset = 0x01,
    has_description_index = 0x02,
    has_default_duration = 0x08,
    has_default_size = 0x10,
};

// tr_flags: which fields stand behind the sample count, and which in each sample (8.8.8.1).
enum TrackRunFlag : uint32_t {
    has_data_offset = 0x001,
    has_first_sample_flags = 0x004,
    has_durations = 0x100,
    has_sizes = 0x200,
    has_flags = 0x400,
    has_time_offsets = 0x800,
};

// 8.8.2
void take_fragments_duration(Reader* reader, Span payload, Movie* movie) {
    const bool version_1 = read_be32(reader, payload, 0) >> 24 == 1;
    const uint64_t high = version_1 ? read_be32(reader, payload, 4) : 0;
    movie->fragments_duration = high << 32 | read_be32(reader, payload, version_1 ? 8 : 4);
}

// 8.8.3
void take_track_defaults(Reader* reader, Span payload, Movie* movie) {
    uint8_t fields[20];
    if (movie->default_count == std::ssize(movie->defaults) ||
        !read_all(reader, payload, 0, fields, sizeof fields)) {
        return;
    }
    movie->defaults[movie->default_count++] = {
        ReadBE32(fields + 4), ReadBE32(fields + 12), ReadBE32(fields + 16)};
}

Track* find_track(Movie* movie, uint32_t id) {
    Track* const end = movie->tracks + movie->track_count;
    Track* const found =
        std::find_if(movie->tracks, end, [id](const Track& track) { return track.id == id; });
    return found != end ? found : nullptr;
}

// The durations and sizes of the samples that are there, of `width` bytes each.
void sum_samples(
    Reader* reader, Span table, uint32_t count, uint32_t flags, uint32_t width, Track* track) {
    constexpr uint32_t piece_size = 4096;
    const bool durations = (flags & has_durations) != 0;
    const bool sizes = (flags & has_sizes) != 0;
    while (count != 0) {
        const uint32_t wanted = std::min(count, piece_size / width);
        const uint32_t size = wanted * width;
        const Bytes piece = read_view(reader, table, 0, size);
        const Bytes samples = piece.first(piece.size() / width * width);
        if (durations) {
            track->fragment_duration += sum_words(samples, width, 0);
        }
        if (sizes) {
            track->fragment_bytes += sum_words(samples, width, durations ? 4 : 0);
        }
        if (piece.size() != size) {
            return;
        }
        table.start += size;
        count -= wanted;
    }
}

// Fragments of a file are much alike, with media data between them: the next one is read at once,
// with what stands before it and the header behind it, and not much more. To read short media data
// as well saves calls, but may use up no more than half of the bytes that the file is allowed.
void expect_alike(BlockReader* block, const Atom& fragment) {
    constexpr int64_t next_header = 16;
    constexpr int64_t least = 1024;
    block->leaps = block->file->done.bytes > block->file->limit.bytes / 2;
    const int64_t start = block->leaps ? fragment.offset : block->start;
    const int64_t size = fragment.payload.end + next_header - start;
    block->jump =
        static_cast<uint32_t>(std::clamp<int64_t>(size + size / 4, least, BlockReader::block_size));
}

} // namespace

void visit_fragment_announcement(Reader* reader, const Atom& atom, Movie* movie) {
    movie->fragments_announced = true;
    Span space = atom.payload;
    Atom child;
    while (next_child(reader, &space, &child)) {
        if (child.type == fourcc("mehd")) {
            take_fragments_duration(reader, child.payload, movie);
        } else if (child.type == fourcc("trex")) {
            take_track_defaults(reader, child.payload, movie);
        }
    }
}

void visit_fragment(Reader* reader, const Atom& atom, Movie* movie) {
    close_track(movie);
    ++movie->fragments;
    expect_alike(&reader->block, atom);
}

void visit_track_fragment(Reader* /*reader*/, const Atom& /*atom*/, Movie* movie) {
    movie->fragment_track = nullptr;
}

// 8.8.7
void visit_track_fragment_header(Reader* reader, const Atom& atom, Movie* movie) {
    const uint32_t flags = read_be32(reader, atom.payload, 0);
    const uint32_t id = read_be32(reader, atom.payload, 4);
    movie->fragment_track = find_track(movie, id);
    movie->fragment_defaults = {};
    for (int i = 0; i < movie->default_count; ++i) {
        if (movie->defaults[i].track_id == id) {
            movie->fragment_defaults = movie->defaults[i];
        }
    }
    int64_t offset = 8;
    offset += (flags & has_base_data_offset) != 0 ? 8 : 0;
    offset += (flags & has_description_index) != 0 ? 4 : 0;
    if ((flags & has_default_duration) != 0) {
        movie->fragment_defaults.duration = read_be32(reader, atom.payload, offset);
        offset += 4;
    }
    if ((flags & has_default_size) != 0) {
        movie->fragment_defaults.size = read_be32(reader, atom.payload, offset);
    }
}

// 8.8.8
void visit_track_run(Reader* reader, const Atom& atom, Movie* movie) {
    Track* track = movie->fragment_track;
    uint8_t fields[8];
    if (track == nullptr || !read_all(reader, atom.payload, 0, fields, sizeof fields)) {
        return;
    }
    const uint32_t flags = ReadBE32(fields);
    const uint32_t count = ReadBE32(fields + 4);
    track->fragment_samples += count;
    if ((flags & has_durations) == 0) {
        track->fragment_duration += uint64_t{count} * movie->fragment_defaults.duration;
    }
    if ((flags & has_sizes) == 0) {
        track->fragment_bytes += uint64_t{count} * movie->fragment_defaults.size;
    }
    if ((flags & (has_durations | has_sizes)) == 0) {
        return;
    }
    constexpr uint32_t sample_fields = has_durations | has_sizes | has_flags | has_time_offsets;
    const auto width = 4 * static_cast<uint32_t>(std::popcount(flags & sample_fields)); // bytes
    Span table = atom.payload;
    table.start += 8;
    table.start += (flags & has_data_offset) != 0 ? 4 : 0;
    table.start += (flags & has_first_sample_flags) != 0 ? 4 : 0;
    sum_samples(reader, table, count, flags, width, track);
}

} // namespace zat::mp4
