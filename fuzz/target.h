#pragma once

#include <cstddef>
#include <cstdint>

// What a fuzz target is to its driver: libFuzzer, or the replay of seeds. Always returns 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace zat::test {

// Inputs are files that were named, not sought: everything is checked of each.
extern bool is_replay;

} // namespace zat::test
