// Where in a payload the first audio frame begins.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

// Each gives the offset of the first sync word, or -1 when there is none.

// ISO/IEC 11172-3, 2.4.2.3, with the bit of MPEG-2.5: eleven set bits.
int64_t find_mpeg_audio_sync(Bytes buf);

// ATSC A/52, 5.4.1.1. A sync word with fewer than 8 bytes left from it on counts as none.
int64_t find_ac3_sync(Bytes buf);

// ETSI TS 102 114, 5.3.1: a core frame in big-endian words of 16 bits.
int64_t find_dts_sync(Bytes buf);

} // namespace zat
