#include "common/text/text.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace zat::test::text_test {

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
    char out[600];
    format_text(out, sizeof out, format, arguments...);
    return out;
}

// The reports are the same in every locale and on every platform, so the results are written out
// here rather than compared with the C library's.
TEST(FormatText, formats_numbers_as_c_does_everywhere) {
    EXPECT_EQ(formatted("%d:%.2d:%.2d.%.3d", 100, 5, 0, 7), "100:05:00.007");
    EXPECT_EQ(formatted("%04x|%.2x|%.2X|%5d|%05d|%05.1f", 0x55, 0xa, 0xfe, -12, -12, -2.25), "0055|0a|FE|  -12|-0012|-02.2");
    EXPECT_EQ(
        formatted("%lld %ju %zu", INT64_MIN, uintmax_t{UINT64_MAX}, size_t{7}), "-9223372036854775808 18446744073709551615 7");
    EXPECT_EQ(formatted("%.3f %.3f %.2f %f", 0.0005, 2.0005, 0.125, 0.9999996),
        "0.001 2.001 0.12 1.000000"); // exact ties go to even
    EXPECT_EQ(formatted("%.2f", 1e308).size(), 312U);
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(formatted("%.3f %.3f %.3f %.3f", infinite, -infinite, std::nan(""), -std::nan("")), "inf -inf nan nan");
    EXPECT_EQ(formatted("%c%s%% %.2s", 'a', "bc", "xyz"), "abc% xy");
}

TEST(FormatText, cuts_at_the_buffer_without_half_characters) {
    char out[6];
    EXPECT_EQ(format_text(out, sizeof out, "%s", "abcd\x83\x5C"), 6U);
    EXPECT_STREQ(out, "abcd"); // the fifth byte is the first of a double-byte character
    EXPECT_EQ(format_text(out, sizeof out, "%s", "abc\x83\x5C"), 5U);
    EXPECT_STREQ(out, "abc\x83\x5C");
    EXPECT_EQ(format_text(out, sizeof out, "%s", "abcd\x83"), 5U);
    EXPECT_STREQ(out, "abcd\x83"); // not cut, so left as it is
}

TEST(Text, appends_with_separators) {
    char line[8] = "";
    AppendWithSeparator(line, "def", separator_comma);
    AppendWithSeparator(line, "g", separator_space);
    AppendWithSeparator(line, "hij", separator_comma);
    EXPECT_STREQ(line, "def g,h");
}

} // namespace zat::test::text_test
