// One call of the release library, measured.
#pragma once

#include "limits/virtual_file.h"
#include "zat/details.h"

#include <string>

namespace zat::test {

struct Cost {
    double milliseconds; // of processor time
    uint64_t stack;      // bytes, with those that the thread itself takes
    uint64_t memory;     // bytes
    uint64_t bytes_read;
    uint64_t reads;
    uint32_t type_code;
    std::string report;
};

// Loads the library; false when it lacks an export.
bool load_library(const char* path, const char* catalogue_directory);

// GetDetails and ReFormFullBounded on the file, in a thread of their own.
Cost measure(const VirtualFile& file, uint32_t options = 0, uint32_t scan_budget = 0);

} // namespace zat::test
