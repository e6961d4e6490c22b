#include "container/mp4/movie.h"

#include "common/bytes/numbers.h"
#include "container/mp4/segment.h"

#include <algorithm>

namespace zat::mp4 {

namespace {

double longest_track_seconds(const Movie& movie) {
    double longest = 0;
    for (const Track& track : kept_tracks(movie)) {
        if (track.time_scale != 0) {
            const auto duration = static_cast<double>(track.fragment_duration);
            longest = std::max(longest, duration / track.time_scale);
        }
    }
    return longest;
}

} // namespace

double movie_seconds(const Movie& movie) {
    const bool fragmented = movie.fragments != 0 || movie.fragments_announced;
    if (fragmented && movie.duration == 0) {
        if (movie.fragments_duration != 0 && movie.header_seen) {
            return divide(
                static_cast<double>(movie.fragments_duration), movie.fragments_time_scale);
        }
        const double longest = longest_track_seconds(movie);
        if (longest > 0) {
            return longest;
        }
    }
    return movie.header_seen ? divide(movie.duration, movie.time_scale) : segment_seconds(movie);
}

void close_track(Movie* movie) {
    if (!movie->track_is_open) {
        return;
    }
    movie->track_is_open = false;
    const TrackKind kind = movie->open_track.kind;
    const int of_kind = movie->kind_count[static_cast<int>(kind)]++;
    const bool has_line = kind != TrackKind::other && of_kind < ZAT_LINE_COUNT;
    if (movie->track_count < detailed_tracks || has_line) {
        movie->tracks[movie->track_count++] = movie->open_track;
    }
}

} // namespace zat::mp4
