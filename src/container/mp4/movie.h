// What a file's atoms tell of its movie and tracks.
#pragma once

#include "container/mp4/atom_reader.h"
#include "zat/details.h"

#include <cstdint>
#include <span>

namespace zat::mp4 {

enum class TrackKind : uint8_t { video, audio, other, count };

// Tracks that are kept: as many as the details hold, and of video and audio the first of each that
// have lines, wherever they stand.
constexpr int detailed_tracks = ZAT_STREAM_SLOTS;
constexpr int max_tracks = detailed_tracks + 2 * ZAT_LINE_COUNT;

struct SampleTotals {
    uint32_t samples = 0;     // of the movie atom and of fragments
    uint64_t bytes = 0;       // knowingly the sample count where all samples have one size
    bool one_size = false;    // all samples in the movie atom have one size
    uint32_t sample_size = 0; // that size
};

// Descriptions and tables are only located here, and read when the track is described.
struct Track {
    uint32_t id = 0;
    TrackKind kind = TrackKind::other;
    uint32_t handler = 0;    // media type, as four characters
    uint32_t time_scale = 0; // units per second of the sample durations
    Span sample_description; // payloads
    Span sample_sizes;
    bool compact_sizes = false; // sample_sizes is "stz2"
    bool summed = false;
    SampleTotals totals; // once they are summed
    Span chunk_offsets;
    bool large_offsets = false; // chunk_offsets is "co64"
    // Of details only; payloads.
    Span header;            // "tkhd"
    Span media_header;      // "mdhd"
    Span handler_atom;      // "hdlr"
    Span edit_list;         // "elst"
    Span chapter_reference; // "chap": the IDs of tracks that hold this one's chapters
    Span extended_language; // "elng"
    Span user_data;         // "udta"
    Span time_to_sample;    // "stts"
    Span sample_to_chunk;   // "stsc"
    // Of the track's fragments; sums wrap.
    uint32_t fragment_samples = 0;
    uint64_t fragment_bytes = 0;
    uint64_t fragment_duration = 0; // in units of time_scale
};

// Per-sample values for fragments that tell none.
struct SampleDefaults {
    uint32_t track_id = 0;
    uint32_t duration = 0;
    uint32_t size = 0; // bytes
};

// A stream that a segment index describes.
struct IndexedStream {
    uint32_t id = 0;
    uint32_t time_scale = 0; // of duration
    uint64_t duration = 0;
};

struct Movie {
    Movie() {} // leaves the tracks as they are: clearing them all costs more than reading one

    bool brand_seen = false;
    uint8_t brand[4] = {};
    bool movie_seen = false;
    bool track_seen = false;
    bool compressed = false; // the movie atom's content is compressed
    bool large_atom_seen = false;
    int64_t offset = 0; // of the movie atom
    bool header_seen = false;
    uint32_t time_scale = 0; // of duration
    uint32_t duration = 0;
    uint32_t chapters = 0;

    union {
        Track tracks[max_tracks]; // in file order; those that are counted
    };
    int track_count = 0;
    int kind_count[static_cast<int>(TrackKind::count)] = {}; // of all in the file
    Track open_track; // the one whose atoms are being visited
    bool track_is_open = false;

    bool fragments_announced = false; // a "mvex" atom
    uint32_t fragments = 0;
    uint64_t fragments_duration = 0;   // by "mehd"
    uint32_t fragments_time_scale = 0; // of fragments_duration
    SampleDefaults defaults[max_tracks];
    int default_count = 0;
    Track* fragment_track = nullptr; // of the track fragment at hand
    SampleDefaults fragment_defaults;

    // Of media segments.
    bool segment_brand_seen = false;
    uint8_t segment_brand[4] = {};
    uint32_t event_messages = 0;
    int indexed_count = 0;
    IndexedStream indexed[16];

    // Of details only; payloads.
    bool detailed = false;
    Span header;               // "mvhd"
    Span user_data;            // "udta"
    Span metadata;             // QuickTime's "meta"
    int64_t missing_bytes = 0; // of the atom that the file's end cuts
};

// The play time in seconds; may be infinite or NaN.
double movie_seconds(const Movie& movie);

// Closes the open track: it takes its place among the others, if there is room.
void close_track(Movie* movie);

inline std::span<const Track> kept_tracks(const Movie& movie) {
    return {movie.tracks, static_cast<size_t>(movie.track_count)};
}
inline std::span<Track> kept_tracks(Movie* movie) {
    return {movie->tracks, static_cast<size_t>(movie->track_count)};
}

} // namespace zat::mp4
