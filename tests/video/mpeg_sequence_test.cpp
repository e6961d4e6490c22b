#include "video/mpeg_sequence.h"

#include "common/text/text.h"
#include "support/byte_builder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zat::test::mpeg_sequence_test {
namespace {

// What follows the start code.
std::vector<uint8_t> sequence_header(int width, int height, int aspect, int rate, uint64_t bit_rate, uint64_t vbv) {
    BitBuilder bits;
    bits.bits(static_cast<uint64_t>(width), 12).bits(static_cast<uint64_t>(height), 12);
    bits.bits(static_cast<uint64_t>(aspect), 4).bits(static_cast<uint64_t>(rate), 4);
    return bits.bits(bit_rate, 18).bits(1, 1).bits(vbv, 10).bits(0, 3).bytes;
}

std::vector<uint8_t> sequence_extension(int profile, int level, int progressive) {
    return ByteBuilder().raw({0x10 | profile, level << 4 | progressive << 3 | 2, 0}).bytes;
}

TEST(MpegSequence, writes_the_program_stream_line) {
    constexpr auto one = MpegVideoVersion::mpeg1;
    constexpr auto two = MpegVideoVersion::mpeg2;
    const struct {
        MpegVideoVersion version;
        std::vector<uint8_t> header, extension;
        const char* expected;
    } rows[] = {
        {two, sequence_header(720, 576, 3, 3, 22500, 112), sequence_extension(4, 8, 0),
            "720x576 16:9 9000kbps 25fps 229376Byte interlace MP@ML"},
        {two, sequence_header(1440, 1080, 5, 15, 0x3FFFE, 1023), sequence_extension(1, 6, 1),
            "1440x1080 0.8055 104856kbps reserved(15)fps 2095104Byte Progressive"},
        {two, sequence_header(4095, 4095, 15, 8, 1, 0), sequence_extension(4, 5, 0),
            "4095x4095 (15) 0kbps 60fps 0Byte interlace profile:4 level:5"},
        {one, sequence_header(352, 288, 1, 0, 2875, 20), {}, "352x288 1:1 1150kbps forbidden(0)fps 40960Byte interlace"},
    };
    for (const auto& row : rows) {
        SequenceHeader header;
        SequenceExtension extension;
        char line[line_size];
        EXPECT_EQ(read_sequence_header(&header, row.header), 0);
        EXPECT_EQ(read_sequence_extension(&extension, row.extension), row.extension.empty() ? 1 : 0);
        mpeg_video_line(&header, &extension, row.version, line);
        EXPECT_STREQ(line, row.expected);
    }
}

TEST(MpegSequence, reads_the_display_size_behind_the_colours) {
    for (const uint64_t colours : {0U, 1U}) {
        BitBuilder bits;
        bits.bits(2, 4).bits(5, 3).bits(colours, 1).bits(0x010101, colours != 0 ? 24 : 0);
        bits.bits(540, 14).bits(1, 1).bits(480, 14).bits(0, 3);
        SequenceDisplayExtension extension;
        EXPECT_EQ(read_sequence_display_extension(&extension, bits.bytes), 0);
        EXPECT_EQ(extension.display_horizontal_size, 540U);
        EXPECT_EQ(extension.display_vertical_size, 480U);
        bits.bytes.resize(4);
        SequenceDisplayExtension cut;
        EXPECT_EQ(read_sequence_display_extension(&cut, bits.bytes), 1);
        EXPECT_EQ(cut.display_horizontal_size, 0U);
    }
}

TEST(MpegSequence, finds_the_headers_of_a_codec_private) {
    const auto header = [](int width) {
        const auto fields = sequence_header(width, 480, 2, 4, 0x3FFFF, 112);
        return ByteBuilder().raw({0, 0, 1, 0xB3}).append(fields).bytes;
    };
    const auto extension = ByteBuilder().raw({0, 0, 1, 0xB5}).append(sequence_extension(4, 4, 0)).bytes;
    const std::string line_720 = "MPEG2 720x480 4:3 104857kbps 29.97fps 229376Byte Interlace";
    const struct {
        ByteBuilder bytes;
        std::string expected;
    } rows[] = {
        {ByteBuilder().append(header(720)), line_720},
        // The last header before the extension counts.
        {ByteBuilder().append(header(352)).append(header(720)).append(extension).append(header(704)), line_720 + " MP@HL"},
        // Another extension is passed over.
        {ByteBuilder().append(header(720)).raw({0, 0, 1, 0xB5, 0x24, 0x88}).append(extension), line_720 + " MP@HL"},
        {ByteBuilder().append(extension), ""},
    };
    char line[line_size];
    for (const auto& row : rows) {
        EXPECT_EQ(mpeg2_video_line(row.bytes.bytes, line), row.expected.empty() ? 1 : 0);
        EXPECT_EQ(line, row.expected);
    }
    // A header that is cut is none.
    for (std::vector<uint8_t> cut = header(720); !cut.empty();) {
        cut.pop_back();
        EXPECT_EQ(mpeg2_video_line(std::vector<uint8_t>(cut), line), 1);
    }
}

} // namespace
} // namespace zat::test::mpeg_sequence_test
