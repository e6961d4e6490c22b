// AudioSpecificConfig, the configuration of MPEG-4 audio (ISO/IEC 14496-3, 1.6.2.1).
#pragma once

#include "common/bytes/bits.h"

#include <cstdint>

namespace zat {

// Audio object types (ISO/IEC 14496-3, table 1.17).
constexpr uint32_t object_type_aac_lc = 2;
constexpr uint32_t object_type_sbr = 5;
constexpr uint32_t object_type_ps = 29;
constexpr uint32_t object_type_usac = 42;

struct AudioSpecificConfig {
    uint32_t object_type = 0; // of the core
    uint32_t sample_rate = 0; // Hz, of the core; 0 when reserved
    uint32_t channel_configuration = 0;
    uint32_t channels = 0;        // of the core, the LFE counted; 0 when not told
    bool sbr = false;             // announced, not implied
    bool ps = false;              // the same
    uint32_t sbr_sample_rate = 0; // Hz, behind SBR
};

// Decodes the configuration at the cursor. It ends at the bit `end`, where the SBR extension may
// stand; with an end of 0 it is one that ends by itself. False when it is cut off or of an object
// type that cannot be stepped over; what was decoded before stands.
bool read_audio_specific_config(BitReader* reader, size_t end, AudioSpecificConfig* config);

// The same for bytes that hold nothing else.
bool read_audio_specific_config(Bytes bytes, AudioSpecificConfig* config);

// program_config_element (4.5.1.2), which lists the channels where no channel configuration does.
struct ProgramConfig {
    uint32_t object_type = 0;
    uint32_t sample_rate = 0;           // Hz; 0 when reserved
    uint32_t channels = 0;              // the LFE counted
    uint32_t channel_configuration = 0; // of these very channels; 0 when there is none
};

// Decodes the element at the cursor; its bytes are aligned to the bit `start`.
ProgramConfig read_program_config(BitReader* reader, size_t start);

constexpr uint32_t sbr_sync_extension = 0x2B7; // syncExtensionType

// Hz by samplingFrequencyIndex (table 1.18); 0 for reserved indices and the explicit rate.
uint32_t aac_sample_rate(uint32_t index);

// Channels by channelConfiguration (table 1.19); 0 when it does not tell.
uint32_t aac_channels(uint32_t channel_configuration);

} // namespace zat
