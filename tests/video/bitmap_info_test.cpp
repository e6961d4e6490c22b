#include "video/bitmap_info.h"

#include "support/byte_builder.h"

#include <gtest/gtest.h>

namespace zat::test::bitmap_info_test {
namespace {

std::vector<uint8_t> header(uint64_t height, int bits, std::string_view compression) {
    return ByteBuilder()
        .le32(40)
        .le32(64)
        .le32(height)
        .le16(1)
        .le16(static_cast<uint64_t>(bits))
        .text(compression)
        .fill(20)
        .u8(7)
        .bytes;
}

TEST(BitmapInfo, reads_every_length) {
    const auto bytes = header(static_cast<uint64_t>(-48), 24, "xvid");
    BitmapInfo info;
    EXPECT_FALSE(read_bitmap_info(Bytes(bytes).first(19), &info));
    for (size_t length = 20; length <= bytes.size(); ++length) {
        ASSERT_TRUE(read_bitmap_info(Bytes(bytes).first(length), &info));
        EXPECT_EQ(info.width, 64U);
        EXPECT_EQ(info.height, 48U);
        EXPECT_EQ(info.codec_data.size(), length == 41 ? 1U : 0U);
    }
    EXPECT_EQ(video_family(info.compression), VideoFamily::mpeg4);
    EXPECT_EQ(raw_pixel_bits(info), 0U);
}

TEST(BitmapInfo, tells_bits_of_uncompressed_pictures) {
    const struct {
        std::string_view compression;
        int bits;
        uint32_t shown;
    } rows[] = {{{"\0\0\0\0", 4}, 40, 8}, {{"\3\0\0\0", 4}, 16, 16}, {"YUY2", 16, 16}, {{"\1\0\0\0", 4}, 8, 0}, {"v410", 32, 32}};
    for (const auto& row : rows) {
        const auto bytes = header(48, row.bits, row.compression);
        BitmapInfo info;
        ASSERT_TRUE(read_bitmap_info(bytes, &info));
        EXPECT_EQ(raw_pixel_bits(info), row.shown);
    }
}

} // namespace
} // namespace zat::test::bitmap_info_test
