// What a file's atoms tell of its movie and tracks.
#pragma once

#include "container/mp4/atom_reader.h"
#include "zat/zat.h"

#include <cstdint>

namespace zat::mp4 {

enum class TrackKind : uint8_t { video, audio, other, count };

// Tracks of a kind that are kept. Those of other kinds only lend their duration to the movie.
constexpr int max_tracks = ZAT_LINE_COUNT;

// Descriptions and tables are only located here, and read when the track is described.
struct Track {
    uint32_t id = 0;
    TrackKind kind = TrackKind::other;
    uint32_t time_scale = 0; // units per second of the sample durations
    Span sample_description; // payloads
    Span sample_sizes;
    bool compact_sizes = false; // sample_sizes is "stz2"
    Span chunk_offsets;
    bool large_offsets = false; // chunk_offsets is "co64"
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

struct Movie {
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

    Track tracks[static_cast<int>(TrackKind::count)][max_tracks];
    int track_count[static_cast<int>(TrackKind::count)] = {};
    Track open_track; // the one whose atoms are being visited
    bool track_is_open = false;

    bool fragments_announced = false; // a "mvex" atom
    uint32_t fragments = 0;
    uint64_t fragments_duration = 0;   // by "mehd"
    uint32_t fragments_time_scale = 0; // of fragments_duration
    SampleDefaults defaults[static_cast<int>(TrackKind::count) * max_tracks];
    int default_count = 0;
    Track* fragment_track = nullptr; // of the track fragment at hand
    SampleDefaults fragment_defaults;
};

// The play time in seconds; may be infinite or NaN.
double movie_seconds(const Movie& movie);

// Closes the open track: it takes its place among those of its kind, if there is room.
void close_track(Movie* movie);

} // namespace zat::mp4
