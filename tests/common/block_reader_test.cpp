#include "common/block_reader.h"

#include "common/zero_skip.h"
#include "support/temp_file.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace zat::test {

// Against the same reads without a block, at places and of lengths that cross blocks.
TEST(BlockReader, ReadsWhatStandsInTheFile) {
    std::vector<uint8_t> bytes(200000);
    uint32_t state = 1;
    for (uint8_t& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = state >> 30 == 0 ? static_cast<uint8_t>(state >> 22) : 0;
    }
    std::fill(bytes.begin() + 50000, bytes.begin() + 150000, uint8_t{0});
    const TempFile temp(bytes);
    FileRecord file;
    ASSERT_EQ(FileOpen(&file, temp.path.c_str()), 0);
    FileRecord plain;
    ASSERT_EQ(FileOpen(&plain, temp.path.c_str()), 0);
    BlockReader reader;
    block_open(&reader, &file);
    int64_t position = 0;
    for (int i = 0; i < 3000; ++i) {
        state = state * 1664525 + 1013904223;
        const uint32_t count = state >> 16 & 0x3FF;
        // Mostly onward, now and then a jump, the end of the file included.
        position = i % 7 == 6 ? static_cast<int64_t>(state % 200100) : position + count / 2;
        std::vector<uint8_t> got(count);
        got.resize(block_read(&reader, position, got.data(), count));
        const auto from = std::min<size_t>(static_cast<size_t>(position), bytes.size());
        const auto to = std::min<size_t>(from + count, bytes.size());
        ASSERT_EQ(
            got, std::vector<uint8_t>(bytes.begin() + static_cast<ptrdiff_t>(from), bytes.begin() + static_cast<ptrdiff_t>(to)))
            << position << "+" << count;
        const auto rest = bytes.begin() + static_cast<ptrdiff_t>(from);
        const auto other = std::find_if(rest, bytes.end(), [](uint8_t byte) { return byte != 0; });
        const int64_t zeros = other == bytes.end() ? -1 : other - rest;
        EXPECT_EQ(block_count_zeros(&reader, position), zeros);
        FileSeek(&plain, static_cast<int64_t>(from), SeekOrigin::begin);
        EXPECT_EQ(skip_zeros(&plain), zeros);
        EXPECT_EQ(plain.position, other - bytes.begin());
    }
    EXPECT_EQ(block_count_zeros(&reader, 1LL << 40), -1);
    FileClose(&plain);
    FileClose(&file);
}

TEST(BlockReader, CountsTheZerosOfHoles) {
    constexpr int64_t hole = 64 << 20;
    const TempFile temp({1});
    for (const bool has_end : {true, false}) {
        std::ofstream out(temp.path, std::ios::binary | std::ios::in);
        out.seekp(has_end ? hole : 3 * hole).put(has_end ? 1 : 0);
        out.close();
        FileRecord file;
        ASSERT_EQ(FileOpen(&file, temp.path.c_str()), 0);
        BlockReader reader;
        block_open(&reader, &file);
        EXPECT_EQ(block_count_zeros(&reader, 1), hole - 1);
        EXPECT_EQ(block_count_zeros(&reader, hole + 1), -1);
        FileClose(&file);
    }
}

} // namespace zat::test
