// Checksums of headers and tables.
#pragma once

#include "common/bytes.h"

#include <cstdint>

namespace zat {

// CRC-32 of ISO 3309, as ZIP has it. `crc` is the sum of the bytes before.
uint32_t crc32(Bytes bytes, uint32_t crc = 0);

// CRC-24 of OpenPGP (RFC 4880, 6.1).
uint32_t crc24(Bytes bytes);

} // namespace zat
