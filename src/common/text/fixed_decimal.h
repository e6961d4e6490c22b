// Doubles as decimal numbers, digit for digit what their bits say.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zat {

constexpr int fixed_decimal_places = 40; // at most
// A sign, the 309 digits of the largest double, the point and the places.
using FixedDecimalText = std::array<char, 1 + 309 + 1 + fixed_decimal_places>;

// A finite number with `places` digits behind the point (0 to fixed_decimal_places), ties to even,
// the sign of a zero kept: "%.*f" of ISO C in the "C" locale. The result lies in `text`.
// Own, because the standard libraries bring in half a megabyte for it and the C libraries of the
// platforms differ.
std::string_view fixed_decimal(double value, int places, FixedDecimalText* text);

} // namespace zat
