#include "container/matroska.h"

#include "common/record/extra_info.h"
#include "common/record/record_lines.h"
#include "common/tags/tag_texts.h"
#include "common/text/messages.h"
#include "common/text/utc_time.h"
#include "container/matroska/ids.h"
#include "container/matroska/levels.h"
#include "container/matroska/live.h"
#include "container/matroska/tags.h"
#include "container/matroska/track_stream.h"

#include <algorithm>

namespace zat {

namespace {

using namespace matroska;

// What the walk over clusters is to find.
void make_wishes(const Segment& segment, ClusterWalk* walk) {
    for (uint32_t i = 0; i < kept_tracks(segment); ++i) {
        const Track& track = segment.tracks[i];
        walk->wants_frame |= wants_first_frame(track) ? uint64_t{1} << i : 0;
        walk->wants_rates |= wants_counted_rate(track);
        const bool has_rate = frame_duration(track) > 0 || track.video.frame_rate > 0;
        if (track.type == track_video && !has_rate && walk->timed_count < timed_tracks) {
            walk->timed[walk->timed_count++] = i;
            walk->wants_rates = true;
        }
    }
}

double play_time(Reader* reader, const Segment& segment) {
    const double told = seconds_of(segment, segment.duration);
    return segment.duration_told && known_duration(told) > 0 ? told
                                                             : measured_duration(reader, segment);
}

void add_tracks(const Source& source) {
    for (uint32_t i = 0; i < kept_tracks(*source.segment); ++i) {
        switch (source.segment->tracks[i].type) {
        case track_video:
            add_video(source, i);
            break;
        case track_audio:
            add_audio(source, i);
            break;
        default:
            add_other(source, i);
            break;
        }
    }
    if (source.out.details != nullptr && source.segment->track_count > most_tracks) {
        source.out.details->stream_count = source.segment->track_count;
    }
}

void add_facts(const Source& source) {
    const Segment& segment = *source.segment;
    if (segment.chapters != 0) {
        add_fact(source.extra, message::chapters, static_cast<int32_t>(segment.chapters));
    }
    if (segment.attachments != 0) {
        add_fact(source.extra, "attachments(%d)", static_cast<int32_t>(segment.attachments));
    }
}

// Whether what stands behind the segment goes on with one, or with padding.
bool goes_on(Reader* reader, int64_t position) {
    ElementCursor cursor = {whole_file(reader), position};
    Element element;
    return next_element(reader, &cursor, &element)
               ? element.id == id_ebml || element.id == id_segment || is_level1(element.id)
               : cursor.position == cursor.parent.end; // voids only
}

void add_notes(const Source& source) {
    const Segment& segment = *source.segment;
    const Track* end = segment.tracks + kept_tracks(segment);
    const int64_t behind = source.reader->block.file->size - segment.said_end;
    if (segment.unknown_size && !segment.duration_told) {
        add_note(source.out, source.extra, "live");
    }
    if (behind < 0) {
        add_truncated_note(source.out, source.extra, static_cast<uint64_t>(-behind));
    } else if (!segment.unknown_size && behind > 0 && !goes_on(source.reader, segment.said_end)) {
        add_trailing_data_note(source.out, source.extra, static_cast<uint64_t>(behind));
    }
    if (std::any_of(
            segment.tracks, end, [](const Track& track) { return track.encodings.encrypted; })) {
        add_note(source.out, source.extra, "encrypted");
    }
}

void read_span_text(Reader* reader, Span span, TagText& out) {
    Element element;
    element.data = span;
    read_text(reader, element, out);
}

bool has_video(const Segment& segment) {
    return std::any_of(segment.tracks, segment.tracks + kept_tracks(segment),
        [](const Track& track) { return track.type == track_video; });
}

void write_file_facts(const Source& source) {
    const Segment& segment = *source.segment;
    const Output& out = source.out;
    set_label(out.record, "%s", segment.is_webm ? "[WebM]" : "[Matroska]");
    out.record->play_time = source.duration;
    TagTexts texts;
    TagText writer = {};
    const bool has_title = size_of(segment.title) != 0;
    read_span_text(source.reader, has_title ? segment.title : segment.tag_title, texts.title);
    if (!has_video(segment)) {
        read_span_text(source.reader, segment.tag_artist, texts.artist);
    }
    read_span_text(source.reader, segment.writing_app, writer);
    if (writer[0] == '\0') {
        read_span_text(source.reader, segment.muxing_app, writer);
    }
    write_artist_and_title(texts, out);
    append_writer(out, bounded_text(writer));
    if (out.details == nullptr) {
        return;
    }
    if (out.details->artist[0] == '\0') { // films, whose lines show none, have one too
        read_span_text(source.reader, segment.tag_artist, texts.artist);
        copy_utf8(out.details->artist, bounded_text(texts.artist));
    }
    copy_utf8(out.details->format, segment.is_webm ? "WebM" : "Matroska");
    out.details->duration = source.duration;
    if (segment.date_told) {
        constexpr int64_t second = 1'000'000'000; // ns
        const int64_t past = segment.date % second < 0 ? 1 : 0;
        format_utc(segment.date / second - past + unix_seconds_of_2001, out.details->created);
    }
    out.details->chapters = segment.chapters;
    out.details->pictures = segment.pictures;
}

} // namespace

int AnalyzeMatroskaFile(FileRecord* file, const Output& out) {
    const WorkMemory memory(long_walk_memory);
    Reader reader;
    reader_open(&reader, file, memory);
    Segment segment;
    if (!read_segment(&reader, &segment)) {
        return 1;
    }
    ClusterWalk walk;
    make_wishes(segment, &walk);
    walk_clusters(&reader, is_thorough(*out.record), &segment, &walk);
    // However long the walk was, the tracks' headers are read.
    constexpr Allowance rest = {200'000, 8 << 20};
    reader_allow(&reader, rest);
    for (uint32_t i = 0; i < segment.tags_count; ++i) {
        read_tags(&reader, segment.tags[i], &segment);
    }
    ExtraLines extra;
    Source source;
    source.reader = &reader;
    source.segment = &segment;
    source.walk = &walk;
    source.out = out;
    source.extra = &extra;
    source.duration = play_time(&reader, segment);
    source.names_languages = std::any_of(segment.tracks, segment.tracks + kept_tracks(segment),
        [](const Track& track) { return track.language_told; });
    write_file_facts(source);
    add_tracks(source);
    add_facts(source);
    add_notes(source);
    write_extra_lines(extra, out.record);
    note_work_limit(out, reader);
    return 0;
}

} // namespace zat
