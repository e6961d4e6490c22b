// The shape of pictures as a container tells it, which counts over what the stream itself says.
#pragma once

#include "video/avc_sps.h"
#include "zat/details.h"

#include <cstdint>

namespace zat {

// Sets the aspects of a stream whose size is set to those of a display of that shape. A sample
// aspect within 0.5 % of the stream's own, or of one that ITU-T H.264 (table E-1) has a code for,
// is taken for it: containers round.
void set_container_aspect(ZatStream* stream, uint64_t display_width, uint64_t display_height);

// Replaces the sample aspect by the stream's, which a container set.
void set_aspect_text(const ZatStream& stream, AvcSequenceInfo* info);

// Whether the samples are more than 1 % away from square.
bool is_stretched(const ZatStream& stream);

struct DisplaySize {
    uint32_t width = 0;
    uint32_t height = 0;
};

// The size on square samples, the height as it is; 0 for pictures of unknown shape.
DisplaySize square_size(const ZatStream& stream);

} // namespace zat
