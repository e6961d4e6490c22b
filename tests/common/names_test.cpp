#include "common/catalogue/codec_names.h"
#include "common/text/fourcc.h"
#include "common/text/utc_time.h"
#include "container/matroska/codecs.h"
#include "container/mpeg_ts/codecs.h"

#include <gtest/gtest.h>
#include <string>

namespace zat::test::names_test {

TEST(CodecNames, one_name_whatever_the_container_says) {
    ZatStream video = new_stream(ZAT_STREAM_VIDEO);
    for (const uint32_t code : {fourcc("avc1"), fourcc("h264"), fourcc("X264")}) {
        set_fourcc_codec(&video, code);
        EXPECT_STREQ(video.codec, "H.264");
    }
    set_fourcc_codec(&video, fourcc("zz\x01z"));
    EXPECT_STREQ(video.codec, "7a7a017a");
    EXPECT_EQ(video_fourcc_name(0x03000000).codec, "Raw video");
    const std::pair<std::string_view, uint32_t> real_audio[] = {{"A_REAL/14_4", fourcc("14_4")}, {"A_REAL/28_8", fourcc("28_8")},
        {"A_REAL/COOK", fourcc("cook")}, {"A_REAL/SIPR", fourcc("sipr")}, {"A_REAL/RALF", fourcc("ralf")},
        {"A_REAL/ATRC", fourcc("atrc")}};
    for (const auto& [id, code] : real_audio) {
        EXPECT_EQ(matroska::find_codec(id)->name.codec, audio_fourcc_name(code).codec);
    }
    EXPECT_EQ(ts::text_of(ts::Codec::mpegh).details, audio_fourcc_name(fourcc("mhm1")).codec);
    struct Tag {
        uint16_t tag;
        uint32_t bits;
        std::string expected;
    };
    const Tag tags[] = {{0x0001, 8, "PCM/unsigned 8"}, {0x0001, 24, "PCM/signed 24 LE"}, {0x0003, 32, "PCM/float 32 LE"},
        {0x0001, 0, "PCM/"}, {0x0011, 4, "ADPCM/IMA"}, {0x0055, 0, "MP3/"}, {0xF1AC, 16, "FLAC/"}, {0x9999, 0, "0x9999/"}};
    for (const Tag& row : tags) {
        ZatStream audio = new_stream(ZAT_STREAM_AUDIO);
        set_format_tag_codec(&audio, row.tag, row.bits);
        EXPECT_EQ(std::string(audio.codec) + "/" + audio.profile, row.expected);
        EXPECT_EQ((audio.flags & ZAT_FLAG_LOSSLESS) != 0, row.tag == 0xF1AC);
    }
}

TEST(UtcTime, counts_leap_days) {
    char text[utc_text_size];
    format_utc(1709250900, text);
    EXPECT_STREQ(text, "2024-02-29T23:55:00Z");
    format_utc(unix_seconds_of_1904, text);
    EXPECT_STREQ(text, "1904-01-01T00:00:00Z");
    format_utc(unix_seconds_of_1601 - 1, text);
    EXPECT_STREQ(text, "1600-12-31T23:59:59Z");
    format_utc(INT64_MAX, text);
    EXPECT_STREQ(text, "");
}

} // namespace zat::test::names_test
