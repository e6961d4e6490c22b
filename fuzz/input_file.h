// The one file of a run, in memory or in the system: fuzz_info is built with either.
#pragma once

#include "common/bytes.h"

namespace zat::test {

// Makes the bytes what stands at the path that is returned. The first call sets the catalogue.
const char* input_path(Bytes bytes);

// Reads since input_path was called, and the bytes that they yielded; 0 for a file in the system.
struct InputCost {
    int64_t reads;
    int64_t bytes;
    int64_t memory; // bytes reserved at one time
};
InputCost input_cost();

// Files left open and bytes left reserved, which must be none.
int64_t left_behind();

} // namespace zat::test
