#include "audio/vorbis.h"

#include "common/text/text.h"
#include "support/byte_builder.h"

#include <gtest/gtest.h>

namespace zat::test::vorbis_test {

namespace {

std::string line_of(const std::vector<uint8_t>& bytes, size_t at) {
    VorbisInfo info;
    vorbis_info(Bytes(bytes).subspan(at), &info);
    char line[line_size];
    FormatVorbisLine(&info, vorbis_bitrate(&info), line);
    return line;
}

TEST(Vorbis, tells_the_rate_mode_by_the_three_rates) {
    struct Row {
        uint32_t channels, maximum, nominal, minimum;
        const char* line;
    };
    const Row rows[] = {
        {2, UINT32_MAX, 128000, UINT32_MAX, "OggVorbis 44100Hz [VBR Stereo] 128.000kbps"},
        {2, 160000, 0, 96001, "OggVorbis 44100Hz [ABR Stereo] 128.000kbps"},
        {2, UINT32_MAX, 0, 3, "OggVorbis 44100Hz [ABR Stereo] 0.001kbps"}, // the sum wraps
        {6, 0, 96000, 0, "OggVorbis 44100Hz [QB \x06h] 96.000kbps"},
        {0, 0, 96000, 0, "OggVorbis 44100Hz  96.000kbps"},
    };
    for (const Row& row : rows) {
        auto out = ByteBuilder().fill(11, 0xFF).u8(row.channels).le32(44100);
        const auto bytes = out.le32(row.maximum).le32(row.nominal).le32(row.minimum).bytes;
        EXPECT_EQ(line_of(bytes, 11), row.line);
    }
}

TEST(Vorbis, takes_missing_fields_as_zero) {
    const auto bytes = ByteBuilder().u8(2).le32(48000).le16(0xFFFF).bytes;
    EXPECT_EQ(line_of(bytes, 0), "OggVorbis 48000Hz [ABR Stereo] 32.767kbps");
    EXPECT_EQ(line_of(bytes, bytes.size()), "OggVorbis 0Hz  0.000kbps");
}

} // namespace

} // namespace zat::test::vorbis_test
