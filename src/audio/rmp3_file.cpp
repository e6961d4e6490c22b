// RIFF files of form "RMP3": an MPEG audio stream in the "data" chunk.
#include "audio/mp3_file.h"
#include "audio/mpeg_audio.h"
#include "common/file_window.h"
#include "common/record_lines.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

constexpr int64_t riff_header_size = 12; // "RIFF", size, form type
constexpr uint32_t chunk_header_size = 8;
constexpr int64_t id3v1_size = 128;

// Describes the frame at the start of a "data" chunk. Returns 1 when nothing stands there or the
// file does not hold the whole frame; a header that does not decode leaves a line that shows it.
int read_data_chunk(FileWindow* window, int64_t position, MpegAudioInfo* info) {
    const Bytes start = window_view(window, position, mpeg_audio_header_size);
    if (start.empty()) {
        return 1;
    }
    uint8_t header[mpeg_audio_header_size] = {};
    std::copy(start.begin(), start.end(), header);
    *info = {};
    (void)DecodeMpegAudioHeader(header, info);
    if (info->frame_size > window->file->size - position) {
        return 1;
    }
    const uint32_t wanted = std::min(info->frame_size, vbr_header_reach);
    const Bytes frame = window_view(window, position, wanted);
    if (frame.size() < wanted) {
        return 1;
    }
    (void)ParseVbrHeader(frame, info);
    return 0;
}

// Walks the chunks; notes on them are joined in `annotation` (line_size bytes, cleared). Returns 1
// when a chunk header or the first frame is cut off.
int WalkRmp3Chunks(FileWindow* window, MpegAudioInfo* info, char* annotation) {
    const int64_t end = window->file->size;
    bool after_odd = false;
    for (int64_t position = riff_header_size; position < end;) {
        const Bytes header = window_view(window, position, chunk_header_size);
        if (header.size() < chunk_header_size) {
            return 1;
        }
        const uint32_t size = ReadLE32(header.data() + 4);
        position += chunk_header_size;
        if (starts_with(header.data(), "LIST")) {
            AppendWithSeparator(
                annotation, line_size, after_odd ? "+SI(INFOTAG)" : "SI(INFOTAG)", separator_comma);
        } else if (starts_with(header.data(), "data") &&
                   read_data_chunk(window, position, info) != 0) {
            return 1;
        }
        after_odd = size % 2 != 0;
        position += int64_t{size} + (after_odd ? 1 : 0);
    }
    if (end >= id3v1_size && has_at(window_view(window, end - id3v1_size, 4), 0, "TAG")) {
        AppendWithSeparator(annotation, line_size, "ID3v1", separator_comma);
    }
    return 0;
}

} // namespace

int AnalyzeRmp3File(FileRecord* file, const Output& out) {
    InfoRecord* record = out.record;
    MpegAudioInfo info;
    char annotation[line_size] = "";
    FileWindow window;
    window_open(&window, file, 0, FileWindow::first_size);
    if (WalkRmp3Chunks(&window, &info, annotation) != 0) {
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
