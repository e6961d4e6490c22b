// Checksums of headers and tables.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

// CRC-32 of ISO 3309, as ZIP has it. `crc` is the sum of the bytes before.
uint32_t crc32(Bytes bytes, uint32_t crc = 0);

// CRC-32 of MPEG-2 sections (ISO/IEC 13818-1, annex A), of which all bits come highest first. 0
// over a whole section, its CRC included.
uint32_t crc32_mpeg2(Bytes bytes);

// CRC-8 of FLAC's frame headers (RFC 9639, 9.1.8).
uint8_t crc8(Bytes bytes);

// CRC-24 of OpenPGP (RFC 4880, 6.1).
uint32_t crc24(Bytes bytes);

} // namespace zat
