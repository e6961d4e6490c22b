// Which video a stream of start codes is: by its stream type, or by the codes.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

enum class VideoKind : uint8_t { unknown, mpeg, avc, mpeg4, vc1, hevc };

// By stream_type (ISO/IEC 13818-1, table 2-34).
VideoKind video_kind_of_type(uint8_t stream_type);

// By the headers in a part of the stream. What one kind writes between its start codes another may
// use as one, so that a kind counts only with a header that its own order confirms.
VideoKind guess_video_kind(Bytes stream);

struct VideoKindName {
    const char* line; // "MPEG2", "[AVC/H264]"
    const char* codec;
};
VideoKindName video_kind_name(VideoKind kind, bool mpeg2);

} // namespace zat
