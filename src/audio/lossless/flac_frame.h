// The header of a FLAC frame (RFC 9639, 9.1).
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

constexpr size_t flac_frame_header_size = 16; // bytes at the most

struct FlacFrame {
    bool variable = false;    // `number` counts samples, else frames
    uint64_t number = 0;      // of the frame or of its first sample
    uint32_t block = 0;       // samples per channel
    uint32_t sample_rate = 0; // Hz; 0: as the stream information says
    uint32_t channels = 0;
    uint32_t bits = 0; // per sample; 0: as the stream information says
};

// Reads the header at the front. False when none with a right checksum stands there.
bool read_flac_frame(Bytes bytes, FlacFrame* frame);

} // namespace zat
