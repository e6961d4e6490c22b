#include "audio/framed/mp3_file.h"

#include "audio/framed/mp3_details.h"
#include "common/file/file_window.h"
#include "common/record/record_lines.h"
#include "common/record/stream_lines.h"
#include "common/tags/outer_tags.h"
#include "common/tags/tag_sizes.h"
#include "common/text/messages.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// The first frame is looked for in this much of the file behind its tags.
constexpr uint32_t mp3_search_limit = 0x500000;

// What the walk through the file finds.
struct Mp3Stream {
    TagSizes tags;
    int64_t zeros = 0; // bytes between ID3v2 and the stream, -1 when nothing else follows
    int64_t start = 0; // file position of the first frame
    MpegAudioInfo info;
};

// Frame size of the header at an offset of the search window, 0 when none stands there. Decoding
// consumes the header's bytes in the window, so a header that was looked at hides whatever begins
// in its last three bytes from the rest of the search.
uint32_t take_frame_size(FileWindow* window, uint32_t offset) {
    window_load(window, offset + mpeg_audio_header_size);
    if (offset >= window->loaded || !IsMpegAudioSync(window->bytes + offset)) {
        return 0;
    }
    MpegAudioHeader info;
    const std::span<uint8_t, mpeg_audio_header_size> header(
        window->bytes + offset, mpeg_audio_header_size);
    return DecodeMpegAudioHeader(header, &info) == 0 ? info.frame_size : 0;
}

// Looks for a frame that is followed by another one. Returns its offset in the window; one more
// than the bytes that could be read when there is none.
uint32_t find_frame_pair(FileWindow* window) {
    for (uint32_t offset = 0;; ++offset) {
        if (offset == window->loaded && window_load(window, offset + 1) == offset) {
            return offset + 1;
        }
        const void* sync = std::memchr(window->bytes + offset, 0xFF, window->loaded - offset);
        if (sync == nullptr) {
            offset = window->loaded - 1;
            continue;
        }
        offset = static_cast<uint32_t>(static_cast<const uint8_t*>(sync) - window->bytes);
        const uint32_t size = take_frame_size(window, offset);
        if (size != 0 && take_frame_size(window, offset + size) != 0) {
            return offset;
        }
    }
}

// Finds the first frame behind the tags, sets the size of what stands before it and reads its
// header. Returns 0, or 1 when there is nothing behind the tags, or no memory to look there.
int find_stream(Reader* reader, Mp3Stream* stream, uint8_t (&header)[mpeg_audio_header_size]) {
    FileRecord* file = reader->block.file;
    const int64_t start = stream->tags.id3v2;
    stream->zeros = count_zeros(reader, whole_file(reader), start);
    if (stream->zeros < 0 || read_some(reader, whole_file(reader), start + stream->zeros, header,
                                 mpeg_audio_header_size) == 0) {
        return 1;
    }
    FileWindow window;
    window_open(&window, file, start,
        static_cast<uint32_t>(std::min<int64_t>(file->size, mp3_search_limit)));
    if (window_load(&window, 1) == 0) {
        return 1;
    }
    stream->tags.other = find_frame_pair(&window);
    if (window.no_memory) {
        return 1;
    }
    // Without a pair the bytes at the stream's start stay the best guess.
    stream->start = start + stream->zeros;
    if (stream->tags.other <= window.loaded) {
        stream->start = start + stream->tags.other;
        read_at(file, stream->start, header, mpeg_audio_header_size);
    }
    return 0;
}

// Reads the start of a frame at a position and looks for a VBR header in it. Returns 1 when the
// file does not hold the whole frame.
int read_vbr_header(Reader* reader, int64_t position, MpegAudioInfo* info) {
    const Span rest = sub_span(whole_file(reader), position);
    if (info->frame_size > size_of(rest)) {
        return 1;
    }
    const uint32_t wanted = std::min(info->frame_size, vbr_header_reach);
    const Bytes frame = read_view(reader, rest, 0, wanted);
    if (frame.size() < wanted) {
        return 1;
    }
    // Unusable counts leave a line that says so.
    (void)ParseVbrHeader(frame, info);
    return 0;
}

int read_stream(Reader* reader, Mp3Stream* stream) {
    (void)MeasureTags(reader, &stream->tags); // an unreadable tail has no tags
    uint8_t header[mpeg_audio_header_size] = {};
    if (find_stream(reader, stream, header) != 0 ||
        DecodeMpegAudioHeader(header, &stream->info) != 0) {
        return 1;
    }
    // The VBR header is looked for right behind ID3v2, even when the first frame stands later.
    return read_vbr_header(reader, stream->tags.id3v2, &stream->info);
}

double play_time(int64_t bytes, double kbits_per_second) {
    return static_cast<double>(bytes) / (kbits_per_second * 1000 * 0.125);
}

// Lists the tags in the first extra line. Those at the file's end but for ID3v1 are listed only
// behind another one.
void list_tags(const Mp3Stream* stream, InfoRecord* record) {
    const TagSizes& tags = stream->tags;
    char(&line)[line_size] = record->extra[0];
    char piece[64] = "";
    const auto add = [&](const char* format, uint32_t size) {
        format_text(piece, sizeof piece, format, static_cast<int32_t>(size));
        append_text(line, piece);
        record->extra_count = 1;
    };
    line[0] = '\0';
    if (tags.id3v2 != 0) {
        add(stream->zeros != 0 ? "ID3v2(%dByte)+" : "ID3v2(%dByte)", tags.id3v2);
    }
    if (tags.id3v1 != 0) {
        add(line[0] != '\0' ? ",ID3v1" : "ID3v1", 0);
    }
    if (tags.ape != 0 && piece[0] != '\0') {
        add(",ape", 0);
    }
    if (tags.ape_footer != 0 && piece[0] != '\0') {
        add(",apetag", 0);
    }
    if (tags.lyrics3 != 0 && piece[0] != '\0') {
        add(",LYRICS3(%dByte)", tags.lyrics3);
    }
    if (tags.other != 0) {
        if (piece[0] != '\0') {
            append_text(line, ",");
        }
        add(message::other_tag, tags.other);
    }
}

} // namespace

int AnalyzeMp3File(FileRecord* file, const Output& out) {
    InfoRecord* record = out.record;
    Reader reader;
    reader_open(&reader, file);
    Mp3Stream stream;
    const int result = read_stream(&reader, &stream);
    note_work_limit(out, reader);
    if (result != 0) {
        return 1;
    }
    ZatStream facts = new_stream(ZAT_STREAM_AUDIO);
    if (out.details != nullptr) {
        const OuterTags tags = measure_outer_tags(&reader);
        read_tag_details(&reader, tags, out.details);
        read_mp3_facts(&reader, tags, stream.start, &facts, out.details);
        copy_utf8(out.details->format, "MPEG audio");
        out.details->duration = facts.duration;
        out.details->estimated = facts.estimated & uint32_t{ZAT_ESTIMATED_DURATION};
    }
    char line[line_size];
    FormatMpegAudioLine(&stream.info, line);
    set_stream_line(out, facts, line);
    const double bitrate = stream.info.rate_mode == rate_mode_constant
                               ? stream.info.bitrate
                               : stream.info.average_bitrate;
    if (bitrate != 0) {
        const TagSizes& tags = stream.tags;
        record->play_time = play_time(file->size - tags.id3v2 - tags.id3v1 - tags.ape, bitrate);
    }
    list_tags(&stream, record);
    if (record->type_code == FILETYPE_SHOCKWAVEMP3) {
        add_extra_line(record, "ShockWave MP3");
    }
    return 0;
}

} // namespace zat
