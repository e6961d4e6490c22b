#include "container/mp4/output.h"

#include "common/bytes/numbers.h"
#include "common/catalogue/codec_catalogue.h"
#include "common/record/record_lines.h"
#include "common/text/fourcc.h"
#include "common/text/messages.h"
#include "common/text/value_text.h"
#include "container/mp4/audio_line.h"
#include "container/mp4/movie_details.h"
#include "container/mp4/segment.h"
#include "container/mp4/video_line.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zat::mp4 {

namespace {

// In bit/s; 0 when the time makes it infinite or meaningless.
uint32_t track_bitrate(uint64_t bytes, double seconds) {
    const double rate = divide(static_cast<double>(bytes) * 8, seconds);
    return std::isfinite(rate) ? clamp_to_integer<uint32_t>(rate) : 0;
}

// What the sequence parameter sets' parse remarked, joined with ",".
void note_sps(const AvcParseState& state, char* notes, size_t size) {
    if (state.cpb_clamped != 0) {
        AppendWithSeparator(notes, size, message::cpb_anomaly, separator_comma);
    }
    if (state.error != 0) {
        char truncated[32];
        format_text(truncated, sizeof truncated, "SPS %d/%d", static_cast<int32_t>(state.end_pos),
            static_cast<int32_t>(state.total_bits));
        AppendWithSeparator(notes, size, truncated, separator_comma);
    }
}

// `sps_notes` (line_size bytes) are those of the first track with a remark.
void write_video(
    InfoRecord* record, Reader* reader, Track* track, double seconds, char* sps_notes) {
    VideoLine video;
    read_video_line(reader, track, &video);
    add_video_line(record, "%dx%d [%s] %dBit %.3ffps %.3fkbps %df %s", video.width, video.height,
        video.codec, video.depth, divide(video.frames, seconds),
        track_bitrate(video.bytes, seconds) * 0.001, static_cast<int32_t>(video.frames),
        video.progressive ? "Progressive" : "interlace");
    if (sps_notes[0] == '\0') {
        note_sps(video.avc_state, sps_notes, line_size);
    }
}

void write_audio(InfoRecord* record, Reader* reader, Track* track, double seconds) {
    AudioLine audio;
    read_audio_line(reader, track, &audio);
    const uint32_t bitrate =
        audio.bitrate != 0 ? audio.bitrate : track_bitrate(audio.bytes, seconds);
    add_audio_line(record, "[%s] %dHz %dch %dBit %.3fkbps", audio.codec,
        static_cast<int32_t>(audio.sample_rate), static_cast<int32_t>(audio.channels),
        static_cast<int32_t>(audio.sample_size), bitrate * 0.001);
}

void write_tracks(
    InfoRecord* record, Reader* reader, Movie* movie, double seconds, char* sps_notes) {
    for (Track& track : kept_tracks(movie)) {
        if (track.kind == TrackKind::video && record->video_count < ZAT_LINE_COUNT) {
            write_video(record, reader, &track, seconds, sps_notes);
        } else if (track.kind == TrackKind::audio && record->audio_count < ZAT_LINE_COUNT) {
            write_audio(record, reader, &track, seconds);
        }
    }
}

void write_brand(InfoRecord* record, const Movie& movie) {
    uint8_t upper[4];
    std::transform(std::begin(movie.brand), std::end(movie.brand), upper,
        [](uint8_t c) { return static_cast<uint8_t>(ascii_upper(static_cast<char>(c))); });
    char shown[fourcc_text_size];
    FourccText(upper, shown);
    char name[line_size];
    codec_name("[QT-BRAND]", {reinterpret_cast<const char*>(upper), sizeof upper}, shown, name,
        sizeof name);
    add_extra_line(record, "[%s]", name);
}

void write_extra(InfoRecord* record, const Movie& movie, const char* sps_notes) {
    if (movie.brand_seen) {
        write_brand(record, movie);
        if (movie.chapters != 0) {
            add_extra_line(record, message::chapters, static_cast<int32_t>(movie.chapters));
        }
        if (sps_notes[0] != '\0') {
            add_extra_line(record, "%s", sps_notes);
        }
    }
    if (movie.fragments != 0 && (movie.brand_seen || is_segment(movie))) {
        add_extra_line(record, "MovieFragment(%d)", static_cast<int32_t>(movie.fragments));
    }
    if (movie.event_messages != 0 && is_segment(movie)) {
        add_extra_line(record, "emsg(%d)", static_cast<int32_t>(movie.event_messages));
    }
    if (movie.offset != 0) {
        char offset[value_text_size];
        FormatGroupedSize(static_cast<uint64_t>(movie.offset), offset);
        add_extra_line(record, "moov chunk %s", offset);
    }
}

void write_general(InfoRecord* record, const Movie& movie) {
    if (movie.compressed) {
        set_general_line(record, "%s", message::compressed_header);
    } else if (!movie.track_seen) {
        // Also for a missing movie atom, which no track can stand without.
        set_general_line(record, "trak");
    }
}

} // namespace

void write_movie(const Output& out, Reader* reader, Movie* movie) {
    InfoRecord* record = out.record;
    const double seconds = movie_seconds(*movie);
    record->play_time = seconds;
    char sps_notes[line_size] = {};
    write_tracks(record, reader, movie, seconds, sps_notes);
    write_general(record, *movie);
    write_extra(record, *movie, sps_notes);
    set_label(record, movie->large_atom_seen ? "[Quick Time(64BitAtom)]" : "[Quick Time]");
    if (out.details != nullptr) {
        describe_movie(reader, movie, seconds, out.details);
    }
}

} // namespace zat::mp4
