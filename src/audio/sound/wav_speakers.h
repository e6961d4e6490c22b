// The speakers that lines of WAVE files name.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t wav_speakers_size = 64; // bytes of a speaker text, terminator included

// The speakers of a channel mask (WAVEFORMATEXTENSIBLE, dwChannelMask), joined with "+": 0x3 gives
// "L+R". Bits from 18 on have no name; names that do not fit are left out from the first on.
void speakers_of_mask(uint32_t mask, char (&out)[wav_speakers_size]);

// The speakers that a number of channels has in the customary order; only the first nine have
// names.
void speakers_of_count(uint32_t channels, char (&out)[wav_speakers_size]);

} // namespace zat
