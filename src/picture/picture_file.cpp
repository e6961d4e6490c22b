#include "picture/picture_file.h"

#include "common/record/extra_lines.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "common/tags/outer_tags.h"

#include <algorithm>

namespace zat {

namespace {

void write_line(const PictureFile& picture, const Output& out) {
    char line[line_size];
    format_video_line(
        picture.facts, {.codec = bounded_text(picture.name), .bits = picture.bits}, line);
    if (picture.shows_chroma) {
        append_word(line, bounded_text(picture.facts.chroma));
    }
    add_stream_line(out, picture.facts, bounded_text(line));
}

void write_notes(const PictureFile& picture, const Output& out) {
    ExtraLines extra;
    if (picture.missing_bytes != 0) {
        add_truncated_note(out, &extra, picture.missing_bytes);
    } else if (picture.truncated) {
        add_note(out, &extra, "truncated");
    }
    if (picture.damaged) {
        add_note(out, &extra, "damaged header");
    }
    if ((picture.facts.estimated & ZAT_ESTIMATED_DURATION) != 0) {
        add_note(out, &extra, "time estimated");
    }
    if (picture.reader.limited) {
        add_note(out, &extra, "work limit");
    }
    write_extra_lines(extra, out.record);
}

} // namespace

void open_picture_file(PictureFile* picture, FileRecord* file) {
    reader_open(&picture->reader, file);
    picture->span = span_behind_id3v2(&picture->reader);
    picture->span.start += std::max<int64_t>(count_zeros(&picture->reader, picture->span, 0), 0);
    picture->facts = new_stream(ZAT_STREAM_VIDEO);
}

void add_picture_word(PictureFile* picture, std::string_view word) {
    if (!word.empty()) {
        AppendWithSeparator(picture->name, word, separator_space);
    }
}

void write_picture_file(PictureFile* picture, const char* label, const Output& out) {
    drop_nonsense(&picture->facts);
    set_label(out.record, "%s", label);
    out.record->play_time = picture->facts.duration;
    if (out.details != nullptr) {
        copy_utf8(out.details->format_profile, bounded_text(picture->format_profile));
        out.details->estimated |= picture->facts.estimated & ZAT_ESTIMATED_DURATION;
    }
    write_line(*picture, out);
    write_notes(*picture, out);
}

} // namespace zat
