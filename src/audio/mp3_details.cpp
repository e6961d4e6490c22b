#include "audio/mp3_details.h"

#include "audio/stream_facts.h"
#include "common/tag_lines.h"

#include <algorithm>

namespace zat {

namespace {

bool read_frame(Reader* reader, int64_t position, MpegAudioInfo* info) {
    *info = {};
    const Bytes frame =
        read_view(reader, sub_span(whole_file(reader), position), 0, vbr_header_reach);
    if (frame.size() < mpeg_audio_header_size || !IsMpegAudioSync(frame.data()) ||
        read_mpeg_audio_header(frame, info) != 0) {
        return false;
    }
    (void)ParseVbrHeader(frame.first(std::min<size_t>(frame.size(), info->frame_size)), info);
    return true;
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
    complete_by_bytes(present, stream);
    // The duration is that of the frames that the header counts, so it tells of its bytes too.
    if (info.frame_count != 0 && int64_t{info.byte_count} > present) {
        details->missing_bytes = static_cast<uint64_t>(int64_t{info.byte_count} - present);
        note_details(details, "truncated");
    }
}

} // namespace zat
