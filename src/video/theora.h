// The identification header of a Theora stream (Theora I, 6.2).
#pragma once

#include "common/bytes/bytes.h"
#include "common/record/details.h"

#include <cstdint>

namespace zat {

struct TheoraHead {
    uint8_t version[3] = {};
    uint32_t width = 0; // pixels of the picture region
    uint32_t height = 0;
    uint32_t rate_numerator = 0;
    uint32_t rate_denominator = 0;
    uint32_t aspect_numerator = 0; // of a pixel; 0: not told
    uint32_t aspect_denominator = 0;
    uint32_t bit_rate = 0; // bit/s aimed at; 0: not told
    uint32_t granule_shift = 0;
    uint32_t pixel_format = 0;
};

// False, and nothing is written, when the packet is another one or cut off.
bool read_theora_head(Bytes packet, TheoraHead* head);

// Frames up to the one that a granule position names.
int64_t theora_frames(const TheoraHead& head, int64_t granule);

// "Theora 3.2.1"
void theora_codec_text(const TheoraHead& head, char* out, size_t size);

void set_theora_facts(const TheoraHead& head, ZatStream* stream);

} // namespace zat
