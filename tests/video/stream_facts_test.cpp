#include "video/stream_facts.h"

#include "common/record/details.h"
#include "support/details_text.h"
#include "support/video_builder.h"

#include <gtest/gtest.h>

namespace zat::test::stream_facts_test {
namespace {

Data display_extension() {
    return BitBuilder()
        .bits(0x1B5, 32)
        .bits(2, 4)
        .bits(0, 3)
        .bits(1, 1)
        .bits(0x010101, 24)
        .bits(540, 14)
        .bits(1, 1)
        .bits(480, 14)
        .bits(0, 3)
        .bytes;
}

TEST(VideoFacts, of_mpeg_sequences) {
    const Data false_header = sequence_header({.marker = 0});
    const struct {
        const char* name;
        Data stream;
        const char* expected;
    } rows[] = {
        {"MPEG-1, pixels by their height", join({sequence_header({352, 288, 8, 3, 2875, 20}), picture(1)}),
            "video bit_rate=1150000 frame_rate=25.000 size=352:288 pixel=10000:9157 display=110000:82413 "
            "fps_ratio=25:1 scan=1 bit_depth=8 codec=MPEG-1 Video chroma=4:2:0"},
        {"what the extension adds",
            join({sequence_header({.width = 704, .rate = 5, .bit_rate = 0x3FFFF}),
                sequence_extension({.progressive = 1, .chroma = 2, .width = 1, .bit_rate = 1, .rate_n = 1, .rate_d = 2}),
                picture(1)}),
            "video bit_rate=209714800 frame_rate=20.000 size=4800:480 pixel=8:45 display=16:9 fps_ratio=20:1 scan=1 "
            "bit_depth=8 codec=MPEG-2 Video profile=Main level=Main chroma=4:2:2"},
        {"a false header and an extension behind the picture are passed over",
            join({false_header, sequence_header({}), sequence_extension({}), picture(1, 3, 0), display_extension()}),
            "video bit_rate=8000000 frame_rate=29.970 size=720:480 pixel=32:27 display=16:9 fps_ratio=30000:1001 "
            "scan=2 field_order=2 bit_depth=8 codec=MPEG-2 Video profile=Main level=Main chroma=4:2:0"},
        {"no aspect", join({sequence_header({.aspect = 0}), picture(1)}),
            "video bit_rate=8000000 frame_rate=29.970 size=720:480 fps_ratio=30000:1001 scan=1 bit_depth=8 "
            "codec=MPEG-1 Video chroma=4:2:0"},
        {"variable rate, field pictures",
            join({sequence_header({.bit_rate = 0x3FFFF}), sequence_extension({.profile = 8, .level = 5}), picture(1, 1)}),
            "video mode=2 frame_rate=29.970 size=720:480 pixel=32:27 display=16:9 fps_ratio=30000:1001 scan=2 "
            "field_order=1 bit_depth=8 codec=MPEG-2 Video profile=4:2:2 level=Main chroma=4:2:0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        MpegVideoHeaders headers;
        EXPECT_EQ(find_mpeg_video_headers(row.stream, &headers), 0);
        ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
        mpeg_video_facts(headers, &stream);
        EXPECT_EQ(stream_text(stream), row.expected);
    }
    MpegVideoHeaders headers;
    EXPECT_EQ(find_mpeg_video_headers(false_header, &headers), 1);
}

TEST(VideoFacts, of_mpeg4_visual) {
    // A resolution of 30000 needs 15 bits for the fixed increment.
    BitBuilder vol;
    vol.bits(0x1B0, 32)
        .bits(0xF3, 8)
        .bits(0x120, 32)
        .bits(0, 1)
        .bits(17, 8)
        .bits(1, 1)
        .bits(2, 4)
        .bits(1, 3)
        .bits(15, 4)
        .bits(40, 8)
        .bits(33, 8);
    vol.bits(1, 1).bits(1, 2).bits(0, 1).bits(1, 1).bits(0, 32).bits(0, 19).bits(0, 28).bits(0, 2);
    vol.bits(1, 1)
        .bits(30000, 16)
        .bits(1, 1)
        .bits(1, 1)
        .bits(1001, 15)
        .bits(1, 1)
        .bits(640, 13)
        .bits(1, 1)
        .bits(480, 13)
        .bits(1, 1)
        .bits(1, 1);
    Mpeg4Headers headers;
    EXPECT_EQ(find_mpeg4_headers(vol.bytes, &headers), 0);
    ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
    mpeg4_facts(headers, &stream);
    EXPECT_EQ(stream_text(stream), "video frame_rate=29.970 size=640:480 pixel=40:33 display=160:99 fps_ratio=30000:1001 scan=2 "
                                   "bit_depth=8 codec=MPEG-4 Visual profile=Advanced Simple level=3 chroma=4:2:0");
    char text[video_codec_size];
    mpeg4_codec_text(headers, text);
    EXPECT_STREQ(text, "MPEG4 Adv Simple@L2 custom 40:33");
    for (size_t length = 9; length < vol.bytes.size(); ++length) {
        EXPECT_EQ(find_mpeg4_headers(Bytes(vol.bytes).first(length), &headers), 1) << length;
    }
    BitBuilder deep; // an N-bit object of 12 bits
    deep.bits(0x120, 32).bits(0, 1).bits(6, 8).bits(0, 1).bits(1, 4).bits(0, 1).bits(0, 2).bits(1, 1).bits(25, 16).bits(1, 1);
    deep.bits(0, 1).bits(1, 1).bits(640, 13).bits(1, 1).bits(480, 13).bits(1, 1).bits(0, 1).bits(2, 2).bits(1, 1).bits(5, 4);
    EXPECT_EQ(find_mpeg4_headers(deep.bits(12, 4).bytes, &headers), 0);
    EXPECT_EQ(headers.vol.bit_depth, 12);
}

TEST(VideoFacts, of_vc1) {
    const auto header = [](uint64_t profile) {
        BitBuilder bits;
        bits.bits(0x10F, 32)
            .bits(profile, 2)
            .bits(3, 3)
            .bits(1, 2)
            .bits(0, 9)
            .bits(959, 12)
            .bits(539, 12)
            .bits(0, 1)
            .bits(1, 1)
            .bits(0, 4);
        bits.bits(1, 1)
            .bits(1919, 14)
            .bits(1079, 14)
            .bits(1, 1)
            .bits(15, 4)
            .bits(3, 8)
            .bits(2, 8)
            .bits(1, 1)
            .bits(0, 1)
            .bits(1, 8)
            .bits(2, 4);
        return bits.bits(1, 1).bits(9, 8).bits(16, 8).bits(9, 8).bits(0, 8).bytes;
    };
    Vc1Sequence sequence;
    EXPECT_EQ(find_vc1_sequence(header(0), &sequence), 1);
    EXPECT_EQ(find_vc1_sequence(header(3), &sequence), 0);
    ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
    vc1_facts(sequence, &stream);
    EXPECT_EQ(stream_text(stream),
        "video frame_rate=23.976 size=1920:1080 pixel=4:3 display=64:27 fps_ratio=24000:1001 scan=2 bit_depth=8 codec=VC-1 "
        "profile=Advanced level=3 chroma=4:2:0 primaries=BT.2020 transfer=PQ matrix=BT.2020 hdr=HDR10");
    char text[video_codec_size];
    vc1_codec_text(sequence, text);
    EXPECT_STREQ(text, "VC-1 Advanced@3");
}

} // namespace
} // namespace zat::test::stream_facts_test
