// Runs of zero bytes between structures: padding behind tags and odd-sized chunks.
#pragma once

#include "common/file_access.h"

#include <cstdint>

namespace zat {

// The number of zero bytes at the front of `length` bytes.
uint32_t leading_zeros(const uint8_t* bytes, uint32_t length);

// Counts the zero bytes from the file's position on and leaves the position at the first other
// byte. Returns -1, with the position at the end, when the file ends first.
int64_t skip_zeros(FileRecord* file);

} // namespace zat
