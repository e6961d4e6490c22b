// Conversions that stay defined whatever a file's fields say.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace zat {

// Truncates toward zero, clamps to the target's range; NaN gives 0.
template <class Integer>
Integer clamp_to_integer(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    // The upper limit as a double may be one above the largest integer, hence >= below.
    constexpr auto low = static_cast<double>(std::numeric_limits<Integer>::min());
    constexpr auto high = static_cast<double>(std::numeric_limits<Integer>::max());
    if (value >= high) {
        return std::numeric_limits<Integer>::max();
    }
    return value <= low ? std::numeric_limits<Integer>::min() : static_cast<Integer>(value);
}

// -0.0 as 0.0: texts would show its sign.
constexpr double without_negative_zero(double value) {
    return value == 0 ? 0.0 : value;
}

// A division that has IEEE 754's results for a zero divisor, which the language leaves undefined.
inline double divide(double dividend, double divisor) {
    if (divisor == 0) {
        return dividend == 0 || std::isnan(dividend) ? std::numeric_limits<double>::quiet_NaN()
               : std::signbit(dividend) != std::signbit(divisor)
                   ? -std::numeric_limits<double>::infinity()
                   : std::numeric_limits<double>::infinity();
    }
    return dividend / divisor;
}

} // namespace zat
