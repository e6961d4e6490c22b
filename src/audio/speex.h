// The header of a Speex stream (The Speex Codec Manual, 7.2).
#pragma once

#include "common/bytes/bytes.h"
#include "common/record/details.h"

#include <cstdint>

namespace zat {

struct SpeexHead {
    char version[21] = {};    // the encoder's: "1.2.1"
    uint32_t sample_rate = 0; // Hz
    uint32_t mode = 0;        // 0 narrowband, 1 wideband, 2 ultra-wideband
    uint32_t channels = 0;
    int32_t bit_rate = 0;       // bit/s; not above 0 when the encoder leaves it open
    uint32_t frame_samples = 0; // per frame
    uint32_t packet_frames = 0; // frames per packet
    uint32_t extra_headers = 0; // packets behind the comment
    bool variable = false;
};

// False, and nothing is written, when the packet is another one or cut off.
bool read_speex_head(Bytes packet, SpeexHead* head);

// "Speex 1.2.1 narrowband"
void speex_codec_text(const SpeexHead& head, char* out, size_t size);

void set_speex_facts(const SpeexHead& head, ZatStream* stream);

} // namespace zat
