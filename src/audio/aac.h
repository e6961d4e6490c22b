// AAC as an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1) and the container around it describe it.
#pragma once

#include "common/bytes/bytes.h"
#include "common/text/text.h"

#include <cstddef>
#include <cstdint>

namespace zat {

struct AacConfig {
    uint32_t length = 0; // bytes of the AudioSpecificConfig

    // From the AudioSpecificConfig.
    uint8_t object_type = 0;
    uint8_t sampling_frequency_index = 0;
    uint8_t channel_configuration = 0;
    uint32_t sync_extension_type = 0; // sbr_sync_extension where there are extension fields
    uint8_t extension_object_type = 0;
    uint8_t sbr_flag = 0;
    uint32_t extension_sampling_frequency_index = 0;
    uint32_t sync_extension_type2 = 0;
    uint32_t ps_flag = 0;

    uint32_t ps_implicit_flag = 0; // set by ResolveAacChannels

    // From the container, filled by the caller before the line is made.
    uint32_t container_channels = 0;    // 0 when it does not tell
    uint32_t container_sample_rate = 0; // Hz
    uint32_t maximum_bitrate = 0;       // bit/s
    uint32_t average_bitrate = 0;       // bit/s
    uint32_t bit_depth = 0;
    uint32_t frame_size = 0; // bytes
};

// Decodes an AudioSpecificConfig; an empty one changes nothing but the length.
void GetAACConfig(Bytes bytes, AacConfig* cfg);

// The channel count for AacChannelName, 0 for a layout that has no name. May set the implicit PS
// flag.
uint32_t ResolveAacChannels(AacConfig* cfg);

// Name of a channel configuration.
const char* AacChannelName(uint32_t channel_configuration);

constexpr size_t aac_name_size = 64; // bytes, terminator included

// Writes the name of an audio object type.
void AacObjectTypeName(uint32_t object_type, char (&out)[aac_name_size]);

// The sample rate in Hz that the line shows: that of the configuration, doubled where SBR extends
// it; negative for reserved indices.
int32_t aac_config_rate(const AacConfig* cfg);

// Describes the stream, with the container's bits and a bit rate, known or not.
void FormatAacConfigLine(AacConfig* cfg, char (&out)[line_size]);

// The same, with bits and rates only where they are known.
void format_known_aac_line(AacConfig* cfg, char (&out)[line_size]);

} // namespace zat
