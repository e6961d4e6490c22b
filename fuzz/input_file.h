// The one file of a run: in memory, in memory and made large, or in the system. fuzz_info is built
// with each of them.
#pragma once

#include "common/bytes/bytes.h"

namespace zat::test {

struct InputFile {
    const char* path;
    int64_t size;
};

// Makes a file of the bytes. The first call sets the catalogue.
InputFile input_file(Bytes bytes);

// Reads since input_file was called, and the bytes that they yielded; 0 for a file in the system.
struct InputCost {
    int64_t reads;
    int64_t bytes;
    int64_t memory; // bytes reserved at one time
};
InputCost input_cost();

// Files left open and bytes left reserved, which must be none.
int64_t left_behind();

} // namespace zat::test
