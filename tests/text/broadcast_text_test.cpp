#include "text/arib_symbols.h"
#include "text/arib_text.h"
#include "text/dvb_text.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace zat::test::broadcast_text_test {

using namespace std::string_literals;

Bytes bytes_of(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

std::string arib(const std::string& text) {
    char out[512];
    const size_t length = arib_to_utf8(bytes_of(text), out, sizeof out);
    EXPECT_EQ(length, std::string(out).size());
    return out;
}

std::string dvb(const std::string& text, DvbDefault table = DvbDefault::iso6937) {
    char out[512];
    const size_t length = dvb_to_utf8(bytes_of(text), table, out, sizeof out);
    EXPECT_EQ(length, std::string(out).size());
    return out;
}

struct Row {
    const char* name;
    std::string bytes;
    std::string expected;
};

TEST(AribText, follows_shifts_and_designations) {
    const Row rows[] = {
        {"initial sets",
            "\x46\x7C\x4B\x5C\xA2\xA4\x0E"
            "AB",
            "日本あいAB"},
        {"GR holds two bytes after LS3R and katakana", "\x1B\x7C\xA2\xA4", "アイ"},
        {"LS1R, and plain ASCII", "\x1B\x7E\xC1\xC2", "AB"},
        {"LS2, LS3, LS0", "\x1B\x6E\x22\x1B\x6F\x22\x0F\x46\x7C", "あア日"},
        {"LS2R comes back", "\x1B\x7E\xC1\x1B\x7D\xA2", "Aあ"},
        {"single shifts last one character",
            "\x0E"
            "A\x19\x22"
            "B\x1D\x22"
            "C",
            "AあBアC"},
        {"designation of one and two bytes",
            "\x1B\x28\x4A"
            "A\x1B\x24\x42\x46\x7C\x1B\x24\x29\x42\x0E\x4B\x5C",
            "A日本"},
        {"proportional sets",
            "\x1B\x28\x36"
            "A\x1B\x28\x37\x22\x1B\x28\x38\x22",
            "Aあア"},
        {"half-width katakana", "\x1B\x28\x49\x31\x32\x60", "ｱｲ〓"},
        {"JIS X 0213 planes", "\x1B\x24\x39\x46\x7C\x75\x21\x1B\x24\x3A\x46\x7C", "日〓〓"},
        {"symbols by their own set", "\x1B\x24\x3B\x7A\x56", "[字]"},
        {"mosaics and DRCS", "\x1B\x28\x32\x21\x1B\x28\x20\x41\x21\x1B\x24\x28\x20\x40\x21\x21", "〓〓〓"},
        {"kana signs", "\x1B\x28\x30\x77\x78\x79\x7A\x7B\x7C\x7D\x7E\x1B\x28\x31\x77\x78\x74\x76", "ゝゞー。「」、・ヽヾヴヶ"},
        {"yen and overline", "\x0E\x5C\x7E", "¥‾"},
        {"macro 60 and 6E", "\x1B\x28\x20\x70\x60\x46\x7C\xA2\x1B\x6F\x6E\x22", "日あア"},
        {"unknown sets keep their width",
            "\x1B\x28\x7D\x21\x1B\x24\x7D\x21\x21\x1B\x28\x4A"
            "A",
            "〓〓A"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(arib(row.bytes), row.expected) << row.name;
    }
}

TEST(AribText, passes_over_controls) {
    const Row rows[] = {
        {"sizes and colours",
            "\x89\x0E"
            "A\x8A\x87"
            "B\x8B\x60"
            "C\x90\x20\x41"
            "D\x90\x51"
            "E\x92\x20\x21"
            "F\x92\x30"
            "G",
            "ABCDEFG"},
        {"flashing to highlighting",
            "\x0E\x91\x40"
            "A\x93\x40"
            "B\x94\x40"
            "C\x97\x40"
            "D\x99\x9A"
            "E",
            "ABCDE"},
        {"positions",
            "\x0E"
            "A\x16\x41"
            "B\x1C\x41\x42"
            "C\x08\x0A\x0B\x0C\x1E\x1F"
            "D\x09"
            "E\x0D"
            "F",
            "ABCD E F"},
        {"CSI",
            "\x0E"
            "A\x9B\x31\x3B\x32\x20\x53"
            "B",
            "AB"},
        {"time",
            "\x0E"
            "A\x9D\x20\x41"
            "B\x9D\x28\x41"
            "C\x9D\x29\x31\x32\x40"
            "D",
            "ABCD"},
        {"macro definition",
            "\x0E"
            "A\x95\x40\x60"
            "BCD\x95\x4F"
            "E",
            "AE"},
        {"repetition",
            "\x0E\x98\x43"
            "AB\x98\x42\x1B\x7D\xA2",
            "AAABああ"},
        {"delete codes",
            "\x0E"
            "A\x7F\xFF"
            "B",
            "AB"},
        {"spaces of both widths", "\x46\x7C\x20\x46\x7C\x0E A", "日　日 A"},
        {"a character cut at the end", "\x46\x7C\x46", "日"},
        {"a character cut by a control",
            "\x46\x0E"
            "A",
            "A"},
        {"escape at the end", "\x46\x7C\x1B", "日"},
        {"endless constructions",
            "\x0E"
            "A\x95\x40"
            "BCD",
            "A"},
        {"blanks", "\x0E  A   B  ", "A B"},
        {"nothing", "", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(arib(row.bytes), row.expected) << row.name;
    }
}

// The first and the last cell of every run, and those around the gaps.
TEST(AribText, knows_the_additional_symbols) {
    const struct {
        uint32_t row, cell;
        const char* symbol;
    } rows[] = {{85, 5, "侚"}, {85, 11, "匇"}, {85, 59, "海"}, {85, 92, "禮"}, {86, 8, "羡"}, {86, 13, "葛"}, {86, 43, "麺"},
        {86, 44, ""}, {90, 15, ""}, {90, 16, "[P]"}, {90, 17, "[P]"}, {90, 44, ""}, {90, 45, "10."}, {90, 48, "[HV]"},
        {90, 54, "[字]"}, {90, 64, "■"}, {90, 76, "[初]"}, {90, 84, "ほか"}, {90, 85, ""}, {91, 6, "×"}, {91, 8, "〒"},
        {91, 9, ""}, {91, 11, "(幼)"}, {91, 13, "卍"}, {91, 31, "(S)"}, {91, 37, "[J]"}, {91, 43, "℡"}, {91, 48, "[M]"},
        {92, 1, "→"}, {92, 16, "0."}, {92, 25, "9."}, {92, 31, "[新]"}, {92, 41, "9,"}, {92, 50, "【"}, {92, 59, "(ce"},
        {92, 60, "mb)"}, {92, 91, "Fax"}, {92, 92, ""}, {93, 1, "(月)"}, {93, 9, "㍾"}, {93, 45, "hPa"}, {93, 46, ""},
        {93, 48, "1/2"}, {93, 63, "1/10"}, {93, 80, "(曇/晴)"}, {93, 86, "(雷雨)"}, {93, 87, ""}, {93, 90, "♪"}, {93, 91, "℡"},
        {94, 1, "Ⅰ"}, {94, 12, "XII"}, {94, 16, "⑳"}, {94, 17, "(1)"}, {94, 32, "(24)"}, {94, 33, "(A)"}, {94, 58, "(Z)"},
        {94, 64, "(30)"}, {94, 65, "①"}, {94, 80, "⑯"}, {94, 81, "①"}, {94, 93, "(31)"}, {94, 94, ""}, {87, 1, ""}};
    for (const auto& row : rows) {
        EXPECT_EQ(arib_symbol(row.row, row.cell), row.symbol) << row.row << "-" << row.cell;
    }
}

TEST(AribText, becomes_code_page_932) {
    char out[32];
    EXPECT_EQ(arib_to_cp932(bytes_of("\x46\x7C\x7A\x56\x0E\x5C\x7E"
                                     "1"),
                  out, sizeof out),
        9U);
    EXPECT_STREQ(out, "\x93\xFA[\x8E\x9A]\\~1");
    EXPECT_EQ(arib_to_cp932(bytes_of("\x46\x7C\x46\x7C"), out, 4), 2U) << "cut at a whole character";
}

TEST(DvbText, follows_the_selected_table) {
    const Row rows[] = {
        {"ISO 6937",
            "Caf\xC2"
            "e \xA4"
            "5 \xC1q \xC1 \xC9u",
            "Café €5 q̀ ü"},
        {"its signs", "\xA1\xA3\xA5\xA7\xA9\xAB\xAC\xB5\xBF\xD0\xD5\xDC\xDF\xE0\xE1\xE6\xF1\xF5\xFB\xFE", "¡£¥§‘«←µ¿―♪⅛⅞ΩÆĲæıßŋ"},
        {"what it lacks",
            "a\xA6"
            "b\xC0"
            "c\xCC"
            "d\xD8"
            "e\xE5"
            "f",
            "abcdef"},
        {"every accent",
            "\xC1"
            "a\xC2"
            "a\xC3"
            "a\xC4"
            "a\xC5"
            "a\xC6"
            "a\xC7z\xC8"
            "a\xCA"
            "a\xCB"
            "c\xCD"
            "o\xCE"
            "a\xCF"
            "c",
            "àáâãāăżäåçőąč"},
        {"8859-5", "\x01\xBC\xDE", "Мо"},
        {"8859-9",
            "\x05"
            "Sa\xF0lay\xFD"
            "c\xFD",
            "Sağlayıcı"},
        {"8859-11, -13, -15", "\x07\xA1", "ก"},
        {"8859-13", "\x09\xE0", "ą"},
        {"8859-15", "\x0B\xA4", "€"},
        {"8859-2 by number", "\x10\x00\x02\xB1"s, "ą"},
        {"no part 12, 16", "\x10\x00\x0C\xB1"s, ""},
        {"UCS-2",
            "\x11\x00"
            "A\x26\x3A\xE0\x8A\x00"
            "B\x00"s,
            "A☺ B"},
        {"KS X 1001",
            "\x12\xB0\xA1"
            "a\xB0",
            "가a"},
        {"GB 2312", "\x13\xD6\xD0\xCE\xC4", "中文"},
        {"Big5's part of UCS", "\x14\x4E\x2D"s, "中"},
        {"UTF-8", "\x15\xC3\xA9\xEE\x82\x86x\xEE\x82\x87\xC3", "éx\xEF\xBF\xBD"},
        {"controls",
            "A\x86"
            "B\x87"
            "C\x8A"
            "D",
            "ABC D"},
        {"reserved and compressed",
            "\x08"
            "A",
            ""},
        {"compressed",
            "\x1F\x01"
            "A",
            ""},
        {"nothing", "", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(dvb(row.bytes), row.expected) << row.name;
    }
    EXPECT_EQ(dvb("na\xEFve \xA4", DvbDefault::iso8859_15), "naïve €");
}

TEST(DvbText, tells_latin_9_from_the_default_table) {
    EXPECT_TRUE(looks_like_iso8859_15(bytes_of("na\xEFve")));
    EXPECT_FALSE(looks_like_iso8859_15(bytes_of("Caf\xE9"))) << "at the end";
    EXPECT_FALSE(looks_like_iso8859_15(bytes_of("50 \xE9 a"))) << "alone";
    EXPECT_FALSE(looks_like_iso8859_15(bytes_of("\x05na\xEFve"))) << "another table";
}

} // namespace zat::test::broadcast_text_test
