#include "audio/framed/mp3_details.h"

#include "audio/framed/frame_count.h"
#include "audio/stream_facts.h"
#include "common/record/details.h"
#include "common/tags/tag_lines.h"

#include <algorithm>

namespace zat {

namespace {

bool read_header(Bytes bytes, MpegAudioInfo* info) {
    return bytes.size() >= mpeg_audio_header_size && IsMpegAudioSync(bytes.data()) &&
           read_mpeg_audio_header(bytes, info) == 0;
}

bool read_frame(Reader* reader, int64_t position, MpegAudioInfo* info) {
    *info = {};
    const Bytes frame =
        read_view(reader, sub_span(whole_file(reader), position), 0, vbr_header_reach);
    if (!read_header(frame, info)) {
        return false;
    }
    (void)ParseVbrHeader(frame, info);
    return true;
}

bool read_counted_frame(Bytes bytes, AudioFrame* frame) {
    MpegAudioInfo info{};
    if (!read_header(bytes, &info) || info.frame_size == 0) { // 0: of free format
        return false;
    }
    *frame = {info.frame_size, mpeg_audio_frame_samples(&info)};
    return true;
}

int64_t find_counted_frames(Bytes bytes) {
    AudioFrame frame;
    AudioFrame next;
    for (size_t at = 0; at < bytes.size(); ++at) {
        if (bytes[at] == 0xFF && read_counted_frame(bytes.subspan(at), &frame) &&
            read_counted_frame(bytes.subspan(std::min(at + frame.size, bytes.size())), &next)) {
            return static_cast<int64_t>(at);
        }
    }
    return -1;
}

constexpr FrameFormat counted_frames = {
    mpeg_audio_header_size, read_counted_frame, find_counted_frames};

// Whether frames at the stream's start have other rates than the first.
bool rate_varies(Reader* reader, Span stream, int16_t bitrate) {
    constexpr uint32_t reach = 4096; // bytes that are at hand
    Bytes rest = read_view(reader, stream, 0, reach);
    MpegAudioInfo info{};
    while (read_header(rest, &info) && info.frame_size != 0) {
        if (info.bitrate != bitrate) {
            return true;
        }
        rest = rest.subspan(std::min<size_t>(info.frame_size, rest.size()));
    }
    return false;
}

// Of a variable rate that no header tells, the frames tell time and mean rate.
void count_variable_frames(Reader* reader, Span stream, int16_t bitrate, ZatStream* facts) {
    if (facts->sample_rate == 0 || !rate_varies(reader, stream, bitrate)) {
        return;
    }
    const FrameCount count = count_frames(reader, stream, counted_frames, Counting::may_sample);
    if (count.samples != 0) {
        facts->bit_rate_mode = ZAT_BIT_RATE_VARIABLE;
        set_counted(count, size_of(stream), 1, facts);
    }
}

} // namespace

void read_tag_details(Reader* reader, const OuterTags& tags, ZatDetails* details) {
    TagTexts texts;
    complete_by_tags(reader, tags, {}, {}, &texts);
    tag_details(texts, details);
}

void read_mp3_facts(
    Reader* reader, const OuterTags& tags, int64_t start, ZatStream* stream, ZatDetails* details) {
    MpegAudioInfo info;
    // A frame that counts the others is the first one, also when the search preferred a later pair.
    if (read_frame(reader, tags.stream.start, &info) && info.frame_count != 0) {
        start = tags.stream.start;
    } else if (!read_frame(reader, start, &info)) {
        return;
    }
    mpeg_audio_facts(info, stream);
    const int64_t present = tags.stream.end - start;
    if (info.frame_count == 0) {
        const Span frames = sub_span(whole_file(reader), start, present);
        count_variable_frames(reader, frames, info.bitrate, stream);
    }
    complete_by_bytes(present, stream);
    // The duration is that of the frames that the header counts, so it tells of its bytes too.
    if (info.frame_count != 0 && int64_t{info.byte_count} > present) {
        note_missing_bytes(details, static_cast<uint64_t>(int64_t{info.byte_count} - present));
    }
}

} // namespace zat
