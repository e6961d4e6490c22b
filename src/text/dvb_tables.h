// Character sets of DVB texts that are plain tables (ETSI EN 300 468, annex A.2).
#pragma once

#include <cstdint>
#include <iterator>

namespace zat {

// All give U+FFFD for what is not assigned.

// A byte of ISO/IEC 8859, part 1 to 15. Bytes below A0 stand for themselves.
uint32_t iso8859_character(uint32_t part, uint8_t byte);

// A pair of bytes from A1 to FE.
uint32_t ksx1001_character(uint8_t row, uint8_t cell);
uint32_t gb2312_character(uint8_t row, uint8_t cell);

} // namespace zat
