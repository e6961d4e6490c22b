// The identification header of a Vorbis stream (Vorbis I, 4.2.2).
#pragma once

#include "common/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// Describes the stream whose audio_channels field stands at `offset`; fields behind the end of the
// bytes read as zero. `out` has line_size bytes; `bitrate` takes the bit/s that the line shows.
void FormatVorbisLine(Bytes bytes, size_t offset, char* out, uint32_t* bitrate);

} // namespace zat
