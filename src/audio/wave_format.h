// WAVEFORMATEX and WAVEFORMATEXTENSIBLE, the description of an audio stream in RIFF WAVE, AVI, ASF,
// Matroska and QuickTime files (Microsoft, "Multiple channel audio data and WAVE files").
#pragma once

#include "common/bytes/bytes.h"
#include "common/catalogue/codec_catalogue.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr uint16_t wave_tag_pcm = 0x0001;
constexpr uint16_t wave_tag_ms_adpcm = 0x0002;
constexpr uint16_t wave_tag_ima_adpcm = 0x0011;
constexpr uint16_t wave_tag_mpeg = 0x0050;
constexpr uint16_t wave_tag_mpeg_layer3 = 0x0055;
constexpr uint16_t wave_tag_extensible = 0xFFFE;

constexpr size_t wave_plain_size = 16;      // bytes up to bits_per_sample
constexpr size_t wave_extensible_size = 40; // bytes up to the GUID's end

constexpr size_t guid_size = 16;      // bytes
constexpr size_t guid_text_size = 37; // bytes, terminator included

struct WaveFormat {
    uint16_t tag = 0;
    uint16_t channels = 0;
    uint32_t sample_rate = 0; // Hz
    uint32_t byte_rate = 0;   // bytes per second
    uint16_t block_align = 0; // bytes
    uint16_t bits_per_sample = 0;
    uint16_t extension_size = 0; // bytes that are said to follow
    // Of the extensible format; other extensions have other fields in their place.
    uint16_t valid_bits = 0;
    uint32_t channel_mask = 0;
    uint8_t guid[guid_size] = {};
};

// Fields behind the end of the bytes are 0.
WaveFormat read_wave_format(Bytes bytes);

// The tag, of an extensible format the one that its GUID stands for; wave_tag_extensible for a GUID
// of another kind.
uint16_t codec_tag(const WaveFormat& format);

// Bytes of one sample of every channel, in a format whose blocks are such. An alignment that
// contradicts the other fields is taken for wrong.
uint32_t sample_block_size(const WaveFormat& format);

// What the catalogue calls a format by its tag, or by the GUID of one that is extensible.
void wave_tag_name(uint16_t tag, char (&out)[codec_name_size]);
void wave_guid_name(const uint8_t* guid, char (&out)[codec_name_size]);

// The text of a GUID as it stands in a file (guid_size bytes, its first three numbers
// little-endian), in the registry's layout without braces: "00000001-0000-0010-8000-00AA00389B71".
void guid_text(const uint8_t* guid, char (&out)[guid_text_size]);

} // namespace zat
