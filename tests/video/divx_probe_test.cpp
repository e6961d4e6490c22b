#include "video/divx_probe.h"

#include "common/text/fourcc.h"
#include "common/text/text.h"
#include "support/byte_builder.h"
#include "support/temp_file.h"
#include "video/mpeg4_visual.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zat::test::divx_probe_test {
namespace {

// A start code and a layer header up to its aspect.
std::vector<uint8_t> vol(int aspect, int par_width = 0, int par_height = 0, bool identified = false) {
    BitBuilder bits;
    bits.bits(0x120, 32).bits(0, 1).bits(1, 8).bits(identified ? 1 : 0, 1);
    bits.bits(0x11, identified ? 7 : 0).bits(static_cast<uint64_t>(aspect), 4);
    if (aspect == 15) {
        bits.bits(static_cast<uint64_t>(par_width), 8).bits(static_cast<uint64_t>(par_height), 8);
    }
    return bits.bytes;
}

TEST(Mpeg4Visual, reads_the_aspect_of_the_last_layer) {
    const struct {
        ByteBuilder bytes;
        const char* aspect;
        int found, done;
    } rows[] = {
        {ByteBuilder().u8(1).append(vol(15, 255, 255, true)), "custom 255:255", 1, 1},
        {ByteBuilder().u8(1).append(vol(2)).append(vol(5)).fill(5, 0x20), "16:9 NTSC", 1, 1},
        {ByteBuilder().u8(1).append(vol(6)), "unknown(6)", 1, 1},
        // None at the very start; cut before the aspect; cut inside the custom ratio.
        {ByteBuilder().append(vol(1)), "unknown(0)", 0, 0},
        {ByteBuilder().u8(1).raw({0, 0, 1, 0x20, 0}), "unknown(0)", 1, 0},
        {ByteBuilder().u8(1).raw({0, 0, 1, 0x20, 0, 0xBC, 0x20}), "custom 8:0", 1, 0},
    };
    for (const auto& row : rows) {
        DivxProbe probe;
        FindDivxVolAspect(row.bytes.bytes, &probe);
        Mpeg4AspectName(&probe);
        EXPECT_STREQ(probe.aspect_text, row.aspect);
        EXPECT_EQ(probe.vol_found, row.found);
        EXPECT_EQ(probe.vol_done, row.done);
    }
}

TEST(Mpeg4Visual, names_profiles_by_their_odd_values) {
    const struct {
        uint32_t value;
        const char* name;
    } rows[] = {{0xF0, "UnknownProfile(240)"}, {0xF7, "Adv Simple@L3b"}, {0xB1, "Adv Coding Efficieny@L1"},
        {0xFE, "UnknownProfile(254)"}};
    for (const auto& row : rows) {
        char text[32];
        Mpeg4ProfileLevelName(text, sizeof text, row.value);
        EXPECT_STREQ(text, row.name);
    }
}

// User data; "/" stands for the zero byte.
std::vector<uint8_t> user_data(std::string_view text) {
    ByteBuilder builder;
    for (const char c : text) {
        builder.u8(c == '/' ? 0 : static_cast<uint8_t>(c));
    }
    return builder.bytes;
}

TEST(DivxProbe, finds_the_encoders_strings) {
    const struct {
        const char* bytes;
        int result;
        const char *divx, *xvid;
    } rows[] = {
        {"DivX999b000p/XviD0050/", 3, "DivX999b000", "XviD0050"},
        {"DivX1/DivX2/XviD3", 3, "DivX2", ""},
        {"DivXviD", 3, "DivXviD", "XviD"},
        // Sixteen characters count, fifteen are kept.
        {"DivX567890123456", 1, "DivX56789012345", ""},
        {"DivX5678901234pX", 1, "DivX5678901234p", ""},
        {"", -1, "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        DivxProbe probe;
        EXPECT_EQ(find_divx_strings(user_data(row.bytes), &probe), row.result);
        EXPECT_STREQ(probe.divx_string, row.divx);
        EXPECT_STREQ(probe.xvid_string, row.xvid);
    }
}

// Only encodes with the encoder's string, and codes of the family, have their aspect read.
TEST(DivxProbe, reads_the_aspect_of_its_encodes_and_family_only) {
    const char* const rows[][3] = {{"FMP4", "DivX1/", "4:3 NTSC"}, {"DIV3", "x264/", "4:3 NTSC"}, {"FMP4", "x264/", ""}};
    for (const auto& [fourcc, text, aspect] : rows) {
        DivxProbe probe;
        copy_text(probe.fourcc, fourcc);
        find_divx_strings(ByteBuilder().text(text).append(vol(3)).bytes, &probe);
        EXPECT_STREQ(probe.aspect_text, aspect);
    }
}

TEST(DivxProbe, searches_the_files_first_mebibyte_from_the_movie_data) {
    const struct {
        size_t at; // of the string
        uint32_t movi_pos;
        int result;
    } rows[] = {
        {5, 10, -1},
        {10 + divx_search_limit - 4, 10, 1},
        {10 + divx_search_limit - 3, 10, -1},
        {5, 0xFFFFFFFF, -1},
    };
    for (const auto& row : rows) {
        const TempFile temp(ByteBuilder().fill(row.at).text("DivX").fill(20).bytes);
        FileRecord file;
        ASSERT_EQ(FileOpen(&file, temp.path.c_str()), 0);
        DivxProbe probe;
        probe.movi_pos = row.movi_pos;
        EXPECT_EQ(FindDivxStrings(&file, &probe), row.result);
        EXPECT_EQ(probe.divx_pos, row.result == 1 ? row.at - row.movi_pos : 0);
        FileClose(&file);
    }
}

TEST(DivxProbe, decides_the_codec_name) {
#define NOT_LISTED "\x8A\x59\x93\x96\x96\xB3\x82\xB5"
    const struct {
        const char *fourcc, *divx_string, *xvid_string;
        uint32_t lookup;
        const char* expected;
    } rows[] = {
        {"DX50", "DivX503", "", 0, "found divx"},
        {"XVID", "DivX503", "", 1, ""},
        {"XVID", "", "XviD0050", 2, "C\x96\xB3XviD0050"},
        {"XVID", "DivX999b000", "XviD0050", 1, NOT_LISTED "XviD0050(BVOP)"},
        {"DX50", "DivX999b000", "XviD0050", 0, "found xvid(BVOP)"},
    };
#undef NOT_LISTED
    for (const auto& row : rows) {
        SCOPED_TRACE(row.expected);
        DivxProbe probe;
        copy_text(probe.fourcc, row.fourcc);
        copy_text(probe.divx_string, row.divx_string);
        copy_text(probe.xvid_string, row.xvid_string);
        copy_text(probe.divx_name, "found divx");
        copy_text(probe.xvid_name, "found xvid");
        probe.divx_found = *row.divx_string != '\0' ? 1 : 0;
        probe.xvid_found = *row.xvid_string != '\0' ? 1 : 0;
        probe.lookup_result = row.lookup;
        ComposeDivxCodecName(&probe);
        EXPECT_STREQ(probe.codec_name, row.expected);
    }
}

TEST(DivxProbe, writes_fourccs_and_knows_the_family) {
    char text[fourcc_text_size];
    FourccText(reinterpret_cast<const uint8_t*>("ms\0U"), text);
    EXPECT_STREQ(text, "6d730055");
    FourccText(reinterpret_cast<const uint8_t*>(" \xA9xy"), text);
    EXPECT_STREQ(text, " \xA9xy");
    for (const auto& [fourcc, result] :
        {std::pair{"DIV3", 0}, std::pair{"XVID", 0}, std::pair{"xvid", -1}, std::pair{"DX5", -1}, std::pair{"", -1}}) {
        EXPECT_EQ(IsDivxFamilyFourcc(fourcc), result) << fourcc;
    }
}

} // namespace
} // namespace zat::test::divx_probe_test
