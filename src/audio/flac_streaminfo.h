// The stream information of FLAC (RFC 9639, 8.2).
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

constexpr size_t flac_streaminfo_size = 34;

struct FlacStreamInfo {
    uint32_t smallest_block = 0; // samples
    uint32_t largest_block = 0;
    uint32_t smallest_frame = 0; // bytes; 0: not known
    uint32_t largest_frame = 0;
    uint32_t sample_rate = 0; // Hz
    uint32_t channels = 0;
    uint32_t bits = 0;    // per sample
    uint64_t samples = 0; // per channel; 0: not known
    uint8_t md5[16] = {}; // of the samples; zeros: not known
};

// Reads a STREAMINFO block's content, without the block's header. A rate of 0 is for the caller to
// judge. False, and nothing is written, when it is cut off.
bool read_flac_streaminfo(Bytes block, FlacStreamInfo* info);

// The content of the STREAMINFO that metadata blocks start with, each behind its header of four
// bytes; empty when another block comes first.
Bytes flac_streaminfo_of_blocks(Bytes blocks);

} // namespace zat
