#include "common/bytes/start_code.h"

#include <gtest/gtest.h>
#include <vector>

namespace zat::test::start_code_test {

TEST(StartCode, finds_whole_codes_only) {
    const struct {
        std::vector<uint8_t> bytes;
        size_t from;
        int64_t expected;
    } rows[] = {
        {{0, 0, 1, 0xB3}, 0, 0},
        {{0, 0, 1}, 0, -1}, // the value is missing
        {{}, 0, -1},
        {{0, 0, 0, 0, 1, 0xB3}, 0, 2},
        {{0, 0, 1, 0xB3}, 1, -1},
        {{7, 1, 0, 1, 0, 0, 1, 0}, 0, 4},
        {{0, 0, 1, 0, 0, 1, 0xB3}, 1, 3},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(find_start_code(row.bytes, row.from), row.expected);
    }
    const std::vector<uint8_t> three = {0, 0, 1, 0xBA, 0, 0, 1, 0xB3, 0, 0, 1, 0xBA};
    EXPECT_EQ(find_start_code_of(three, 1, 0xBA), 8);
    EXPECT_EQ(find_start_code_of(three, 0, 0xB5), -1);
}

} // namespace zat::test::start_code_test
