// The identification header of a Vorbis stream (Vorbis I, 4.2.2).
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t vorbis_fields_offset = 11; // of audio_channels in the identification header

// Rates in bit/s; one that the encoder leaves open is all ones.
struct VorbisInfo {
    uint8_t channels = 0;
    uint32_t sample_rate = 0; // Hz
    uint32_t bitrate_maximum = 0;
    uint32_t bitrate_nominal = 0;
    uint32_t bitrate_minimum = 0;
};

// Decodes the fields from audio_channels on; those behind the end of the bytes read as zero.
void vorbis_info(Bytes fields, VorbisInfo* info);

// The bit/s that the line shows: the header's nominal rate, or the mean of its bounds.
uint32_t vorbis_bitrate(const VorbisInfo* info);

// Describes the stream, with a rate in bit/s: vorbis_bitrate's, or one from elsewhere.
void FormatVorbisLine(const VorbisInfo* info, uint32_t bitrate, char (&out)[line_size]);

} // namespace zat
