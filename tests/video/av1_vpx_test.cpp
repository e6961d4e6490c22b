#include "common/record/details.h"
#include "support/byte_builder.h"
#include "support/details_text.h"
#include "video/av1_config.h"
#include "video/dolby_vision.h"
#include "video/vp8.h"
#include "video/vp9.h"

#include <gtest/gtest.h>

namespace zat::test::av1_vpx_test {
namespace {

// Stream starts that libaom and libvpx wrote, checked with other readers.
const Data av1_hlg = bytes_of_hex("12 00 0a 0e 00 00 00 04 3d 06 d4 da f9 50 91 20 90 40 32 c1");
const Data av1_444 = bytes_of_hex("12 00 0a 0a 20 00 00 04 3d 06 d4 da f9 02 32 95");
const Data vp9_422 = bytes_of_hex("b1 24 c1 a1 12 00 a0 80 5a b0 11 c1 20");
const Data vp9_rgb = bytes_of_hex("a2 49 83 42 e0 14 10 0b 56 04 38 24 1c");
const Data vp8_key = bytes_of_hex("f0 67 00 9d 01 2a 42 41 b6 80 00 07");

std::string facts_of(const Av1Sequence& sequence) {
    ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
    set_av1_facts(&stream, sequence);
    char text[av1_text_size];
    av1_codec_text(sequence, text);
    return std::string(text) + " |" + stream_text(stream).substr(5);
}

std::string facts_of(const Vp9Sequence& sequence) {
    ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
    set_vp9_facts(&stream, sequence);
    char text[vp9_text_size];
    vp9_codec_text(sequence, text);
    return std::string(text) + " |" + stream_text(stream).substr(5);
}

Data av1_record(std::initializer_list<int> head, const Data& units = {}) {
    return ByteBuilder().raw(head).append(units).bytes;
}

// A sequence header with timing, a decoder model and two operating points.
Data av1_with_model() {
    BitBuilder bits;
    bits.bits(0, 5).bits(1, 1).bits(1001, 32).bits(30000, 32).bits(1, 1).bits(1, 1); // one tick a picture
    bits.bits(1, 1).bits(9, 5).bits(0, 42);                                          // decoder model
    bits.bits(1, 1).bits(1, 5);                                                      // two points
    bits.bits(0, 12).bits(13, 5).bits(1, 1).bits(1, 1).bits(0, 21).bits(1, 1).bits(3, 4);
    bits.bits(0, 12).bits(0, 5).bits(0, 1).bits(0, 1);
    bits.bits(10, 4).bits(9, 4).bits(1919, 11).bits(799, 10).bits(0, 4);
    bits.bits(0, 4).bits(1, 1).bits(0, 2).bits(1, 1).bits(1, 1).bits(6, 3).bits(0, 3); // tools
    bits.bits(0, 1).bits(1, 1).bits(0, 1).bits(0, 1).bits(0, 8);                       // 8 bit, monochrome
    return ByteBuilder().u8(0x0A).u8(bits.bytes.size()).append(bits.bytes).bytes;
}

TEST(Av1, reads_configurations_and_sequence_headers) {
    const struct {
        const char* name;
        bool (*parse)(Bytes, Av1Sequence*);
        Data bytes;
        const char* expected;
    } rows[] = {
        {"HLG", parse_av1_units, av1_hlg,
            "AV1 Main@2.0 | size=322:182 bit_depth=10 codec=AV1 profile=Main level=2.0 chroma=4:2:0 primaries=BT.2020 "
            "transfer=HLG matrix=BT.2020 range=limited hdr=HLG"},
        {"4:4:4", parse_av1_units, av1_444,
            "AV1 High@2.0 | size=322:182 bit_depth=8 codec=AV1 profile=High level=2.0 chroma=4:4:4 range=limited"},
        {"timing, decoder model", parse_av1_units, av1_with_model(),
            "AV1 Main@5.1 | frame_rate=29.970 size=1920:800 fps_ratio=30000:1001 bit_depth=8 codec=AV1 profile=Main level=5.1 "
            "chroma=4:0:0 range=limited"},
        {"record alone", parse_av1_config, av1_record({0x81, 0x4D, 0x68, 0}),
            "AV1 Professional@5.1 | bit_depth=12 codec=AV1 profile=Professional level=5.1 chroma=4:2:2"},
        {"no particular level", parse_av1_config, av1_record({0x81, 0x3F, 0, 0}),
            "AV1 High | bit_depth=8 codec=AV1 profile=High chroma=4:4:4"},
        {"record with the header", parse_av1_config, av1_record({0x81, 0x4D, 0x68, 0}, av1_444),
            "AV1 High@2.0 | size=322:182 bit_depth=8 codec=AV1 profile=High level=2.0 chroma=4:4:4 range=limited"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Av1Sequence sequence;
        EXPECT_TRUE(row.parse(row.bytes, &sequence));
        EXPECT_EQ(facts_of(sequence), row.expected);
    }
    Av1Sequence none;
    EXPECT_FALSE(parse_av1_config(av1_record({0x01, 0, 0, 0}), &none));
    EXPECT_FALSE(parse_av1_units(bytes_of_hex("12 00 0a ff ff ff ff ff ff ff ff ff 00"), &none));
    for (size_t length = 0; length < av1_444.size() - 2; ++length) {
        EXPECT_FALSE(parse_av1_units(Bytes(av1_444).first(length), &none)) << length;
    }
}

TEST(Vp9, reads_frames_and_configurations) {
    const auto features = [](Bytes bytes, Vp9Sequence* sequence) {
        parse_vp9_features(bytes, sequence);
        return true;
    };
    const struct {
        const char* name;
        bool (*parse)(Bytes, Vp9Sequence*);
        Data bytes;
        const char* expected;
    } rows[] = {
        {"4:2:2", parse_vp9_frame, vp9_422,
            "VP9 Profile 3 | size=322:182 bit_depth=10 codec=VP9 profile=Profile 3 chroma=4:2:2 primaries=BT.709 "
            "transfer=BT.709 matrix=BT.709 range=limited"},
        {"RGB", parse_vp9_frame, vp9_rgb,
            "VP9 Profile 1 | size=322:182 bit_depth=8 codec=VP9 profile=Profile 1 chroma=4:4:4 primaries=BT.709 transfer=sRGB "
            "matrix=RGB range=full"},
        {"MP4", parse_vp9_config, bytes_of_hex("01 00 00 00 02 1f a2 09 10 09 00 00"),
            "VP9 Profile 2 | bit_depth=10 codec=VP9 profile=Profile 2 level=3.1 chroma=4:2:0 primaries=BT.2020 transfer=PQ "
            "matrix=BT.2020 range=limited hdr=HDR10"},
        {"WebM", features, bytes_of_hex("09 02 01 01 01 01 01 02 01 28 03 01 08 04 01 03 01"),
            "VP9 Profile 1 | bit_depth=8 codec=VP9 profile=Profile 1 level=4 chroma=4:4:4"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Vp9Sequence sequence;
        EXPECT_TRUE(row.parse(row.bytes, &sequence));
        EXPECT_EQ(facts_of(sequence), row.expected);
    }
    Vp9Sequence none;
    EXPECT_FALSE(parse_vp9_frame(bytes_of_hex("86 00 40 92 e0 14 10 0b 56 04 38"), &none)); // between key frames
    EXPECT_FALSE(parse_vp9_frame(Bytes(vp9_rgb).first(8), &none));
}

TEST(Vp8, reads_key_frames_only) {
    Vp8Frame frame;
    ASSERT_TRUE(parse_vp8_frame(vp8_key, &frame));
    ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
    set_vp8_facts(&stream, frame);
    EXPECT_EQ(stream_text(stream), "video size=322:182 bit_depth=8 codec=VP8 chroma=4:2:0"); // scaling bits aside
    EXPECT_FALSE(parse_vp8_frame(Bytes(vp8_key).first(9), &frame));
    EXPECT_FALSE(parse_vp8_frame(bytes_of_hex("f1 67 00 9d 01 2a 42 01 b6 00"), &frame));
}

TEST(DolbyVision, marks_the_stream_of_a_whole_record) {
    const auto hdr = [](std::string_view hex) {
        ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
        set_dolby_vision(&stream, bytes_of_hex(hex));
        return std::string(stream.hdr);
    };
    EXPECT_EQ(hdr("01 00 10 35 10"), "Dolby Vision");
    EXPECT_EQ(hdr("01 00 10 35"), "");
    EXPECT_EQ(hdr("00 00 10 35 10"), "");
}

} // namespace
} // namespace zat::test::av1_vpx_test
