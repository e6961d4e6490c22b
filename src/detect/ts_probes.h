// Transport streams (ISO/IEC 13818-1, 2.4.3), as packets of 188 bytes or of 192 with a time stamp
// of four bytes in front of each.
#pragma once

#include "common/bytes/bytes.h"
#include "common/bytes/ts_packet.h"

#include <cstdint>

namespace zat {

// TsFullCheck's result when `bytes` end before it could refuse: with more of them it might accept.
constexpr int64_t ts_wants_more = -2;

// Two sync bytes one packet apart, the first among the first five sync bytes. Returns the first
// packet's position and writes its size; -1 at a sixth sync byte, ts_wants_more when there is none.
int64_t TsFullCheck(Bytes bytes, uint32_t* packet_size);

// Two packets from the start on. Returns 0 and writes the packet size when accepted, else -1.
int TsTwoPacketCheck(Bytes bytes, uint32_t* packet_size);

// One packet of either size at the start. Returns 0 when accepted, else -1.
int TsOnePacketCheck(Bytes bytes);

} // namespace zat
