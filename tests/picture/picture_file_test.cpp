#include "support/byte_builder.h"
#include "support/dispatched.h"

namespace zat::test::picture_file_test {

struct JpegBuilder : ByteBuilder {
    JpegBuilder() { raw({0xFF, 0xD8}); }

    JpegBuilder& segment(int marker, const Data& data) {
        raw({0xFF, marker}).be16(data.size() + 2).append(data);
        return *this;
    }
    // Components with the sampling factors of each.
    JpegBuilder& frame(int marker, int bits, uint64_t width, uint64_t height, const Data& factors) {
        ByteBuilder data;
        data.u8(static_cast<uint64_t>(bits)).be16(height).be16(width).u8(factors.size());
        for (const uint8_t both : factors) {
            data.u8(1).u8(both).u8(0);
        }
        return segment(marker, data.bytes);
    }
};

Data jfif(uint64_t across, uint64_t down) {
    return ByteBuilder().text("JFIF").raw({0, 1, 2, 1}).be16(across).be16(down).raw({0, 0}).bytes;
}

TEST(Picture, describes_jpeg_by_its_frame_header) {
    const Data exif = ByteBuilder().text("Exif").raw({0, 0}).fill(40000).bytes;
    ByteBuilder filled = JpegBuilder().segment(0xFE, {1, 2});
    filled.raw({7, 0xFF, 0xFF}).append(JpegBuilder().frame(0xC2, 8, 64, 48, {0x22, 0x21, 0x21}).bytes);
    ByteBuilder tagged;
    tagged.text("ID3").raw({3, 0, 0, 0, 0, 0, 5}).fill(5).append(JpegBuilder().frame(0xF7, 16, 8, 9, {0x11}).bytes);
    expect_rows(FILETYPE_JPEG, "[JPEG]",
        {
            {"JFIF", JpegBuilder().segment(0xE0, jfif(72, 72)).frame(0xC0, 8, 1920, 1080, {0x22, 0x11, 0x11}).bytes,
                "V 1920x1080 [JPEG baseline] 8Bit 4:2:0\n0.000\nJPEG profile=JFIF\n"
                "video size=1920:1080 pixel=1:1 display=16:9 bit_depth=8 codec=MJPEG profile=Baseline chroma=4:2:0"},
            {"Exif behind JFIF, other densities, arithmetic",
                JpegBuilder().segment(0xE0, jfif(72, 36)).segment(0xE1, exif).frame(0xCA, 12, 10, 20, {0x41, 0x11, 0x11}).bytes,
                "V 10x20 [JPEG progressive arithmetic] 12Bit 4:1:1\n0.000\nJPEG profile=JFIF\n"
                "video size=10:20 bit_depth=12 codec=MJPEG profile=Progressive chroma=4:1:1"},
            {"bytes between the segments, chroma factors of two", filled.bytes,
                "V 64x48 [JPEG progressive] 8Bit 4:4:0\n0.000\nJPEG\n"
                "video size=64:48 bit_depth=8 codec=MJPEG profile=Progressive chroma=4:4:0"},
            {"behind a tag, one component", tagged.bytes,
                "V 8x9 [JPEG-LS] 16Bit 4:0:0\n0.000\nJPEG\nvideo size=8:9 bit_depth=16 codec=JPEG-LS chroma=4:0:0"},
            {"four components, the height behind the scan", JpegBuilder().frame(0xC1, 8, 64, 0, {0x11, 0x11, 0x11, 0x11}).bytes,
                "V [JPEG extended] 8Bit\n0.000\nJPEG\nvideo size=64:0 bit_depth=8 codec=MJPEG profile=Extended"},
            {"a scan before the frame", JpegBuilder().segment(0xDA, {1}).bytes,
                "V [JPEG]\nX damaged header\n0.000\nJPEG notes=damaged header\nvideo codec=MJPEG"},
            {"cut in a segment", JpegBuilder().raw({0xFF, 0xE1, 0xFF, 0xFF}).fill(9).bytes,
                "V [JPEG]\nX truncated\n0.000\nJPEG notes=truncated\nvideo codec=MJPEG"},
            {"markers without end", JpegBuilder().fill(150'000, 0xFF).bytes,
                "V [JPEG]\nX work limit\n0.000\nJPEG notes=work limit\nvideo codec=MJPEG"},
        });
}

struct GifBuilder : ByteBuilder {
    // `colours`: of the global table, 2 to their power.
    explicit GifBuilder(int colours, int aspect = 0, std::string_view version = "GIF89a") {
        text(version).le16(320).le16(200).u8(static_cast<uint64_t>(colours == 0 ? 0 : 0x80 | (colours - 1)));
        u8(0).u8(static_cast<uint64_t>(aspect)).fill(colours == 0 ? 0 : size_t{3} << colours);
    }
    GifBuilder& control(uint64_t delay) {
        raw({0x21, 0xF9, 4, 0}).le16(delay).raw({0, 0});
        return *this;
    }
    GifBuilder& frame(size_t size = 2, int local_colours = 0) {
        raw({0x2C, 0, 0, 0, 0, 16, 0, 8, 0, local_colours == 0 ? 0 : 0x80 | (local_colours - 1)});
        fill(local_colours == 0 ? 0 : size_t{3} << local_colours).u8(8);
        for (; size > 255; size -= 255) {
            u8(255).fill(255);
        }
        u8(size).fill(size).u8(0);
        return *this;
    }
    GifBuilder& frames(int count, uint64_t delay, size_t size) {
        for (int i = 0; i < count; ++i) {
            control(delay).frame(size);
        }
        return *this;
    }
    Data closed() { return ByteBuilder(*this).u8(0x3B).bytes; }
};

TEST(Picture, counts_the_frames_of_gif) {
    const Data comment = {0x21, 0xFE, 3, 'a', 'b', 'c', 0, 0};
    GifBuilder commented(8);
    commented.append(comment);
    GifBuilder cut(2);
    cut.frames(2, 50, 9).put(0, "GIF90a").bytes.resize(cut.bytes.size() - 3);
    expect_rows(FILETYPE_GIF, "[GIF]",
        {
            {"equal delays", commented.frames(3, 4, 300).closed(),
                "V 320x200 [GIF 89a] 8Bit 25.000fps 3f\n0.120\nGIF profile=89a\n"
                "video duration=0.120 frame_rate=25.000 frames=3 size=320:200 fps_ratio=25:1 bit_depth=8 codec=GIF"},
            {"different delays, pixels not square", GifBuilder(4, 17).frames(1, 10, 1).frames(3, 30, 1).closed(),
                "V 320x200 [GIF 89a] 4Bit 4.000fps 4f\n1.000\nGIF profile=89a\n"
                "video duration=1.000 frame_rate=4.000 frames=4 size=320:200 pixel=1:2 display=4:5 fps_ratio=4:1 "
                "bit_depth=4 codec=GIF"},
            {"a delay that viewers do not keep", GifBuilder(8).frames(1, 10, 1).frame().closed(),
                "V 320x200 [GIF 89a] 8Bit ~10.000fps 2f\nX time estimated\n0.200\n"
                "GIF profile=89a notes=time estimated estimated=1\n"
                "video estimated=5 duration=0.200 frame_rate=10.000 frames=2 size=320:200 fps_ratio=10:1 bit_depth=8 codec=GIF"},
            {"still, with colours of its own", GifBuilder(0, 0, "GIF87a").frame(5, 7).closed(),
                "V 320x200 [GIF 87a] 7Bit 1f\n0.000\nGIF profile=87a\nvideo frames=1 size=320:200 bit_depth=7 codec=GIF"},
            {"still, with a time", GifBuilder(1).control(50).frame().closed(),
                "V 320x200 [GIF 89a] 1Bit 1f\n0.500\nGIF profile=89a\n"
                "video duration=0.500 frames=1 size=320:200 bit_depth=1 codec=GIF"},
            {"no screen size, no trailer", GifBuilder(2).frame().put(6, std::string(4, '\0')).bytes,
                "V 16x8 [GIF 89a] 2Bit 1f\n0.000\nGIF profile=89a\nvideo frames=1 size=16:8 bit_depth=2 codec=GIF"},
            {"unknown version, cut in the second frame", cut.bytes,
                "V 320x200 [GIF] 2Bit 1f\nX truncated\n0.500\nGIF notes=truncated\n"
                "video duration=0.500 frames=1 size=320:200 bit_depth=2 codec=GIF"},
        });
}

TEST(Picture, estimates_the_frames_of_a_large_gif) {
    const Data large = GifBuilder(8).frames(1000, 4, 8000).closed();
    EXPECT_EQ(dispatched(FILETYPE_GIF, large)->text(),
        "V 320x200 [GIF 89a] 8Bit 25.000fps ~1000f\nX time estimated\n40.000\n"
        "GIF profile=89a notes=time estimated estimated=1\n"
        "video estimated=9 duration=40.000 frame_rate=25.000 frames=1000 size=320:200 fps_ratio=25:1 bit_depth=8 codec=GIF");
    EXPECT_EQ(dispatched(FILETYPE_GIF, large, option_thorough)->text(),
        "V 320x200 [GIF 89a] 8Bit 25.000fps 1000f\n40.000\nGIF profile=89a\n"
        "video duration=40.000 frame_rate=25.000 frames=1000 size=320:200 fps_ratio=25:1 bit_depth=8 codec=GIF");
}

// Bitmap headers: that of the file, then size, sides, planes, bits, compression, image size.
ByteBuilder bitmap(uint64_t width, uint64_t height, int bits, uint64_t compression = 0, uint64_t image_size = 0, int size = 40) {
    ByteBuilder to;
    to.text("BM").le32(0).le32(0).le32(14U + static_cast<uint64_t>(size)).le32(static_cast<uint64_t>(size));
    to.le32(width).le32(height).le16(1).le16(static_cast<uint64_t>(bits)).le32(compression).le32(image_size);
    to.pad_to(14 + static_cast<size_t>(size));
    return to;
}

TEST(Picture, describes_bitmaps) {
    ByteBuilder core;
    core.text("BM").le32(0).le32(0).le32(26).le32(12).le16(3).le16(5).le16(1).le16(24).fill(60);
    expect_rows(FILETYPE_BMP, "[BMP]",
        {
            {"upside down", bitmap(2, uint32_t(-2), 32).fill(16).bytes,
                "V 2x2 [BMP] 32Bit\n0.000\nBMP\nvideo size=2:2 bit_depth=8 codec=BMP"},
            {"cut", bitmap(10, 10, 8).fill(20).bytes,
                "V 10x10 [BMP] 8Bit\nX truncated(100 Byte missing)\n0.000\nBMP notes=truncated missing=100\n"
                "video size=10:10 bit_depth=8 codec=BMP"},
            {"packed", bitmap(10, 10, 4, 2, 7).fill(7).bytes,
                "V 10x10 [BMP RLE4] 4Bit\n0.000\nBMP\nvideo size=10:10 bit_depth=4 codec=BMP"},
            {"fifteen bits, masks", bitmap(2, 1, 16, 3).fill(4).bytes, "V 2x1 [BMP] 16Bit\n0.000\nBMP\nvideo size=2:1 codec=BMP"},
            {"OS/2 2", bitmap(2, 1, 24, 4, 1, 64).fill(1).bytes,
                "V 2x1 [BMP RLE24] 24Bit\n0.000\nBMP\nvideo size=2:1 bit_depth=8 codec=BMP"},
            {"OS/2 2, a short header before its palette",
                ByteBuilder()
                    .text("BM")
                    .le32(0)
                    .le32(0)
                    .le32(38)
                    .le32(16)
                    .le32(2)
                    .le32(1)
                    .le16(1)
                    .le16(1)
                    .raw({1, 0, 0, 0})
                    .fill(8)
                    .bytes,
                "V 2x1 [BMP] 1Bit\n0.000\nBMP\nvideo size=2:1 bit_depth=1 codec=BMP"},
            {"OS/2 1, behind zeros", ByteBuilder().fill(9).append(core.bytes).bytes,
                "V 3x5 [BMP] 24Bit\n0.000\nBMP\nvideo size=3:5 bit_depth=8 codec=BMP"},
            {"sides that cannot be", bitmap(70000, 70000, 24).bytes,
                "V [BMP]\nX damaged header\n0.000\nBMP notes=damaged header\nvideo codec=BMP"},
        });
}

} // namespace zat::test::picture_file_test
