// The ADTS header of an AAC frame (ISO/IEC 13818-7, 6.2.1) and its line.
#pragma once

#include <cstdint>

namespace zat {

constexpr int adts_header_size = 7;        // bytes
constexpr int transport_packet_size = 188; // bytes that FindAdtsInPes looks at, at most

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
    uint32_t sample_rate = 0; // Hz
    uint32_t channel_configuration = 0;
    uint32_t frame_length = 0; // bytes, header included
    uint32_t bitrate = 0;      // bit/s of frames as long as this one
    uint32_t line_style = 0;   // an AdtsLineStyle, chosen by the caller
};

// Looks at two bytes.
bool IsAdtsSync(const uint8_t* bytes);

// Decodes adts_header_size bytes. Returns 0, or -1 when the sample rate is a reserved one.
int ParseAdtsHeader(const uint8_t* bytes, AdtsHeader* header);

// Describes the stream: `out` has line_size bytes.
void FormatAdtsLine(char* out, const AdtsHeader* header);

// Offset of the first ADTS header behind the audio PES header of a transport packet, which has
// transport_packet_size bytes; -1 when there is none among the first 176.
int FindAdtsInPes(const uint8_t* packet);

} // namespace zat
