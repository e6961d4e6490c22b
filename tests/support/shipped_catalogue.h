// The bytes of the catalogue in the source tree, for tests that run where there is no source tree.
#pragma once

#include <cstdint>
#include <vector>

namespace zat::test {

extern const std::vector<uint8_t> shipped_catalogue;

} // namespace zat::test
