// MPEG audio and video streams without a file header.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

// MPEG audio behind a big-endian length of four bytes, 0x100 to 0x1FF. Returns the position of the
// frame sync, 0 without one.
int64_t WrappedMp3Check(Bytes bytes);

enum class MpegAudioMode { at_start, search };

// MpegAudioCheck looks for frames that begin among this many bytes, and at no byte from
// mpeg_audio_reach on.
constexpr uint32_t mpeg_audio_positions = 5117;
constexpr uint32_t mpeg_audio_reach = 7168;

// Position of the first frame header that decodes with a second one exactly a frame behind it, or
// -1. In the mode at_start only position 0 counts.
int64_t MpegAudioCheck(Bytes bytes, MpegAudioMode mode);

// Position of the last sequence header start code with a start code prefix 76 bytes behind it (12
// bytes of header and one quantiser matrix of 64: ISO/IEC 13818-2, 6.2.2.1), or -1.
int64_t MpegSequenceCheck(Bytes bytes);

} // namespace zat
