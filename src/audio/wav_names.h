// Texts for the codes of WAVE formats.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t wav_speakers_size = 64; // bytes of a speaker text, terminator included
constexpr size_t wav_guid_size = 37;     // bytes of a GUID text, terminator included

// The speakers of a channel mask (WAVEFORMATEXTENSIBLE, dwChannelMask), joined with "+": 0x3 gives
// "L+R". Bits from 18 on have no name; names that do not fit are left out from the first on.
void speakers_of_mask(uint32_t mask, char* out);

// The speakers that a number of channels has in the customary order; only the first nine have
// names.
void speakers_of_count(uint32_t channels, char* out);

// The text of a GUID as it stands in a file (16 bytes, its first three numbers little-endian), in
// the registry's layout without braces: "00000001-0000-0010-8000-00AA00389B71".
void guid_text(const uint8_t* guid, char* out);

} // namespace zat
