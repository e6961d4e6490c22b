// Start codes of MPEG streams: the prefix 00 00 01 and a byte that names what begins (ISO/IEC
// 11172-2, 2.3; ISO/IEC 13818-1, 2.4.3; ITU-T H.264, annex B).
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t start_code_size = 4; // the prefix and the byte behind it

// Position of the first prefix that begins at or after `from`, or -1.
int64_t find_start_code_prefix(Bytes bytes, size_t from);

// Position of the first start code that begins at or after `from` and whose four bytes all lie in
// `bytes`, or -1.
int64_t find_start_code(Bytes bytes, size_t from);

// The same for the start code of one value.
int64_t find_start_code_of(Bytes bytes, size_t from, uint8_t code);

} // namespace zat
