#include "container/ogg.h"

#include "common/record/details.h"
#include "common/record/extra_info.h"
#include "common/record/extra_lines.h"
#include "common/record/record_lines.h"
#include "common/text/messages.h"
#include "container/ogg/comments.h"
#include "container/ogg/describe.h"
#include "container/ogg/walk.h"

namespace zat {

namespace {

using namespace ogg;

void write_notes(const Walk& walk, const Output& out, ExtraLines* extra) {
    if (walk.missing != 0) {
        add_truncated_note(out, extra, walk.missing);
    } else if (walk.cut_header) {
        add_note(out, extra, "truncated");
    }
    if (walk.links > 1) {
        add_note(out, extra, walk.counted ? "chained(%d)" : "chained", walk.links);
    }
    for (int32_t i = 0; i < walk.first.count; ++i) {
        if (joined_late(walk.first.streams[i])) {
            add_note(out, extra, "joined");
            break;
        }
    }
    if (walk.trailing != 0) {
        add_trailing_data_note(out, extra, walk.trailing);
    }
    if (walk.estimated) {
        add_note(out, extra, "time estimated");
    }
    note_work_limit(out, walk.reader);
}

// Artist, title and writer of the first stream that tells one of them; chapters of all.
struct FileTexts {
    TagTexts texts;
    char writer[256] = {};
    uint32_t chapters = 0;
};

void take_comments(const StreamComments& comments, FileTexts* file) {
    complete_texts(&file->texts, comments.texts);
    if (file->writer[0] == '\0') {
        copy_utf8(file->writer, comments.writer);
    }
    file->chapters += comments.chapters;
}

void describe_streams(Walk* walk, const Output& out, ExtraLines* extra, FileTexts* texts) {
    bool ogm = false;
    for (int32_t i = 0; i < walk->first.count; ++i) {
        const LogicalStream& stream = walk->first.streams[i];
        ogm |= stream.coding == Coding::ogm_video || stream.coding == Coding::ogm_audio ||
               stream.coding == Coding::ogm_text;
        if (stream.coding == Coding::skeleton) {
            continue;
        }
        StreamComments comments;
        read_comments(&walk->reader, stream, &comments);
        describe_stream(walk, stream, comments, out, extra);
        take_comments(comments, texts);
    }
    set_label(out.record, ogm ? "[Ogg(OGM)]" : "[Ogg]");
}

} // namespace

int AnalyzeOggFile(FileRecord* file, const Output& out) {
    Walk walk;
    if (!walk_file(file, is_thorough(*out.record), &walk)) {
        return 1;
    }
    out.record->data_size = static_cast<uint64_t>(file->size - walk.start);
    out.record->play_time = link_seconds(walk.first) + walk.later_seconds;
    ExtraLines extra;
    FileTexts texts;
    describe_streams(&walk, out, &extra, &texts);
    write_artist_and_title(texts.texts, out);
    append_writer(out, texts.writer);
    if (texts.chapters != 0) {
        add_fact(&extra, message::chapters, static_cast<int32_t>(texts.chapters));
    }
    write_notes(walk, out, &extra);
    write_extra_lines(extra, out.record);
    if (out.details != nullptr) {
        copy_utf8(out.details->format, "Ogg");
        out.details->chapters = texts.chapters;
        out.details->pictures = texts.texts.pictures;
        out.details->estimated = walk.estimated ? uint32_t{ZAT_ESTIMATED_DURATION} : 0;
    }
    return 0;
}

} // namespace zat
