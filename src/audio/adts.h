// The ADTS header of an AAC frame (ISO/IEC 13818-7, 6.2.1) and its line.
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstdint>

namespace zat {

constexpr size_t adts_header_size = 7; // bytes

// Which facts stand in the brackets of the line.
enum AdtsLineStyle : uint32_t {
    adts_version_and_profile,
    adts_profile,
    adts_version,
    adts_name_only,
};

struct AdtsHeader {
    uint32_t version_flag = 0; // ID: 0 MPEG-4, 1 MPEG-2
    uint32_t profile = 0;
    uint32_t sampling_frequency_index = 0;
    uint32_t sample_rate = 0; // Hz
    uint32_t channel_configuration = 0;
    uint32_t frame_length = 0; // bytes, header included
    uint32_t bitrate = 0;      // bit/s of frames as long as this one
    uint32_t line_style = 0;   // an AdtsLineStyle, chosen by the caller
    bool estimated = false;    // length and rate are those of a part of the stream
};

// Samples per channel, by number_of_raw_data_blocks_in_frame; a block's where the header is cut.
constexpr uint32_t adts_frame_samples(Bytes frame) {
    return ((byte_at(frame, 6) & 3U) + 1) * 1024;
}

// Looks at two bytes.
bool IsAdtsSync(const uint8_t* bytes);

// Decodes the header at a frame's start; missing bytes count as zero. Returns 0, or -1 when the
// sample rate is a reserved one.
int ParseAdtsHeader(Bytes frame, AdtsHeader* header);

// Describes the stream.
void FormatAdtsLine(const AdtsHeader* header, char (&out)[line_size]);

} // namespace zat
