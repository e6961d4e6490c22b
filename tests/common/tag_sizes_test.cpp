#include "common/tags/tag_sizes.h"
#include "support/mpeg_audio_builder.h"
#include "support/temp_file.h"

#include <array>
#include <gtest/gtest.h>

namespace zat::test::tag_sizes_test {

using test::ByteBuilder;
using test::id3v2_tag;
using test::TempFile;

ByteBuilder ape_footer(const char* marker = "APETAGEX") {
    return ByteBuilder().text(marker).pad_to(32);
}

ByteBuilder lyrics3(const char* digits) {
    return ByteBuilder().text(digits).text("LYRICS200");
}

ByteBuilder join(std::initializer_list<ByteBuilder> parts) {
    ByteBuilder all;
    for (const ByteBuilder& part : parts) {
        all.append(part.bytes);
    }
    return all;
}

TEST(TagSizes, measures_each_layout) {
    const ByteBuilder id3v1 = test::id3v1_tag();
    const ByteBuilder audio = ByteBuilder().fill(300, 0x55);
    const struct {
        const char* name;
        ByteBuilder file;
        std::array<uint32_t, 5> sizes; // id3v2, ape, id3v1, ape footer, lyrics3
    } rows[] = {
        {"stacked ID3v2 tags, an empty and a cut one",
            join({id3v2_tag(10), id3v2_tag(10), id3v2_tag(600), ByteBuilder().text("ID3")}), {620}},
        {"size bytes with their top bits set", ByteBuilder().text("ID3").raw({3, 0, 0, 255, 255, 255, 255}), {538984585}},
        {"APEv2 with items: the footer alone, its header out of sight", join({audio, ape_footer(), audio, ape_footer(), id3v1}),
            {0, 0, 128, 32}},
        {"APEv2 without items: header and footer", join({audio, ape_footer(), ape_footer()}), {0, 32, 0, 32}},
        {"another marker in the footer's place", join({audio, ape_footer("APETAG!!"), id3v1}), {0, 32, 128}},
        {"APE before Lyrics3 before ID3v1", join({audio, ape_footer(), ByteBuilder().fill(100), lyrics3("000100"), id3v1}),
            {0, 0, 128, 32, 115}},
        {"a size that 32 bits would wrap back into the file",
            join({audio, ape_footer(), ByteBuilder().fill(5), lyrics3("00000&")}), {0, 0, 0, 0, 5}},
        {"Lyrics3 beyond the last mebibyte", join({audio, ape_footer(), ByteBuilder().fill(2099998), lyrics3("zzzzzz")}),
            {0, 0, 0, 0, 8222229}},
        {"a marker without room for its digits", lyrics3("00000"), {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TempFile temp(row.file.bytes);
        FileRecord file;
        ASSERT_EQ(FileOpen(&file, temp.path.c_str()), 0);
        Reader reader;
        reader_open(&reader, &file);
        TagSizes sizes;
        EXPECT_EQ(MeasureTags(&reader, &sizes), 0);
        EXPECT_EQ((std::array{sizes.id3v2, sizes.ape, sizes.id3v1, sizes.ape_footer, sizes.lyrics3}), row.sizes);
    }
}

} // namespace zat::test::tag_sizes_test
