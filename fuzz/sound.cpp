#include "sound.h"

#include "common/record/details.h"
#include "common/text/text.h"
#include "common/text/utf8.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

namespace zat::test {

namespace {

constexpr uint8_t host_mark = 0xA5;

template <size_t Slots>
void require_lines(
    const char (&lines)[Slots][ZAT_LINE_SIZE], int32_t count, int32_t expected_slots) {
    require(count >= 0 && count <= expected_slots, "a count leaves its array");
    for (int32_t i = 0; i < static_cast<int32_t>(Slots); ++i) {
        require(std::memchr(lines[i], '\0', ZAT_LINE_SIZE) != nullptr, "a line has no terminator");
        require(i < count || lines[i][0] == '\0', "a line stands behind the count");
    }
}

template <size_t N>
void require_text(const char (&text)[N], const char* name) {
    const auto* end = static_cast<const char*>(std::memchr(text, '\0', N));
    require(end != nullptr && is_utf8({text, static_cast<size_t>(end - text)}), name);
}

void require_duration(double duration) {
    require(duration >= 0 && duration < duration_limit, "a duration");
}

template <class Field, size_t N>
bool is_clear(const Field (&fields)[N]) {
    return std::all_of(
        std::begin(fields), std::end(fields), [](Field field) { return field == 0; });
}

uint32_t streams_of(const ZatDetails& details, uint32_t kind) {
    const auto* end = details.streams + std::min<uint32_t>(details.stream_count, ZAT_STREAM_SLOTS);
    return static_cast<uint32_t>(std::count_if(
        details.streams, end, [kind](const ZatStream& stream) { return stream.kind == kind; }));
}

} // namespace

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "unsound: %s\n", what);
        std::abort();
    }
}

void mark_host_areas(InfoRecord* record) {
    std::memset(record->reserved, host_mark, sizeof record->reserved);
    std::memset(record->unused, host_mark, sizeof record->unused);
}

void require_sound(const InfoRecord& record) {
    require_lines(record.general, record.general_count, 2);
    require_lines(record.video, record.video_count, ZAT_LINE_COUNT);
    require_lines(record.audio, record.audio_count, ZAT_LINE_COUNT);
    require_lines(record.extra, record.extra_count, ZAT_LINE_COUNT);
    require(std::memchr(record.label, '\0', sizeof record.label) != nullptr, "the label's end");
    require(
        std::memchr(record.extra_info, '\0', sizeof record.extra_info) != nullptr, "extra info");
    const auto is_mark = [](uint8_t byte) { return byte == host_mark; };
    require(std::all_of(std::begin(record.reserved), std::end(record.reserved), is_mark) &&
                std::all_of(std::begin(record.unused), std::end(record.unused), is_mark),
        "an area of the host was written");
    require(!std::signbit(record.play_time) || record.play_time != 0, "a play time of minus zero");
}

void require_sound(const ZatStream& stream) {
    require(stream.kind >= ZAT_STREAM_VIDEO && stream.kind <= ZAT_STREAM_DATA, "a kind");
    require(stream.flags < ZAT_FLAG_LOSSLESS * 2, "flags");
    require(stream.estimated < ZAT_ESTIMATED_BYTES * 2, "estimated");
    require(stream.bit_rate_mode <= ZAT_BIT_RATE_VARIABLE, "a bit rate mode");
    require(stream.scan <= ZAT_SCAN_INTERLACED && stream.field_order <= ZAT_FIELD_BOTTOM, "a scan");
    require_duration(stream.duration);
    require(std::isfinite(stream.frame_rate) && stream.frame_rate >= 0, "a frame rate");
    require(std::isfinite(stream.nominal_frame_rate) && stream.nominal_frame_rate >= 0,
        "a nominal frame rate");
    require(!std::isinf(stream.start), "a start");
    require((stream.frame_rate_numerator == 0) == (stream.frame_rate_denominator == 0) &&
                (stream.pixel_aspect_width == 0) == (stream.pixel_aspect_height == 0) &&
                (stream.display_aspect_width == 0) == (stream.display_aspect_height == 0),
        "half a ratio");
    require(is_clear(stream.reserved) && is_clear(stream.reserved2), "a reserved field is used");
    require_text(stream.codec, "codec");
    require_text(stream.codec_id, "codec_id");
    require_text(stream.profile, "profile");
    require_text(stream.level, "level");
    require_text(stream.language, "language");
    require_text(stream.title, "title");
    require_text(stream.encoder, "encoder");
    require_text(stream.layout, "layout");
    require_text(stream.chroma, "chroma");
    require_text(stream.primaries, "primaries");
    require_text(stream.transfer, "transfer");
    require_text(stream.matrix, "matrix");
    require_text(stream.range, "range");
    require_text(stream.hdr, "hdr");
}

void require_sound(const ZatDetails& details) {
    require(details.size == sizeof details, "the size of the details was written");
    require_text(details.format, "format");
    require_text(details.format_profile, "format_profile");
    require_text(details.title, "title");
    require_text(details.artist, "artist");
    require_text(details.writer, "writer");
    require_text(details.created, "created");
    require_text(details.notes, "notes");
    require_duration(details.duration);
    require(details.bit_rate < bit_rate_limit, "the file's bit rate");
    require(is_clear(details.reserved) && is_clear(details.reserved2), "a reserved field is used");
    for (uint32_t i = 0; i < std::min<uint32_t>(details.stream_count, ZAT_STREAM_SLOTS); ++i) {
        require(details.streams[i].bit_rate < bit_rate_limit, "a bit rate");
        require_sound(details.streams[i]);
    }
}

void require_sound_text(const char* text, size_t length, size_t size, bool utf8) {
    require(length < size && std::strlen(text) == length, "the length of a text");
    require(!utf8 || is_utf8({text, length}), "a text is no UTF-8");
}

void require_agreement(const InfoRecord& record, const ZatDetails& details) {
    if (record.type_code < FILETYPE_MEDIA) {
        require(details.stream_count == 0 && details.format[0] == '\0', "details of a refusal");
        return;
    }
    require(details.format[0] != '\0', "a file of a known type without a format");
    if (details.stream_count > ZAT_STREAM_SLOTS) {
        return; // those that are not kept have lines too
    }
    // Lines of these kinds go by what the headers promise, details by what there is. The code is
    // another one where such a file was taken for a transport stream.
    const std::string_view format = details.format;
    if (format == "FLV" || format == "RealMedia") {
        return;
    }
    const auto lines = [](uint32_t streams) {
        return static_cast<int32_t>(std::min<uint32_t>(streams, ZAT_LINE_COUNT));
    };
    require(record.video_count == lines(streams_of(details, ZAT_STREAM_VIDEO)), "video lines");
    require(record.audio_count == lines(streams_of(details, ZAT_STREAM_AUDIO)), "audio lines");
}

void require_sound_report(const InfoRecord& record) {
    static char whole[65536]; // more than all fields of a record hold
    const uint32_t length = ReFormFullBounded(&record, whole, sizeof whole);
    require_sound_text(whole, length, sizeof whole, false);
}

void require_sound_short_report(const InfoRecord& record) {
    static char limited[ZAT_REPORT_SIZE];
    std::memset(limited, 'x', sizeof limited);
    ReFormFull(&record, limited);
    require(std::memchr(limited, '\0', sizeof limited) != nullptr, "the report's end");
}

} // namespace zat::test
