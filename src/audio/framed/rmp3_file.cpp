#include "audio/framed/rmp3_file.h"

#include "audio/mpeg_audio.h"
#include "audio/stream_facts.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "common/tags/info_list.h"
#include "common/tags/outer_tags.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// Describes the frame at the start of a "data" chunk, which reaches from there to the file's end.
// Returns 1 when nothing stands there or the file does not hold the whole frame; a header that does
// not decode leaves a line that shows it.
int read_data_chunk(Reader* reader, Span data, MpegAudioInfo* info) {
    const Bytes start = read_view(reader, data, 0, mpeg_audio_header_size);
    if (start.empty()) {
        return 1;
    }
    *info = {};
    (void)read_mpeg_audio_header(start, info);
    if (info->frame_size > size_of(data)) {
        return 1;
    }
    const uint32_t wanted = std::min(info->frame_size, vbr_header_reach);
    const Bytes frame = read_view(reader, data, 0, wanted);
    if (frame.size() < wanted) {
        return 1;
    }
    (void)ParseVbrHeader(frame, info);
    return 0;
}

struct Rmp3 {
    MpegAudioInfo info;
    Span data;                       // of the last "data" chunk
    Span info_list;                  // chunks of the last list
    Span id3v1;                      // empty without that tag
    char annotation[line_size] = ""; // notes on the chunks
};

// Walks the chunks. Returns 1 when a chunk header or the first frame is cut off.
int WalkRmp3Chunks(Reader* reader, Rmp3* rmp3) {
    const Span file = whole_file(reader);
    Span space = sub_span(file, riff_header_size);
    bool after_odd = false;
    while (size_of(space) != 0) {
        Chunk chunk;
        if (!next_chunk(reader, &space, &chunk)) {
            if (reader->limited) {
                break;
            }
            return 1;
        }
        if (chunk.id == fourcc("LIST")) {
            AppendWithSeparator(
                rmp3->annotation, after_odd ? "+SI(INFOTAG)" : "SI(INFOTAG)", separator_comma);
            rmp3->info_list = sub_span(chunk.payload, list_type_size);
        } else if (chunk.id == fourcc("data")) {
            rmp3->data = chunk.payload;
            const Span rest = sub_span(file, chunk.payload.start);
            if (read_data_chunk(reader, rest, &rmp3->info) != 0) {
                return 1;
            }
        }
        after_odd = chunk.size % 2 != 0;
    }
    reader_allow(reader, walk_allowance);
    if (has_at(read_view(reader, file, file.end - id3v1_size, 3), 0, "TAG")) {
        rmp3->id3v1 = sub_span(file, file.end - id3v1_size);
        AppendWithSeparator(rmp3->annotation, "ID3v1", separator_comma);
    }
    return 0;
}

void write_details(Reader* reader, const Rmp3& rmp3, const ZatStream& stream, ZatDetails* details) {
    TagTexts texts;
    TagText writer = {};
    read_info_list(reader, rmp3.info_list, &texts, writer);
    TagTexts id3v1;
    read_id3v1_texts(reader, rmp3.id3v1, &id3v1);
    complete_texts(&texts, id3v1);
    tag_details(texts, details);
    copy_utf8(details->writer, bounded_text(writer));
    copy_utf8(details->format, "RMP3");
    details->duration = stream.duration;
    details->estimated = stream.estimated & uint32_t{ZAT_ESTIMATED_DURATION};
}

} // namespace

int AnalyzeRmp3File(FileRecord* file, const Output& out) {
    InfoRecord* record = out.record;
    Rmp3 rmp3;
    Reader reader;
    reader_open(&reader, file);
    const int result = WalkRmp3Chunks(&reader, &rmp3);
    note_work_limit(out, reader);
    if (result != 0) {
        return 0;
    }
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    if (out.details != nullptr) {
        mpeg_audio_facts(rmp3.info, &stream);
        complete_by_bytes(size_of(rmp3.data), &stream);
        write_details(&reader, rmp3, stream, out.details);
    }
    char line[line_size];
    FormatMpegAudioLine(&rmp3.info, line);
    set_stream_line(out, stream, line);
    copy_text(record->extra[0], rmp3.annotation);
    record->extra_count = 1;
    const int bytes_per_second = rmp3.info.bitrate * 1000 / 8;
    if (bytes_per_second != 0) {
        record->play_time = static_cast<double>(file->size) / bytes_per_second;
    }
    set_label(record, "RIFF(RMP3)");
    return 0;
}

} // namespace zat
