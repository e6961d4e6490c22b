#include "video/divx_probe.h"

#include "common/text.h"
#include "support/byte_builder.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace zat::test {
namespace {

// A start code and a layer header up to its aspect.
std::vector<uint8_t> vol(
    int aspect, int par_width = 0, int par_height = 0, bool identified = false) {
    BitBuilder bits;
    bits.bits(0x120, 32).bits(0, 1).bits(1, 8).bits(identified ? 1 : 0, 1);
    bits.bits(0x11, identified ? 7 : 0).bits(static_cast<uint64_t>(aspect), 4);
    if (aspect == 15) {
        bits.bits(static_cast<uint64_t>(par_width), 8).bits(static_cast<uint64_t>(par_height), 8);
    }
    return bits.bytes;
}

TEST(Mpeg4Visual, ReadsTheAspectOfTheLastLayer) {
    struct Row {
        const char* name;
        std::vector<uint8_t> bytes;
        const char* aspect;
        int found;
        int done;
    };
    const Row rows[] = {
        {"custom", ByteBuilder().fill(1).append(vol(15, 7, 9)).bytes, "custom 7:9", 1, 1},
        {"behind the layer's identifier",
            ByteBuilder().fill(1).append(vol(15, 255, 255, true)).bytes, "custom 255:255", 1, 1},
        {"the last of two", ByteBuilder().fill(1).append(vol(2)).append(vol(5)).bytes, "16:9 NTSC",
            1, 1},
        {"any distance from the end", ByteBuilder().fill(3).append(vol(1)).fill(5, 0x20).bytes,
            "1:1", 1, 1},
        {"none at the very start", vol(1), "unknown(0)", 0, 0},
        {"reserved code", ByteBuilder().fill(1).append(vol(6)).bytes, "unknown(6)", 1, 1},
        {"cut before the aspect", ByteBuilder().raw({1, 0, 0, 1, 0x20, 0}).bytes, "unknown(0)", 1,
            0},
        {"cut inside the custom ratio", ByteBuilder().raw({1, 0, 0, 1, 0x20, 0, 0xBC, 0x20}).bytes,
            "custom 8:0", 1, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        DivxProbe probe;
        FindDivxVolAspect(row.bytes, &probe);
        Mpeg4AspectName(&probe);
        EXPECT_STREQ(probe.aspect_text, row.aspect);
        EXPECT_EQ(probe.vol_found, row.found);
        EXPECT_EQ(probe.vol_done, row.done);
    }
}

TEST(Mpeg4Visual, NamesProfilesByTheirOddValues) {
    const struct {
        uint32_t value;
        const char* name;
    } rows[] = {{0x01, "Simple@L1"}, {0xF0, "UnknownProfile(240)"}, {0xF1, "Adv Simple@L0"},
        {0xF6, "Adv Simple@L5"}, {0xB1, "Adv Coding Efficieny@L1"}, {0xFD, "FGS@L5"},
        {0xFE, "UnknownProfile(254)"}, {0x101, "UnknownProfile(257)"}};
    for (const auto& row : rows) {
        char text[32];
        Mpeg4ProfileLevelName(text, sizeof text, row.value);
        EXPECT_STREQ(text, row.name);
    }
}

TEST(DivxProbe, FindsTheEncodersStrings) {
    constexpr std::string_view zero("\0", 1);
    const auto text = [&](std::string_view first, std::string_view second = {}) {
        return ByteBuilder()
            .raw({1, 0, 0, 1, 0xB2})
            .text(first)
            .text(zero)
            .text(second)
            .text(zero)
            .append(vol(3))
            .bytes;
    };
    struct Row {
        const char* name;
        const char* fourcc;
        std::vector<uint8_t> bytes;
        int result;
        const char* divx;
        const char* xvid;
        const char* aspect;
    };
    const Row rows[] = {
        {"packed DivX", "DX50", text("DivX503b1393p"), 1, "DivX503b1393", "", "4:3 NTSC"},
        {"packed XviD", "XVID", text("DivX999b000p", "XviD0050"), 3, "DivX999b000", "XviD0050",
            "4:3 NTSC"},
        {"the last of a kind", "DX50", text("DivX1", "DivX2"), 3, "DivX2", "", "4:3 NTSC"},
        {"two strings in all", "DX50", text("DivX1XviD2DivX3"), 3, "DivX1XviD2DivX3", "XviD2DivX3",
            "4:3 NTSC"},
        {"DivXviD is both", "", text("DivXviD"), 3, "DivXviD", "XviD", "4:3 NTSC"},
        {"longer than its room", "", text("DivX567890123456"), 1, "DivX56789012345", "",
            "4:3 NTSC"},
        {"a p in the sixteenth place", "", text("DivX56789012345p"), 1, "DivX56789012345", "",
            "4:3 NTSC"},
        {"a p that is not the last", "", text("DivX5678901234pX"), 1, "DivX5678901234p", "",
            "4:3 NTSC"},
        {"no string, a family's FourCC", "DIV3", text("x264"), -1, "", "", "4:3 NTSC"},
        {"no string, another FourCC", "FMP4", text("x264"), -1, "", "", ""},
        {"at the very end, without a zero", "", ByteBuilder().text("DDivXXviD").bytes, 3,
            "DivXXviD", "XviD", "unknown(0)"},
        {"cut", "XVID", ByteBuilder().text("Xvi").bytes, -1, "", "", "unknown(0)"},
        {"empty", "XVID", {}, -1, "", "", "unknown(0)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        DivxProbe probe;
        copy_text(probe.fourcc, row.fourcc);
        const std::vector<uint8_t> exact(row.bytes);
        EXPECT_EQ(find_divx_strings(exact, &probe), row.result);
        EXPECT_STREQ(probe.divx_string, row.divx);
        EXPECT_STREQ(probe.xvid_string, row.xvid);
        EXPECT_STREQ(probe.aspect_text, row.aspect);
    }
}

TEST(DivxProbe, SearchesTheFilesFirstMebibyteFromTheMovieData) {
    const struct {
        const char* name;
        size_t at; // of the string
        uint32_t movi_pos;
        int result;
        uint32_t divx_pos;
    } rows[] = {
        {"before the movie data", 5, 10, -1, 0},
        {"at its end", 10 + divx_search_limit - 4, 10, 1, divx_search_limit - 4},
        {"across its end", 10 + divx_search_limit - 3, 10, -1, 0},
        {"movie data behind the file's end", 5, 0xFFFFFFFF, -1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TempFile temp(ByteBuilder().fill(row.at).text("DivX").fill(20).bytes);
        FileRecord file;
        ASSERT_EQ(FileOpen(&file, temp.path.c_str()), 0);
        DivxProbe probe;
        probe.movi_pos = row.movi_pos;
        EXPECT_EQ(FindDivxStrings(&file, &probe), row.result);
        EXPECT_EQ(probe.divx_pos, row.divx_pos);
        FileClose(&file);
    }
}

TEST(DivxProbe, DecidesTheCodecName) {
    const struct {
        const char* fourcc;
        const char* divx_string;
        const char* xvid_string;
        uint32_t lookup;
        const char* expected;
    } rows[] = {
        {"DX50", "DivX503b1393", "", 0, "found divx"},
        {"DX50", "DivX503b1393", "", 1,
            "\x8A\x59\x93\x96\x96\xB3\x82\xB5"
            "DivX503b1393"},
        {"XVID", "DivX503b1393", "", 1, ""},
        {"XVID", "", "XviD0050", 0, "found xvid"},
        {"XVID", "", "XviD0050", 2,
            "C\x96\xB3"
            "XviD0050"},
        {"DX50", "", "XviD0050", 2, ""},
        {"XVID", "DivX999b000", "XviD0050", 1,
            "\x8A\x59\x93\x96\x96\xB3\x82\xB5"
            "XviD0050(BVOP)"},
        {"DX50", "DivX999b000", "XviD0050", 0, "found xvid(BVOP)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.fourcc) + row.divx_string + row.xvid_string);
        DivxProbe probe;
        copy_text(probe.fourcc, row.fourcc);
        copy_text(probe.divx_string, row.divx_string);
        copy_text(probe.xvid_string, row.xvid_string);
        copy_text(probe.divx_name, "found divx");
        copy_text(probe.xvid_name, "found xvid");
        probe.divx_found = row.divx_string[0] != '\0' ? 1 : 0;
        probe.xvid_found = row.xvid_string[0] != '\0' ? 1 : 0;
        probe.lookup_result = row.lookup;
        ComposeDivxCodecName(&probe);
        EXPECT_STREQ(probe.codec_name, row.expected);
    }
}

TEST(DivxProbe, WritesFourccsAndKnowsTheFamily) {
    char text[9];
    FourccText(reinterpret_cast<const uint8_t*>("ms\0U"), text);
    EXPECT_STREQ(text, "6d730055");
    FourccText(reinterpret_cast<const uint8_t*>(" \xA9xy"), text);
    EXPECT_STREQ(text, " \xA9xy");
    for (const char* fourcc : {"DX50", "DIVX", "DIV3", "XVID"}) {
        EXPECT_EQ(IsDivxFamilyFourcc(fourcc), 0) << fourcc;
    }
    for (const char* fourcc : {"xvid", "divx", "DX5", "FMP4", ""}) {
        EXPECT_EQ(IsDivxFamilyFourcc(fourcc), -1) << fourcc;
    }
}

} // namespace
} // namespace zat::test
