// Linear PCM as DVD-Video (private stream 1 of a program stream) and Blu-ray (PES payloads of a
// transport stream) carry it.
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstdint>

namespace zat {

struct LpcmInfo {
    int32_t sample_rate = 0; // Hz; 0 when unknown
    int32_t coded_rate = 0;  // Hz by all bits of the code, of which lines look at one on DVDs
    int8_t channels = 0;     // 0 when unknown
    int8_t bits = 0;         // per sample; when unknown -1 (DVD) or 0 (Blu-ray)
    int32_t byte_rate = 0;   // bytes per second, with whole bytes per sample: 20 bits count as 2
    uint8_t assignment = 0;  // channel assignment, Blu-ray only
    char layout[32] = {};    // its name
};

// `attribute` is the byte of quantization, sampling frequency and channel count. Always 0.
int dvd_lpcm_info(uint8_t attribute, LpcmInfo* info);

// Decodes the four bytes that start the PES payload; missing ones count as zero. Always 0.
int bd_lpcm_info(Bytes header, LpcmInfo* info);

// Describe the stream.
void dvd_lpcm_line(const LpcmInfo* info, char (&out)[line_size]);
void bd_lpcm_line(const LpcmInfo* info, char (&out)[line_size]);

} // namespace zat
