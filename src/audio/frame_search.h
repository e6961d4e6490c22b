// Where audio frames begin in a stream that is cut at any place: a header counts when another one
// like it stands where its frame ends.
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

enum class FrameKind : uint8_t { mpeg_audio, adts, ac3, dts };

// Bytes of the frame whose header stands at the front; 0 when none does or the header does not
// tell.
uint32_t audio_frame_size(FrameKind kind, Bytes bytes);

// Whether two headers, each with at least 8 bytes from it on, may be of one stream: what all frames
// of a stream share is the same.
bool same_stream(FrameKind kind, Bytes first, Bytes second);

// Offset of the first frame that another one follows, else of the first one whose end lies behind
// the bytes; -1 without either.
int64_t find_audio_frame(FrameKind kind, Bytes bytes);

// Samples per channel of a frame; 0 when the header does not tell.
uint32_t audio_frame_samples(FrameKind kind, Bytes bytes);

} // namespace zat
