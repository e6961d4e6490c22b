#include "audio/vorbis.h"

#include "common/text.h"
#include "support/byte_builder.h"

#include <gtest/gtest.h>

namespace zat::test {

namespace {

TEST(Vorbis, tells_the_rate_mode_by_the_three_rates) {
    struct Row {
        uint32_t channels;
        uint32_t maximum;
        uint32_t nominal;
        uint32_t minimum;
        const char* line;
    };
    const Row rows[] = {
        {1, 0, 96000, 0, "OggVorbis 44100Hz [QB Mono] 96.000kbps"},
        {2, UINT32_MAX, 128000, UINT32_MAX, "OggVorbis 44100Hz [VBR Stereo] 128.000kbps"},
        {2, 64000, 64000, 64000, "OggVorbis 44100Hz [CBR Stereo] 64.000kbps"},
        {2, 160000, 0, 96001, "OggVorbis 44100Hz [ABR Stereo] 128.000kbps"},
        {2, UINT32_MAX, 0, 3, "OggVorbis 44100Hz [ABR Stereo] 0.001kbps"}, // the sum wraps
        {6, 0, 96000, 0, "OggVorbis 44100Hz [QB \x06h] 96.000kbps"},
        {0, 0, 96000, 0, "OggVorbis 44100Hz  96.000kbps"},
    };
    for (const Row& row : rows) {
        auto out = ByteBuilder().fill(11, 0xFF).u8(row.channels).le32(44100);
        const auto bytes = out.le32(row.maximum).le32(row.nominal).le32(row.minimum).bytes;
        char line[line_size];
        uint32_t bitrate = 0;
        FormatVorbisLine(bytes, 11, line, &bitrate);
        EXPECT_STREQ(line, row.line);
    }
}

TEST(Vorbis, takes_missing_fields_as_zero) {
    const auto bytes = ByteBuilder().u8(2).le32(48000).le16(0xFFFF).bytes;
    char line[line_size];
    uint32_t bitrate = 0;
    FormatVorbisLine(bytes, 0, line, &bitrate);
    EXPECT_STREQ(line, "OggVorbis 48000Hz [ABR Stereo] 32.767kbps");
    EXPECT_EQ(bitrate, 32767U);
    FormatVorbisLine(bytes, SIZE_MAX, line, &bitrate);
    EXPECT_STREQ(line, "OggVorbis 0Hz  0.000kbps");
}

} // namespace

} // namespace zat::test
