// The blocks of WavPack 4 and 5 and what the first of them tell of the stream.
#pragma once

#include "common/bytes/bytes.h"
#include "common/file/reader.h"

#include <cstdint>

namespace zat {

constexpr uint32_t wavpack_header_size = 32; // bytes
constexpr uint64_t wavpack_unknown_total = UINT64_MAX;

// Flags of a block.
constexpr uint32_t wavpack_mono = 1U << 2;
constexpr uint32_t wavpack_hybrid = 1U << 3;
constexpr uint32_t wavpack_float = 1U << 7;
constexpr uint32_t wavpack_final = 1U << 12; // of the streams of one stretch
constexpr uint32_t wavpack_dsd = 1U << 31;

struct WavPackBlock {
    uint16_t version = 0; // of the stream: 0x402 to 0x410
    int64_t size = 0;     // bytes, header included
    uint64_t total = 0;   // samples of the file, or wavpack_unknown_total
    uint64_t index = 0;   // first sample
    uint32_t samples = 0; // 0: only metadata
    uint32_t flags = 0;
};

// Reads the 32 bytes of a header. False when they are none that the format allows.
bool read_wavpack_block(Bytes header, WavPackBlock* block);

// What the sub-blocks of the first blocks tell.
struct WavPackStream {
    bool has_config = false;
    uint32_t config = 0;      // flags
    uint32_t extra_level = 0; // 0: not told
    bool version_5 = false;
    uint32_t sample_rate = 0; // Hz, where it is none of the usual ones
    uint32_t channels = 0;    // 0: not told
    uint32_t channel_mask = 0;
    int32_t dsd_power = -1; // -1: none
    uint8_t float_flags = 0;
    uint8_t int32_bits = 0; // low bits that are sent apart
    bool has_audio = false;
    bool has_correction = false; // of a .wvc file
    bool has_extension = false;  // the bits that integers and floats have beyond 24
};

// Reads the sub-blocks of a block.
void read_wavpack_sub_blocks(Reader* reader, Span block, WavPackStream* stream);

} // namespace zat
