// When the pictures of MPEG-4 Visual are shown (ISO/IEC 14496-2, 6.2.4, 6.2.5 and 6.3.5).
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

constexpr uint8_t vop_start_code = 0xB6; // 6.2.1

// The seconds that the pictures of a stream count from.
struct Mpeg4Clock {
    uint16_t resolution = 0;    // ticks per second, by the video object layer
    int64_t seconds = 0;        // of the last picture that others refer to
    int64_t seconds_before = 0; // of the one before it: what pictures between the two count from
};

// Reads what follows the start code of a picture and moves the clock. Returns its time in ticks, or
// -1 when it is cut or none can be told.
int64_t read_mpeg4_time(Mpeg4Clock* clock, Bytes behind);

// Sets the clock by what follows the start code of a group of pictures.
void read_mpeg4_group(Mpeg4Clock* clock, Bytes behind);

} // namespace zat
