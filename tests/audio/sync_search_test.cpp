#include "audio/sync_search.h"

#include <gtest/gtest.h>
#include <vector>

namespace zat::test::sync_search_test {

namespace {

using Buffer = std::vector<uint8_t>;

TEST(SyncSearch, finds_the_first_whole_sync_word) {
    EXPECT_EQ(find_mpeg_audio_sync(Buffer{0, 0xFF, 0x1F, 0xFF, 0xFF, 0xE0}), 3);
    EXPECT_EQ(find_mpeg_audio_sync(Buffer{0, 0xFF}), -1);
    EXPECT_EQ(find_mpeg_audio_sync({}), -1);
    EXPECT_EQ(find_ac3_sync(Buffer{0x0B, 0x0B, 0x77, 0, 0, 0, 0, 0, 0}), 1);
    EXPECT_EQ(find_ac3_sync(Buffer{0, 0, 0x0B, 0x77, 0, 0, 0, 0, 0}), -1); // seven bytes are left
    EXPECT_EQ(find_ac3_sync({}), -1);
    EXPECT_EQ(find_dts_sync(Buffer{0x7F, 0xFE, 0x80, 0x7F, 0xFE, 0x80, 0x01}), 3);
    EXPECT_EQ(find_dts_sync(Buffer{0x7F, 0xFE, 0x80}), -1);
}

} // namespace

} // namespace zat::test::sync_search_test
