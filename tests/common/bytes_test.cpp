#include "common/bytes/bytes.h"

#include <gtest/gtest.h>
#include <vector>

namespace zat::test::bytes_test {

// The search goes in blocks: a pair must be found wherever it lies to them, and not behind the end.
TEST(FindBytePair, finds_the_first_pair_at_any_place) {
    for (size_t at = 0; at < 298; ++at) {
        std::vector<uint8_t> bytes(300, 0x0B);
        bytes[at + 1] = 0x77;
        EXPECT_EQ(find_byte_pair(bytes, 0, 0x0B, 0x77), static_cast<int64_t>(at));
        EXPECT_EQ(find_byte_pair(bytes, at, 0x0B, 0x77), static_cast<int64_t>(at));
        EXPECT_EQ(find_byte_pair(bytes, at + 1, 0x0B, 0x77), -1);
        EXPECT_EQ(find_byte_pair(Bytes(bytes).first(at + 1), 0, 0x0B, 0x77), -1);
    }
    EXPECT_EQ(find_byte_pair({}, 5, 0x0B, 0x77), -1);
}

} // namespace zat::test::bytes_test
