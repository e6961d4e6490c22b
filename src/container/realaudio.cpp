#include "container/realaudio.h"

#include "common/record/extra_lines.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "common/tags/outer_tags.h"
#include "common/tags/tag_texts.h"
#include "common/text/text.h"
#include "common/text/text_codes.h"
#include "container/realaudio_header.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint32_t look_size = 1024; // header and texts
constexpr uint32_t seconds_per_minute = 60;
constexpr uint32_t bits_limit = 64; // this and more is nonsense

// Takes the counted text at `*at` and steps over it.
void take_text(Bytes start, uint32_t end, uint32_t* at, TagText& field) {
    const size_t limit = std::min<size_t>(end, start.size());
    if (*at >= limit) {
        return;
    }
    const uint32_t length = start[*at];
    if (length <= limit - *at - 1) {
        unknown_to_utf8(text_of(start.subspan(*at + 1, length)), field);
    }
    *at += 1 + length;
}

void set_figures(const RealAudioHeader& header, int64_t available, ZatStream* stream) {
    realaudio_facts(header, stream);
    stream->bit_rate = uint64_t{header.bytes_per_minute} * 8 / seconds_per_minute;
    drop_nonsense(stream);
    const uint64_t present = static_cast<uint64_t>(std::max<int64_t>(available, 0));
    const uint64_t data = header.data_size != 0 ? header.data_size : present;
    stream->bytes = std::min(data, present);
    if (header.bytes_per_minute != 0) {
        stream->duration = static_cast<double>(data) * seconds_per_minute / header.bytes_per_minute;
    }
}

// The form of RealMedia's lines, without what is not known.
void format_line(const RealAudioHeader& header, const ZatStream& stream, char (&line)[line_size]) {
    char name[256];
    real_codec_name(header.codec, name);
    format_text(line, sizeof line, "[%s]", name);
    if (stream.sample_rate != 0) {
        append_format(line, "%dHz", static_cast<int32_t>(stream.sample_rate));
    }
    if (header.bits != 0 && header.bits < bits_limit) {
        append_format(line, "%dbit", static_cast<int32_t>(header.bits));
    }
    if (stream.channels != 0) {
        append_format(line, "%dch", static_cast<int32_t>(stream.channels));
    }
    append_bit_rate(stream, line);
}

} // namespace

int AnalyzeRealAudioFile(FileRecord* file, const Output& out) {
    Reader reader;
    reader_open(&reader, file);
    const Span whole = span_behind_id3v2(&reader);
    const Bytes start = read_view(&reader, whole, 0, look_size);
    set_label(out.record, "%s", "[Real Audio]");
    RealAudioHeader header;
    if (!read_realaudio_header(start, &header)) {
        return 1;
    }
    const int64_t available = size_of(whole) - int64_t{header.header_size};
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    set_figures(header, available, &stream);
    TagTexts texts;
    uint32_t at = header.texts_at;
    take_text(start, header.header_size, &at, texts.title);
    take_text(start, header.header_size, &at, texts.artist);

    char line[line_size];
    format_line(header, stream, line);
    add_stream_line(out, stream, bounded_text(line));
    out.record->play_time = stream.duration;
    if (header.data_size > available) {
        ExtraLines extra;
        add_truncated_note(out, &extra, static_cast<uint64_t>(header.data_size - available));
        write_extra_lines(extra, out.record);
    }
    write_artist_and_title(texts, out);
    if (out.details != nullptr) {
        out.details->duration = stream.duration;
    }
    return 0;
}

} // namespace zat
