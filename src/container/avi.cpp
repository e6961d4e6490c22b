#include "container/avi.h"

#include "common/bytes/numbers.h"
#include "common/record/extra_info.h"
#include "common/record/output.h"
#include "common/record/record_lines.h"
#include "container/avi/index.h"
#include "container/avi/info_list.h"
#include "container/avi/media_data.h"
#include "container/avi/stream_facts.h"

#include <algorithm>
#include <limits>

namespace zat {

namespace {

using namespace avi;

// Chunks that are counted in a file that neither tells lengths nor has an index.
constexpr uint32_t counted_chunks = 1024;

// Streams whose lengths were never filled in: a recording that was broken off.
bool lacks_lengths(const Movie& movie) {
    return std::all_of(movie.streams, movie.streams + movie.stream_count,
        [](const Stream& stream) { return stream.length == 0; });
}

// Of sound whose samples have one size, the samples.
uint64_t counted_units(const Stream& stream) {
    const bool in_bytes = stream.type == fourcc("auds") && stream.sample_size != 0;
    return in_bytes ? stream.bytes / stream.sample_size : stream.chunks;
}

// The lengths by what was counted, of a part of the media data or of all.
void take_counted_lengths(const MediaWalk& walk, Movie* movie) {
    const double part =
        walk.bytes > 0 && !walk.complete
            ? static_cast<double>(walk.bytes) / static_cast<double>(size_of(movie->movi))
            : 1;
    for (uint32_t i = 0; i < movie->stream_count; ++i) {
        Stream* stream = &movie->streams[i];
        stream->length =
            clamp_to_integer<uint32_t>(static_cast<double>(counted_units(*stream)) / part);
    }
}

// Counts by the index, else by the chunks themselves where that is asked for or tells what nothing
// else does. True when lengths are estimated from a part.
bool count_streams(Reader* reader, uint32_t options, Movie* movie, Source* source) {
    source->counted = count_by_index(reader, movie);
    const bool without_lengths = lacks_lengths(*movie);
    const bool thorough = (options & option_thorough) != 0;
    if (source->counted || !(without_lengths || thorough)) {
        return false;
    }
    reader_allow(reader, walk_allowance);
    const MediaWalk walk = count_media(reader, thorough ? UINT32_MAX : counted_chunks, movie);
    source->counted = walk.complete && movie->parts == 1;
    if (without_lengths) {
        take_counted_lengths(walk, movie);
    }
    return without_lengths && !walk.complete;
}

// Some writers tell the chunks of a sound in the place of its samples.
void correct_lengths(Movie* movie) {
    for (uint32_t i = 0; i < movie->stream_count; ++i) {
        Stream* stream = &movie->streams[i];
        if (stream->type == fourcc("auds") && stream->length == stream->chunks) {
            stream->length = static_cast<uint32_t>(
                std::min<uint64_t>(counted_units(*stream), std::numeric_limits<uint32_t>::max()));
        }
    }
}

double play_time(const Movie& movie) {
    double longest = 0;
    for (uint32_t i = 0; i < movie.stream_count; ++i) {
        const Stream& stream = movie.streams[i];
        if (is_video(stream) || stream.type == fourcc("auds")) {
            longest = std::max(longest, declared_time(movie, stream));
        }
    }
    return longest;
}

void add_streams(const Source& source) {
    for (uint32_t i = 0; i < source.movie->stream_count; ++i) {
        switch (source.movie->streams[i].type) {
        case fourcc("vids"):
            add_video(source, i);
            break;
        case fourcc("auds"):
            add_audio(source, i);
            break;
        case fourcc("iavs"):
            add_interleaved_dv(source, i);
            break;
        case fourcc("txts"):
            add_text(source, i);
            break;
        default:
            add_data(source, i);
            break;
        }
    }
}

void add_notes(const Source& source) {
    const Movie& movie = *source.movie;
    const int64_t file_size = source.reader->block.file->size;
    if (movie.parts > 1) {
        add_fact(source.extra, "OpenDML(%d)", static_cast<int32_t>(movie.parts));
    }
    if (movie.announced_end > file_size) {
        add_truncated_note(
            source.out, source.extra, static_cast<uint64_t>(movie.announced_end - file_size));
    }
    if (size_of(movie.movi) != 0 && !has_index(movie)) {
        add_note(source.out, source.extra, "no index");
    }
    if (source.estimated && play_time(movie) > 0) {
        add_note(source.out, source.extra, "time estimated");
    }
}

void write_file_facts(const Source& source) {
    const Movie& movie = *source.movie;
    const Output& out = source.out;
    const bool is_opendml = movie.has_odml || movie.parts > 1;
    set_label(out.record, "%s", is_opendml ? "[AVI(OpenDML)]" : "[AVI]");
    out.record->play_time = play_time(movie);
    if (out.details != nullptr) {
        copy_utf8(out.details->format, "AVI");
        copy_utf8(out.details->format_profile, is_opendml ? "OpenDML" : "");
        out.details->duration = out.record->play_time;
        out.details->estimated |=
            source.estimated && out.details->duration > 0 ? uint32_t{ZAT_ESTIMATED_DURATION} : 0;
    }
}

} // namespace

int AnalyzeAviFile(FileRecord* file, const Output& out) {
    const WorkMemory memory(long_walk_memory);
    Reader reader;
    reader_open(&reader, file, memory);
    if (read_view(&reader, whole_file(&reader), 0, riff_header_size).empty()) {
        return 1;
    }
    Movie movie;
    read_movie(&reader, &movie);
    ExtraLines extra;
    Source source{.reader = &reader, .movie = &movie, .out = out, .extra = &extra};
    reader_allow(&reader, table_allowance);
    source.estimated = count_streams(&reader, out.record->options, &movie, &source);
    if (source.counted) {
        correct_lengths(&movie);
    }
    reader_allow(&reader, walk_allowance);
    find_first_data(&reader, source.counted, &movie);
    write_file_facts(source);
    add_streams(source);
    write_info(&reader, movie.info, out);
    add_notes(source);
    write_extra_lines(extra, out.record);
    note_work_limit(out, reader);
    return 0;
}

} // namespace zat
