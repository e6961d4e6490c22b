#include "common/text/fixed_decimal.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <random>
#include <string>

namespace zat::test::fixed_decimal_test {

std::string own_decimal(double value, int places) {
    FixedDecimalText text;
    return std::string(fixed_decimal(value, places, &text));
}

std::string standard_decimal(double value, int places) {
    char text[512];
    return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, places).ptr};
}

constexpr uint64_t fraction_mask = (uint64_t{1} << 52) - 1;

TEST(FixedDecimal, every_magnitude_has_the_digits_of_the_standard_library) {
    for (uint64_t exponent = 0; exponent < 0x7FF; ++exponent) {
        for (const uint64_t fraction : {uint64_t{0}, uint64_t{1}, uint64_t{1} << 51, fraction_mask / 3, fraction_mask}) {
            const auto value = std::bit_cast<double>(exponent << 52 | fraction);
            for (const int places : {0, 1, 3, 6, fixed_decimal_places}) {
                ASSERT_EQ(own_decimal(value, places), standard_decimal(value, places)) << std::hexfloat << value << ' ' << places;
            }
        }
    }
}

TEST(FixedDecimal, quotients_and_ties_have_the_digits_of_the_standard_library) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 50'000; ++i) {
        const auto number = static_cast<double>(random() % 100'000'000);
        const int places = static_cast<int>(random() % 7);
        for (const double value :
            {number / static_cast<double>(1 + random() % 100'000), -number / 8192, number / (2 * std::pow(10.0, places))}) {
            ASSERT_EQ(own_decimal(value, places), standard_decimal(value, places)) << std::hexfloat << value << ' ' << places;
        }
    }
}

} // namespace zat::test::fixed_decimal_test
