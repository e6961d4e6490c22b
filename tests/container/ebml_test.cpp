#include "container/matroska/ebml.h"

#include "support/ebml_builder.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

namespace zat::test::ebml_test {
namespace {

TEST(Ebml, reads_heads_of_every_length) {
    const struct {
        const char* name;
        std::string_view bytes;
        uint32_t id;
        int64_t size;
        bool unknown;
        uint32_t length;
    } rows[] = {
        {"one byte each", "EC 81 00", 0xEC, 1, false, 2},
        {"the longest", "1A 45 DF A3 01 00 00 00 00 01 00 00", 0x1A45DFA3, 65536, false, 12},
        {"unknown in one byte", "A3 FF", 0xA3, 0, true, 2},
        {"unknown in eight", "A3 01 FF FF FF FF FF FF FF", 0xA3, 0, true, 9},
        {"not unknown: a longer form", "A3 40 7F", 0xA3, 127, false, 3},
        {"the largest size", "A3 01 FF FF FF FF FF FF FE", 0xA3, (int64_t{1} << 56) - 2, false, 9},
        {"an identifier of five bytes", "08 45 DF A3 00 81 00", 0, 0, false, 0},
        {"no size", "A3 00 81", 0, 0, false, 0},
        {"cut in the identifier", "1A 45", 0, 0, false, 0},
        {"cut in the size", "A3 40", 0, 0, false, 0},
        {"nothing", "", 0, 0, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ElementHead read = parse_element_head(bytes_of_hex(row.bytes));
        EXPECT_EQ(read.id, row.id);
        EXPECT_EQ(read.size, row.size);
        EXPECT_EQ(read.unknown_size, row.unknown);
        EXPECT_EQ(read.length, row.length);
    }
}

TEST(Ebml, steps_through_children_and_clips_them_to_their_parent) {
    const Data bytes = join_elements({element(0xEC, Data(3)), number(0xD7, 7), element(0xBF, Data(4)), real(0x4489, 2.5),
        words(0x86, std::string_view("ab\0cd", 5)), element(0xD7, Data{}), sized_element(0x83, 99, {1, 2})});
    const TempFile temporary(bytes);
    FileRecord file;
    ASSERT_EQ(FileOpen(&file, temporary.path.c_str()), 0);
    Reader reader;
    reader_open(&reader, &file);
    ElementCursor cursor = children_of(whole_file(&reader));
    Element child;
    ASSERT_TRUE(next_element(&reader, &cursor, &child));
    EXPECT_EQ(read_uint(&reader, child, 0), 7U);
    ASSERT_TRUE(next_element(&reader, &cursor, &child));
    EXPECT_EQ(read_float(&reader, child, 0), 2.5);
    ASSERT_TRUE(next_element(&reader, &cursor, &child));
    char text[8];
    read_text(&reader, child, text);
    EXPECT_STREQ(text, "ab");
    ASSERT_TRUE(next_element(&reader, &cursor, &child));
    EXPECT_EQ(read_uint(&reader, child, 5), 5U); // empty
    ASSERT_TRUE(next_element(&reader, &cursor, &child));
    EXPECT_EQ(size_of(child.data), 2);
    EXPECT_EQ(child.said_end, child.data.start + 99);
    EXPECT_EQ(read_uint(&reader, child, 0), 0x0102U);
    EXPECT_FALSE(next_element(&reader, &cursor, &child));
}

} // namespace
} // namespace zat::test::ebml_test
