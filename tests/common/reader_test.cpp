#include "common/file/reader.h"

#include "common/file/riff.h"
#include "support/byte_builder.h"
#include "support/temp_file.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace zat::test::reader_test {

namespace {

// Reads of every kind against the bytes themselves: onward, ahead, to and fro, behind the end.
// With a larger block and reading ahead, if one of that size is given.
void expect_bytes(FileRecord* file, const std::vector<uint8_t>& bytes, uint32_t state, uint32_t block_size = 0) {
    Reader reader;
    reader_open(&reader, file);
    std::vector<uint8_t> block(block_size);
    if (block_size != 0) {
        block_enlarge(&reader.block, block.data(), block_size);
    }
    const Span whole = whole_file(&reader);
    const auto size = static_cast<uint32_t>(bytes.size());
    std::vector<int64_t> zeros(size + 1, -1); // from each position on
    for (size_t at = size; at-- > 0;) {
        zeros[at] = bytes[at] != 0 ? 0 : zeros[at + 1] < 0 ? -1 : zeros[at + 1] + 1;
    }
    int64_t position = 0;
    const int reads = block_size == 0 ? 3000 : 600;
    for (int i = 0; i < reads; ++i) {
        reader_allow(&reader, walk_allowance);
        state = state * 1664525 + 1013904223;
        const uint32_t count = state >> 16 & 0x3FF;
        position = i % 7 == 6    ? int64_t{state % (size + 100)}
                   : i % 31 == 0 ? int64_t{size - state % 5000}
                   : i % 64 < 16 ? position + state % 20000
                                 : position + count / 2;
        if (block_size != 0 && i % 50 == 0) {
            block_read_ahead(&reader.block, position, state % (2 * block_size));
        }
        const Span wanted = sub_span(whole, position, count);
        const std::vector<uint8_t> expected(bytes.data() + wanted.start, bytes.data() + wanted.end);
        std::vector<uint8_t> got(count);
        got.resize(read_some(&reader, whole, position, got.data(), count));
        ASSERT_EQ(got, expected) << position << "+" << count;
        const Bytes view = read_view(&reader, whole, position, count);
        ASSERT_TRUE(std::equal(view.begin(), view.end(), expected.begin(), expected.end()));
        EXPECT_EQ(count_zeros(&reader, whole, position), zeros[static_cast<size_t>(sub_span(whole, position).start)]);
    }
    EXPECT_EQ(count_zeros(&reader, whole, 1LL << 40), -1);
}

} // namespace

TEST(Reader, reads_what_stands_in_the_file) {
    for (const size_t size : {6000U, 10000U, 200000U}) {
        std::vector<uint8_t> bytes(size);
        uint32_t state = 1;
        for (uint8_t& byte : bytes) {
            state = state * 1664525 + 1013904223;
            byte = state >> 30 == 0 ? static_cast<uint8_t>(state >> 22) : 0;
        }
        std::fill(bytes.begin() + 1500, bytes.end() - 3000, uint8_t{0});
        const TempFile temp(bytes);
        for (const bool keeps_ends : {false, true}) {
            FileEnds ends;
            FileRecord file;
            file.ends = keeps_ends ? &ends : nullptr;
            ASSERT_EQ(FileOpen(&file, temp.path.c_str()), 0);
            expect_bytes(&file, bytes, state);
            expect_bytes(&file, bytes, state, 100'000);
            FileBeginAt(&file, 1000);
            expect_bytes(&file, {bytes.begin() + 1000, bytes.end()}, state);
        }
    }
}

#ifndef _WIN32 // where a seek past the end leaves no hole
TEST(Reader, counts_the_zeros_of_holes) {
    constexpr int64_t hole = 64 << 20;
    const TempFile temp({1});
    for (const bool has_end : {true, false}) {
        std::ofstream out(temp.path, std::ios::binary | std::ios::in);
        out.seekp(has_end ? hole : 3 * hole).put(has_end ? 1 : 0);
        out.close();
        FileRecord file;
        ASSERT_EQ(FileOpen(&file, temp.path.c_str()), 0);
        Reader reader;
        reader_open(&reader, &file);
        EXPECT_EQ(count_zeros(&reader, whole_file(&reader), 1), hole - 1);
        EXPECT_EQ(count_zeros(&reader, whole_file(&reader), hole + 1), -1);
    }
}
#endif

TEST(Riff, cuts_chunks_at_their_parent) {
    const ByteBuilder bytes = ByteBuilder()
                                  .text("odd ")
                                  .le32(1)
                                  .text("x")
                                  .u8(0)
                                  .text("more")
                                  .le32(0xFFFFFFFF)
                                  .text("to the parent's end")
                                  .text("beyond");
    const TempFile temp(bytes.bytes);
    FileRecord file;
    ASSERT_EQ(FileOpen(&file, temp.path.c_str()), 0);
    Reader reader;
    reader_open(&reader, &file);
    Span space = sub_span(whole_file(&reader), 0, 37);
    Chunk chunk;
    ASSERT_TRUE(next_chunk(&reader, &space, &chunk));
    EXPECT_EQ(chunk.id, fourcc("odd "));
    EXPECT_EQ(size_of(chunk.payload), 1);
    ASSERT_TRUE(next_chunk(&reader, &space, &chunk));
    EXPECT_EQ(chunk.offset, 10);
    EXPECT_EQ(chunk.size, 0xFFFFFFFF);
    EXPECT_EQ(chunk.payload.end, 37);
    EXPECT_FALSE(next_chunk(&reader, &space, &chunk));
    space = whole_file(&reader);
    ASSERT_TRUE(next_chunk(&reader, &space, &chunk, std::endian::big));
    EXPECT_EQ(chunk.size, 0x01000000U);
}

} // namespace zat::test::reader_test
