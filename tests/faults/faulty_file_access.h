// Stands in for the platform: files are read whole when they are opened, and reading fails on demand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zat::test {

struct Faults {
    int good_reads = INT32_MAX; // reads that succeed; the next one is cut in half, later ones fail
    bool no_memory = false;
    int open_files = 0;          // opened and not closed
    int64_t reserved_memory = 0; // bytes reserved and not released
    int reads = 0;
};

// The state of the layer, and the file that every path names.
extern Faults faults;
extern std::vector<uint8_t> file_bytes;

} // namespace zat::test
