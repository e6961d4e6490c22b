// Core Audio's description of the speakers of a sound, in AIFF's "CHAN" and QuickTime's "chan"
// (Apple Core Audio Format, "Channel Layout Chunk"): layout 4, the bits of its speakers 4, a number
// of descriptions 4, then for each a label 4, flags 4 and coordinates 12; all big-endian.
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

// Bytes that are enough for all channels that have names.
constexpr size_t apple_layout_size = 12 + 20 * 20;

// False for 0, which may still have descriptions.
bool apple_layout_is_told(Bytes layout);

// The bits of WAVE's channel mask; 0 for a layout that they cannot tell.
uint32_t apple_layout_mask(Bytes layout);

} // namespace zat
