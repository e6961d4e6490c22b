#include "container/asf.h"

#include "audio/first_frame.h"
#include "audio/wave_format.h"
#include "common/record/extra_info.h"
#include "common/record/record_lines.h"
#include "common/text/messages.h"
#include "common/text/utc_time.h"
#include "container/asf/stream_facts.h"

#include <algorithm>

namespace zat {

namespace {

using namespace asf;

constexpr int64_t ticks_per_second = 10'000'000;

constexpr uint32_t smallest_budget = 10'485'760; // bytes of packets that may be scanned

// Whether a stream has facts that its packets alone tell.
bool needs_packets(Reader* reader, const Header& header) {
    return std::any_of(
        header.streams, header.streams + header.stream_count, [&](const Stream& stream) {
            if (stream.type != StreamType::audio) {
                return stream.type == StreamType::video;
            }
            const WaveFormat format =
                read_wave_format(read_view(reader, stream.type_data, 0, wave_extensible_size));
            return format.byte_rate == 0 || frame_describer(codec_tag(format)) != nullptr;
        });
}

// In whole ticks, so that it is exact.
double declared_time(const Header& header) {
    constexpr uint64_t ticks_per_millisecond = 10'000;
    const uint64_t preroll = header.preroll <= UINT64_MAX / ticks_per_millisecond
                                 ? header.preroll * ticks_per_millisecond
                                 : UINT64_MAX;
    if (header.broadcast || header.play_duration <= preroll) {
        return 0;
    }
    return static_cast<double>(header.play_duration - preroll) / double{ticks_per_second};
}

// Seconds from the first to the last object of the longest stream, of a recording whose header
// tells no time. Streams of a live recording may count from different times.
double counted_time(const MediaScan& scan) {
    uint32_t longest = 0;
    for (const StreamScan& stream : scan.streams) {
        longest = std::max(longest, stream.has_time ? stream.last_time - stream.first_time : 0);
    }
    return longest * 1e-3;
}

void write_texts(const Header& header, const Output& out) {
    write_artist_and_title(header.texts, out);
    char writer[2 * tag_text_size + 16] = {};
    if (header.tool_name[0] != '\0') {
        copy_text(writer, bounded_text(header.tool_name));
        if (header.tool_version[0] != '\0') {
            AppendWithSeparator(writer, bounded_text(header.tool_version), separator_space);
        }
    } else if (header.settings[0] != '\0') {
        copy_text(writer, bounded_text(header.settings));
    } else if (header.sdk_version[0] != '\0') {
        AppendWithSeparator(writer, "WMFSDK", separator_space);
        AppendWithSeparator(writer, bounded_text(header.sdk_version), separator_space);
    }
    append_writer(out, bounded_text(writer));
}

void write_created(const Header& header, ZatDetails* details) {
    const auto seconds = static_cast<int64_t>(header.created / ticks_per_second);
    const int64_t unix_seconds = seconds + unix_seconds_of_1601;
    if (seconds != 0 && unix_seconds != 0) { // both stand for a time that was not set
        format_utc(unix_seconds, details->created);
    }
}

void write_file_facts(const Header& header, double play_time, const Output& out) {
    set_label(out.record, "%s", "[ASF]");
    out.record->play_time = play_time;
    if (out.details != nullptr) {
        copy_utf8(out.details->format, "ASF");
        out.details->duration = play_time;
        out.details->chapters = header.markers;
        write_created(header, out.details);
    }
}

void add_facts(const Source& source) {
    const Header& header = *source.header;
    if (header.markers != 0) {
        add_fact(source.extra, message::chapters, static_cast<int32_t>(header.markers));
    }
    if (header.script_commands != 0) {
        add_fact(source.extra, "[script](%d)", static_cast<int32_t>(header.script_commands));
    }
    if (header.drm) {
        add_fact(source.extra, "DRM");
    }
}

void add_notes(const Source& source) {
    const Header& header = *source.header;
    const int64_t file_size = source.reader->block.file->size;
    if (header.broadcast) {
        add_note(source.out, source.extra, "live");
    }
    if (header.announced_end > file_size) {
        add_truncated_note(
            source.out, source.extra, static_cast<uint64_t>(header.announced_end - file_size));
    } else if (!header.has_data) {
        add_note(source.out, source.extra, "no data");
    }
}

} // namespace

int AnalyzeAsfFile(FileRecord* file, const Output& out) {
    Reader reader;
    reader_open(&reader, file);
    if (read_view(&reader, whole_file(&reader), 0, 1).empty()) {
        return 1;
    }
    out.record->scan_budget = std::max(out.record->scan_budget, smallest_budget);
    Header header;
    read_header(&reader, &header);
    MediaScan scan;
    if (needs_packets(&reader, header) || is_open(header)) {
        scan_media(&reader, header, out.record->scan_budget, &scan);
    }
    const double play_time =
        is_open(header) && scan.complete ? counted_time(scan) : declared_time(header);
    write_file_facts(header, play_time, out);
    ExtraLines extra;
    const Source source{&reader, &header, &scan, play_time, out, &extra};
    add_streams(source);
    write_texts(header, out);
    add_facts(source);
    add_notes(source);
    write_extra_lines(extra, out.record);
    note_work_limit(out, reader);
    return 0;
}

} // namespace zat
