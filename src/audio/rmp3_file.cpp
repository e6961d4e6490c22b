// RIFF files of form "RMP3": an MPEG audio stream in the "data" chunk.
#include "audio/mp3_file.h"
#include "audio/mpeg_audio.h"
#include "common/details.h"
#include "common/record_lines.h"
#include "common/riff.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr int64_t id3v1_size = 128;

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

// Walks the chunks; notes on them are joined in `annotation` (line_size bytes, cleared). Returns 1
// when a chunk header or the first frame is cut off.
int WalkRmp3Chunks(Reader* reader, MpegAudioInfo* info, char* annotation) {
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
                annotation, line_size, after_odd ? "+SI(INFOTAG)" : "SI(INFOTAG)", separator_comma);
        } else if (chunk.id == fourcc("data") &&
                   read_data_chunk(reader, sub_span(file, chunk.payload.start), info) != 0) {
            return 1;
        }
        after_odd = chunk.size % 2 != 0;
    }
    reader_allow(reader, walk_allowance);
    if (has_at(read_view(reader, file, file.end - id3v1_size, 3), 0, "TAG")) {
        AppendWithSeparator(annotation, line_size, "ID3v1", separator_comma);
    }
    return 0;
}

} // namespace

int AnalyzeRmp3File(FileRecord* file, const Output& out) {
    InfoRecord* record = out.record;
    MpegAudioInfo info;
    char annotation[line_size] = "";
    Reader reader;
    reader_open(&reader, file);
    const int result = WalkRmp3Chunks(&reader, &info, annotation);
    note_work_limit(out, reader);
    if (result != 0) {
        return 0;
    }
    FormatMpegAudioLine(&info, record->audio[0]);
    record->audio_count = 1;
    copy_text(record->extra[0], annotation);
    record->extra_count = 1;
    const int bytes_per_second = info.bitrate * 1000 / 8;
    if (bytes_per_second != 0) {
        record->play_time = static_cast<double>(file->size) / bytes_per_second;
    }
    set_label(record, "RIFF(RMP3)");
    return 0;
}

} // namespace zat
