#include "target.h"

#include <algorithm>
#include <filesystem>

bool zat::test::is_replay = true;

// libFuzzer calls it first. It seeks inputs unless files are named: a finding, or one to minimise.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    zat::test::is_replay = std::any_of(*argv + 1, *argv + *argc, [](const char* argument) {
        return *argument != '-' && std::filesystem::is_regular_file(argument);
    });
    return 0;
}

// Freed inputs are few and small: memory that is kept from being used again is memory to fault in.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=4:malloc_context_size=4:max_malloc_fill_size=0";
}
