#include "container/mp4/movie_details.h"

#include "common/record/details.h"
#include "common/text/utc_time.h"
#include "container/mp4/metadata.h"
#include "container/mp4/sample_tables.h"
#include "container/mp4/segment.h"
#include "container/mp4/track_details.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace zat::mp4 {

namespace {

// Tracks whose samples are the chapters of others (QuickTime File Format, "Chapter Lists").
struct ChapterTracks {
    static constexpr int most = 16;
    uint32_t ids[most];
    int count = 0;
};

void read_chapter_references(Reader* reader, const Movie& movie, ChapterTracks* chapters) {
    for (const Track& track : kept_tracks(movie)) {
        const int64_t end = size_of(track.chapter_reference);
        for (int64_t at = 0; at + 4 <= end && chapters->count < ChapterTracks::most; at += 4) {
            chapters->ids[chapters->count++] = read_be32(reader, track.chapter_reference, at);
        }
    }
}

// A chapter's picture is a stream all the same.
bool holds_chapters(const ChapterTracks& chapters, const Track& track) {
    const uint32_t* const end = chapters.ids + chapters.count;
    return stream_kind(track) == ZAT_STREAM_TEXT && std::find(chapters.ids, end, track.id) != end;
}

void describe_tracks(Reader* reader, Movie* movie, ZatDetails* details) {
    ChapterTracks chapters;
    read_chapter_references(reader, *movie, &chapters);
    details->chapters = movie->chapters;
    int all = 0;
    for (const int count : movie->kind_count) {
        all += count;
    }
    for (Track& track : kept_tracks(movie)) {
        if (!holds_chapters(chapters, track)) {
            describe_track(reader, *movie, &track, details);
        } else if (details->chapters == 0) {
            details->chapters = sample_totals(reader, &track).samples;
        }
    }
    // Tracks that were not kept only count: with slots left, the next one would be counted
    // unfilled.
    if (details->stream_count >= ZAT_STREAM_SLOTS) {
        details->stream_count += static_cast<uint32_t>(all - movie->track_count);
    }
}

void describe_format(const Movie& movie, ZatDetails* details) {
    const bool quicktime =
        movie.brand_seen ? std::memcmp(movie.brand, "qt  ", 4) == 0 : !is_segment(movie);
    copy_utf8(details->format, quicktime ? "QuickTime" : "MP4");
    if (movie.brand_seen) {
        char brand[fourcc_text_size];
        printable_fourcc_text(movie.brand, brand);
        std::string_view text = brand;
        while (text.ends_with(' ')) {
            text.remove_suffix(1);
        }
        copy_utf8(details->format_profile, text);
    }
}

// Seconds since 1904; programs that write Unix time are recognised by a time before it began.
void read_creation_time(Reader* reader, Span header, ZatDetails* details) {
    const bool large = read_be32(reader, header, 0) >> 24 == 1;
    const uint64_t high = large ? read_be32(reader, header, 4) : 0;
    const auto time = static_cast<int64_t>(high << 32 | read_be32(reader, header, large ? 8 : 4));
    if (time > 0 && time < INT64_MAX / 2) {
        format_utc(
            time + (time >= -unix_seconds_of_1904 ? unix_seconds_of_1904 : 0), details->created);
    }
}

// By the header, else by fragments, else by the longest track.
double duration_of(Reader* reader, const Movie& movie, double seconds) {
    const HeaderTime time = read_header_time(reader, movie.header);
    if (time.scale != 0 && time.duration != 0) {
        return static_cast<double>(time.duration) / time.scale;
    }
    if ((movie.fragments_announced || movie.fragments != 0) && movie.duration == 0 &&
        std::isfinite(seconds) && seconds > 0) {
        return seconds;
    }
    double longest = segment_seconds(movie);
    for (const Track& track : kept_tracks(movie)) {
        const HeaderTime media = read_header_time(reader, track.media_header);
        if (media.scale != 0) {
            longest = std::max(longest, static_cast<double>(media.duration) / media.scale);
        }
    }
    return longest;
}

} // namespace

void describe_movie(Reader* reader, Movie* movie, double seconds, ZatDetails* details) {
    describe_format(*movie, details);
    const double duration = duration_of(reader, *movie, seconds);
    details->duration = duration > 0 ? duration : std::numeric_limits<double>::quiet_NaN();
    read_creation_time(reader, movie->header, details);
    read_user_data(reader, movie->user_data, details);
    if (size_of(movie->metadata) != 0) {
        read_metadata(reader, movie->metadata, details);
    }
    describe_tracks(reader, movie, details);
    if (movie->missing_bytes != 0) {
        note_missing_bytes(details, static_cast<uint64_t>(movie->missing_bytes));
    }
    if (reader->limited) {
        note_work_limit(details);
    }
}

} // namespace zat::mp4
