#include "support/byte_builder.h"
#include "support/dispatched.h"
#include "support/video_builder.h"

namespace zat::test::elementary_stream_test {

// Units, each behind a start code.
Data units(std::initializer_list<const char*> digits) {
    ByteBuilder to;
    for (const char* unit : digits) {
        to.raw({0, 0, 1}).append(bytes_of_hex(unit));
    }
    return to.bytes;
}

// A picture of MPEG-4 at `ticks` of 30,000 behind the second that it counts from.
Data vop(uint64_t coding_type, int seconds, uint64_t ticks) {
    BitBuilder bits;
    bits.bits(0x1B6, 32).bits(coding_type, 2).bits(~uint64_t{0}, seconds).bits(1, 2).bits(ticks, 15).bits(3, 2);
    return ByteBuilder().append(bits.bytes).fill(9, 0x55).bytes;
}

// 64x48, High profile, 25 frames a second.
constexpr const char* avc_sps = "67 64 00 0a ac d9 44 7b 01 10 00 00 03 00 10 00 00 03 03 20 f1 22 59 60";
constexpr const char* avc_pps = "68 eb e3 cb 22 c0";
// 352x288, 30,000 ticks a second, pictures at any of them.
constexpr const char* mpeg4_vol = "20 00 c4 8d 8b a9 85 0b 04 24 14 43";

TEST(ElementaryStream, counts_pictures) {
    enum { i_vop, p_vop, b_vop };
    const Data mpeg4 = units({"b0 f1", "b5 a9", "00", mpeg4_vol, "b3 00 10 07"});
    const struct {
        const char* name;
        Data bytes;
        std::string expected; // label, lines and play time, details
    } rows[] = {
        {"H.264, one of three pictures in two slices",
            units({"09 f0", avc_sps, avc_pps, "65 88 84 21", "41 9a 24 6c", "41 4a 24 6c", "01 9e 61 74"}),
            "[H264-ES]\nV 64x48 [AVC/H264 High@1 1:1] 8Bit 25.000fps 4.600kbps 3f Progressive\n0.120\n"},
        {"H.264 in front of a filling", join({units({avc_sps, avc_pps, "65 88 84 21"}), Data(8192)}),
            "[H264-ES]\nV 64x48 [AVC/H264 High@1 1:1] 8Bit 25.000fps 8.600kbps 1f Progressive\n0.040\n"},
        {"H.264 with an extension between its parameter sets", units({avc_sps, "6d ac", "6f 64 00 0a", avc_pps, "65 88 84 21"}),
            "[H264-ES]\nV 64x48 [AVC/H264 High@1 1:1] 8Bit 25.000fps 11.000kbps 1f Progressive\n0.040\n"},
        {"HEVC, a second layer and a second slice segment",
            units({"40 01 0c 01 ff ff 01 60 00 00 03 00 90 00 00 03 00 00 03 00 1e 95 98 09",
                "42 01 01 01 60 00 00 03 00 90 00 00 03 00 00 03 00 1e a0 20 83 16 59 59 ae 4c af 01 68 08 00 00 03 00 08 "
                "00 00 03 00 c8 40",
                "44 01 c1 73 d0 89", "28 01 af 1d", "28 09 af 1d", "02 01 d0 21", "02 01 50 21"}),
            "[HEVC-ES]\nV 64x48 [HEVC/H265 Main@1] 8Bit 25.000fps 10.800kbps 2f Progressive\n0.080\n"},
        {"VC-1", units({"0f cb 84 07 70 33 8a 07 78 1d ff 9b 9b 80 44 80 19", "0e 5a 58 40", "0d c0 c4", "0d 13 17"}),
            "[VC1-ES]\nV 240x104 [VC-1 Advanced@1] 24.000fps 3.744kbps 2f Progressive\n0.083\n"},
        {"MPEG-4, out of order, across a second",
            join({mpeg4, vop(i_vop, 0, 28000), vop(p_vop, 1, 1000), vop(b_vop, 0, 29500), vop(p_vop, 0, 2500)}),
            "[MPEG4-ES]\nV 352x288 [MPEG4 Adv Simple@L0 1:1] 8Bit 20.000fps 4.000kbps 4f Progressive\n0.200\n"},
        {"MPEG-4, pictures left out",
            join({mpeg4, vop(i_vop, 0, 0), vop(p_vop, 0, 1001), vop(p_vop, 0, 2002), vop(p_vop, 3, 3003)}),
            "[MPEG4-ES]\nV 352x288 [MPEG4 Adv Simple@L0 1:1] 8Bit 29.970fps 0.255kbps 4f Progressive\n3.133\n"},
        {"MPEG-4, times that cannot be", join({mpeg4, vop(i_vop, 0, 30000), vop(p_vop, 61, 0), vop(p_vop, 0, 1)}),
            "[MPEG4-ES]\nV 352x288 [MPEG4 Adv Simple@L0 1:1] 8Bit 3f Progressive\n0.000\n"},
        {"nothing that is known", units({"0f 11 22", "0e 33", "0d 44"}), "\n0.000\n"},
    };
    for (const auto& row : rows) {
        const auto found = dispatched(FILETYPE_MPEG, row.bytes);
        const std::string text = found->record.label + std::string("\n") + found->text();
        EXPECT_EQ(text.substr(0, row.expected.size()), row.expected) << row.name;
        expect_sound_when_cut(FILETYPE_MPEG, row.bytes);
    }
}

TEST(ElementaryStream, names_its_encoder) {
    const auto message = [](const char* header, const char* identifier, std::string_view text) {
        return ByteBuilder().raw({0, 0, 1}).append(bytes_of_hex(header)).append(bytes_of_hex(identifier)).text(text).bytes;
    };
    constexpr const char* x264 = "DC 45 E9 BD E6 D9 48 B7 96 2C D8 20 D9 23 EE EF";
    constexpr const char* x265 = "2C A2 DE 09 B5 17 47 DB BB 55 A4 FE 7F C2 FC 4E";
    const Data avc = units({avc_sps, avc_pps});
    const struct {
        Data bytes;
        const char* encoder;
    } rows[] = {
        {join({avc, message("06 05 FF", x264, "x264 - core 164 r3095 baee400 - H.264")}), "x264 core 164"},
        {join({avc, message("06 05 FF", x265, "x265 (build 199) - 3.5+1-f0c1022b6:[Linux]")}), "x265 3.5+1-f0c1022b6"},
        {join({avc, message("06 05 FF", x264, "x264 - core \x80 ")}), ""},
        {join({avc, message("06 05 FF", x264, "x2")}), ""},
        {join({units({mpeg4_vol}), message("B2", "", "XviD0069"), vop(0, 0, 0)}), "XviD0069"},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(dispatched(FILETYPE_MPEG, row.bytes)->details.streams[0].encoder, row.encoder);
    }
}

TEST(ElementaryStream, samples_what_is_large) {
    ByteBuilder large;
    large.append(units({avc_sps, avc_pps}));
    for (int i = 0; i < 1000; ++i) {
        large.append(units({"41 9a 24 6c"})).fill(8000, 0x55);
    }
    const auto found = dispatched(FILETYPE_MPEG, large.bytes);
    const ZatStream& stream = found->details.streams[0];
    EXPECT_NEAR(static_cast<double>(stream.frames), 1000, 2);
    EXPECT_NEAR(found->record.play_time, 40, 0.1);
    EXPECT_EQ(stream.estimated, uint32_t{ZAT_ESTIMATED_DURATION | ZAT_ESTIMATED_BIT_RATE | ZAT_ESTIMATED_FRAMES});
    EXPECT_STREQ(found->record.extra[0], "time estimated");
}

// ISO/IEC 13818-2, 6.2.2.6: a group whose time code is `seconds`.
Data group(int seconds) {
    const int code = seconds / 60 << 13 | 1 << 12 | seconds % 60 << 6; // without pictures, drop frames and hours
    return ByteBuilder().be32(0x1B8).be32(static_cast<uint64_t>(code) << 7 | 0x40).bytes;
}

TEST(ElementaryStream, takes_the_time_codes_of_what_is_large) {
    ByteBuilder large;
    for (int second = 0; second < 90; ++second) {
        large.append(sequence_header({})).append(sequence_extension({})).append(group(second));
        for (int i = 0; i < 30; ++i) {
            large.append(picture(1)).fill(second < 30 || second >= 60 ? 2500 : 8000, 0x55);
        }
    }
    const auto found = dispatched(FILETYPE_MPEG, large.bytes);
    EXPECT_NEAR(found->record.play_time, 90, 0.05);
    EXPECT_EQ(found->details.streams[0].estimated, uint32_t{ZAT_ESTIMATED_FRAMES});
}

} // namespace zat::test::elementary_stream_test
