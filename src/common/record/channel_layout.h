// Names of speakers by the bits of a channel mask (WAVEFORMATEXTENSIBLE.dwChannelMask).
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

// Two speakers that WSD has beside those of WAVE, in bits that WAVE reserves.
constexpr uint32_t speaker_back_left_of_center = 1U << 18;
constexpr uint32_t speaker_back_right_of_center = 1U << 19;

constexpr size_t layout_size = 128; // bytes, terminator included

// The usual mask for a number of channels, 0 for none or more than eight.
uint32_t default_channel_mask(uint32_t channels);

// As lines show it: "L+R+C+LFE". Empty unless every channel has a name, and for plain mono and
// stereo.
void line_layout(uint32_t mask, uint32_t channels, char (&out)[layout_size]);

// As details give it: "L R C LFE Ls Rs". Empty unless every channel has a name.
void details_layout(uint32_t mask, uint32_t channels, char (&out)[layout_size]);

} // namespace zat
