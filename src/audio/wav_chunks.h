// The chunks of a RIFF WAVE file (Multimedia Programming Interface and Data Specifications 1.0;
// WAVEFORMATEXTENSIBLE as in Microsoft's multiple channel audio data format).
#pragma once

#include "audio/wav_names.h"
#include "common/block_reader.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t wav_chain_size = 64; // bytes of the chunk chain, terminator included

constexpr uint16_t wav_tag_pcm = 0x0001;
constexpr uint16_t wav_tag_mpeg = 0x0050;
constexpr uint16_t wav_tag_mpeg_layer3 = 0x0055;
constexpr uint16_t wav_tag_extensible = 0xFFFE;

struct WavFormatInfo {
    uint32_t riff_size = 0;
    uint32_t data_size = 0;     // bytes that the last "data" chunk announces
    uint32_t data_position = 0; // file position of its first byte
    uint32_t fmt_size = 0;      // bytes that the last "fmt " chunk announces
    int8_t status = 0;          // -1: no RIFF WAVE file
    // The ids in file order: "[fmt ][data]+[LIST(INFOTAG)]". A "+" stands for zero bytes, mostly
    // the pad byte of a chunk of odd size.
    char chunk_chain[wav_chain_size] = {};
    // The first bytes of the first "bext" or "fact" chunk that does not begin with a zero byte;
    // without a terminator when all are used.
    char description[256] = {};
    bool is_extended_pcm = false; // PCM with an extension: valid_bits to sub_format are read
    bool beyond_2gb = false;      // the file goes on behind what the walk looks at

    uint16_t format_tag = 0;
    uint16_t channels = 0;
    uint32_t sample_rate = 0; // Hz
    uint32_t byte_rate = 0;   // bytes per second
    uint16_t block_align = 0; // bytes
    uint16_t bits_per_sample = 0;

    uint16_t valid_bits = 0;
    uint32_t channel_mask = 0;
    uint32_t sub_format = 0;               // the first four bytes of the GUID
    char speakers[wav_speakers_size] = {}; // extended PCM: by mask; extensible: by channel count
    char guid[wav_guid_size] = {};         // extensible formats only
};

// Walks all chunks up to 2 GB. Returns 0, or 1 when a chunk header is cut off; `info` holds what
// was read up to there. Fields that the file does not hold are 0.
int WalkWaveChunks(BlockReader* reader, WavFormatInfo* info);

} // namespace zat
