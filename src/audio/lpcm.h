// Linear PCM as DVD-Video (private stream 1 of a program stream) and Blu-ray (PES payloads of a
// transport stream) carry it.
#pragma once

#include <cstdint>

namespace zat {

struct LpcmInfo {
    int32_t sample_rate = 0; // Hz; 0 when unknown
    int8_t channels = 0;     // 0 when unknown
    int8_t bits = 0;         // per sample; when unknown -1 (DVD) or 0 (Blu-ray)
    int32_t byte_rate = 0;   // bytes per second, with whole bytes per sample: 20 bits count as 2
    char layout[32] = {};    // channel assignment, Blu-ray only
};

// `attr` points at the byte of quantization, sampling frequency and channel count. Always 0.
int dvd_lpcm_info(const uint8_t* attr, LpcmInfo* info);

// `header` points at the four bytes that start the PES payload. Always 0.
int bd_lpcm_info(const uint8_t* header, LpcmInfo* info);

// Describe the stream: `out` has line_size bytes.
void dvd_lpcm_line(const LpcmInfo* info, char* out);
void bd_lpcm_line(const LpcmInfo* info, char* out);

} // namespace zat
