#include "video/hevc_sps.h"

#include "common/record/details.h"
#include "support/byte_builder.h"
#include "support/details_text.h"

#include <gtest/gtest.h>

namespace zat::test::hevc_sps_test {
namespace {

// What x265 wrote, checked with other readers.
const Data main_10 = bytes_of_hex("42 01 01 02 20 00 00 03 00 90 00 00 03 00 00 03 00 3c a0 0a 48 0b 9c 94 d9 65 66 92 4c af 04 "
                                  "6a 12 20 12 08 00 00 1f 48 00 02 ee 00 40");
const Data range_extensions = bytes_of_hex("42 01 01 04 08 00 00 03 00 99 08 00 00 03 00 00 3c b0 0a 48 0b 9c 96 52 96 56 69 24 "
                                           "e5 78 0b 40 40 00 00 fa 40 00 17 70 02");

Data record(const Data& sps) {
    ByteBuilder to;
    to.raw({1, 0x22}).fill(4).raw({0x90}).fill(5).raw({153, 0xF0, 0, 0xFC, 0xFE, 0xFA, 0xF8, 0, 0, 0x0F, 2});
    to.raw({0x20}).be16(1).be16(3).raw({0x40, 1, 0});
    return to.raw({0x21}).be16(1).be16(sps.size()).append(sps).bytes;
}

Data annex_b(const Data& sps) {
    return ByteBuilder().raw({0, 0, 0, 1, 0x40, 1, 0, 0, 0, 1}).append(sps).raw({0, 0, 1, 0x44, 1}).bytes;
}

std::string facts(const HevcSequence& sequence) {
    ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
    set_hevc_facts(&stream, sequence);
    char text[hevc_text_size];
    hevc_codec_text(sequence, text);
    return std::string(text) + " |" + stream_text(stream).substr(5);
}

TEST(HevcSps, reads_parameter_sets_wherever_they_stand) {
    const std::string whole =
        "HEVC/H265 Main 10@2 | frame_rate=23.976 size=322:182 pixel=16:11 display=368:143 fps_ratio=24000:1001 scan=1 "
        "bit_depth=10 codec=HEVC profile=Main 10 level=2 chroma=4:2:0 primaries=BT.2020 transfer=PQ matrix=BT.2020 "
        "range=limited hdr=HDR10";
    const struct {
        const char* name;
        bool (*parse)(Bytes, HevcSequence*);
        Data bytes;
        std::string expected;
    } rows[] = {
        {"NAL unit", parse_hevc_sps, main_10, whole},
        {"record", parse_hevc_config, record(main_10), whole},
        {"Annex B", find_hevc_sps, annex_b(main_10), whole},
        {"range extensions, scaling lists", parse_hevc_sps, range_extensions,
            "HEVC/H265 Main 4:2:2 12@2 | frame_rate=23.976 size=322:182 pixel=1:1 display=23:13 fps_ratio=24000:1001 scan=1 "
            "bit_depth=12 codec=HEVC profile=Main 4:2:2 12 level=2 chroma=4:2:2 range=limited"},
        {"fields", parse_hevc_sps,
            bytes_of_hex("42 01 01 01 60 00 00 03 00 40 00 00 03 00 00 03 00 3c a0 0a 08 1e 59 64 a9 24 ca f0 10 d0 00 00 03 00 "
                         "10 00 00 03 03 20 80 00"),
            "HEVC/H265 Main@2 | frame_rate=25.000 size=320:240 pixel=1:1 display=4:3 fps_ratio=25:1 scan=2 bit_depth=8 "
            "codec=HEVC profile=Main level=2 chroma=4:2:0"},
        {"record without a parameter set", parse_hevc_config, record({0x44, 1, 2}),
            "HEVC/H265 Main 10@5.1 | scan=1 bit_depth=10 codec=HEVC profile=Main 10 level=5.1 chroma=4:2:2"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        HevcSequence sequence;
        EXPECT_TRUE(row.parse(row.bytes, &sequence));
        EXPECT_EQ(facts(sequence), row.expected);
    }
    HevcSequence none;
    EXPECT_FALSE(parse_hevc_config(Data(23, 0), &none));
    EXPECT_FALSE(find_hevc_sps(annex_b({0x44, 1, 2}), &none));
}

// A cut set keeps what was told, and nothing that was not.
TEST(HevcSps, survives_every_length_and_all_ones) {
    for (const Data& sps : {main_10, range_extensions}) {
        for (size_t length = 0; length < sps.size(); ++length) {
            SCOPED_TRACE(length);
            const Data cut(sps.begin(), sps.begin() + static_cast<std::ptrdiff_t>(length));
            HevcSequence sequence;
            parse_hevc_sps(cut, &sequence);
            EXPECT_TRUE(sequence.width == 0 || sequence.width == 322);
            EXPECT_TRUE(sequence.time_scale == 0 || sequence.time_scale == 24000);
        }
        for (size_t i = 2; i < sps.size(); ++i) {
            Data damaged = sps;
            for (const int value : {0, 0xFF, 0x55}) {
                damaged[i] = static_cast<uint8_t>(value);
                HevcSequence sequence;
                parse_hevc_sps(damaged, &sequence);
                EXPECT_TRUE(sequence.bit_depth <= 16);
            }
        }
    }
}

} // namespace
} // namespace zat::test::hevc_sps_test
