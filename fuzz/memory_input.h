// The one file of a run, in memory.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat::test {

// Makes a file of that size, which has the bytes again and again, what stands at the path that is
// returned.
const char* put_in_memory(Bytes bytes, int64_t size);

} // namespace zat::test
