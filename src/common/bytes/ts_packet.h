// Packets of transport streams (ISO/IEC 13818-1, 2.4.3).
#pragma once

#include <cstdint>

namespace zat {

constexpr uint32_t ts_packet_size = 188;
constexpr uint32_t timestamped_packet_size = 192; // with a time stamp of four bytes in front

} // namespace zat
