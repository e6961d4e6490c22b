// The additional symbols of ARIB STD-B24, volume 1, part 2, 7.2 (rows 85, 86 and 90 to 94).
#pragma once

#include <cstdint>
#include <string_view>

namespace zat {

// What stands for the symbol, as UTF-8: itself, its nearest form in code page 932, or a few
// characters. Empty for cells without one. Rows and cells count from 1.
std::string_view arib_symbol(uint32_t row, uint32_t cell);

} // namespace zat
