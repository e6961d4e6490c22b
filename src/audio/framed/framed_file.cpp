#include "audio/framed/framed_file.h"

#include "common/record/details.h"
#include "common/record/extra_lines.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "common/tags/tag_lines.h"

namespace zat {

namespace {

// As many zeros may stand between tags and stream as detection steps over.
constexpr int64_t most_zeros = 2048;

void write_facts(FramedFile* framed, const Output& out) {
    TagTexts texts;
    complete_by_tags(&framed->reader, framed->tags, {}, {}, &texts);
    write_artist_and_title(texts, out);
    ExtraLines extra;
    add_tag_fact(&extra, {.outer = framed->tags, .inner_id3v2 = framed->count.tags});
    if (framed->count.cut) {
        add_note(out, &extra, "truncated");
    }
    if ((framed->facts.estimated & ZAT_ESTIMATED_DURATION) != 0) {
        add_note(out, &extra, "time estimated");
    }
    write_extra_lines(extra, out.record);
    note_work_limit(out, framed->reader);
}

} // namespace

void open_framed_file(FramedFile* framed, FileRecord* file) {
    reader_open(&framed->reader, file);
    framed->facts = new_stream(ZAT_STREAM_AUDIO);
    framed->tags = measure_outer_tags(&framed->reader);
    framed->stream = framed->tags.stream;
    const int64_t zeros =
        count_zeros(&framed->reader, sub_span(framed->stream, 0, most_zeros + 1), 0);
    if (zeros > 0 && zeros <= most_zeros) {
        framed->stream.start += zeros;
    }
}

Bytes framed_start(FramedFile* framed, uint32_t length) {
    return read_view(&framed->reader, framed->stream, 0, length);
}

bool count_framed_file(
    FramedFile* framed, const FrameFormat& format, const Output& out, uint32_t unit) {
    Counting counting = Counting::may_sample;
    if (is_thorough(*out.record)) {
        counting = Counting::exact;
        reader_allow(&framed->reader, table_allowance);
    }
    framed->count = count_frames(&framed->reader, framed->stream, format, counting);
    if (framed->count.samples == 0 || framed->facts.sample_rate == 0) {
        return false;
    }
    set_counted(framed->count, size_of(framed->stream), unit, &framed->facts);
    return true;
}

void name_framed_file(const Output& out, const char* label, std::string_view format) {
    set_label(out.record, "%s", label);
    if (out.details != nullptr) {
        copy_utf8(out.details->format, format);
    }
}

void write_framed_file(FramedFile* framed, const Output& out) {
    out.record->play_time = framed->facts.duration;
    if (out.details != nullptr) {
        out.details->estimated |= framed->facts.estimated & uint32_t{ZAT_ESTIMATED_DURATION};
    }
    add_stream_line(out, framed->facts, bounded_text(framed->line));
    write_facts(framed, out);
}

} // namespace zat
