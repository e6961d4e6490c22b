#include "common/text/text_codes.h"

#include "common/text/utf8.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace zat::test::text_codes_test {

namespace {

using namespace std::string_view_literals;

// ISO 3309, bit by bit.
uint32_t crc32(uint32_t crc, std::string_view bytes) {
    crc = ~crc;
    for (const char c : bytes) {
        crc ^= static_cast<uint8_t>(c);
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

std::string utf8_of(uint32_t character) {
    char out[8];
    Utf8Text text = {out, sizeof out};
    append_utf8(&text, character);
    return {out, text.used};
}

// The character between two letters, since both ends are trimmed.
std::string inner_cp932(uint32_t character) {
    char out[64];
    const size_t length = utf8_to_cp932("a" + utf8_of(character) + "b", out);
    return {out + 1, length - 2};
}

std::string cp932(std::string_view utf8, size_t size = 512) {
    char out[512];
    return {out, utf8_to_cp932(utf8, out, size)};
}

std::string guessed(std::string_view bytes, size_t size = 512) {
    char out[512];
    return {out, unknown_to_utf8(bytes, out, size)};
}

} // namespace

// All characters, against the sum of a table that was made apart from this code. The marks that join
// the kana before them have no form of their own.
TEST(TextCodes, every_character_has_its_form) {
    uint32_t crc = 0;
    int lines = 0;
    for (uint32_t c = 0x20; c <= 0x10FFFF; ++c) {
        if ((c >= 0xD800 && c <= 0xDFFF) || c == 0x3099 || c == 0x309A) {
            continue;
        }
        const std::string form = inner_cp932(c);
        if (form == "?") {
            continue;
        }
        char code[16];
        std::snprintf(code, sizeof code, "%X ", c);
        crc = crc32(crc, code + form + "\n");
        ++lines;
    }
    EXPECT_EQ(lines, 11673);
    EXPECT_EQ(crc, 0xD79C3269U);
}

TEST(TextCodes, utf8_to_line) {
    const struct {
        std::string_view utf8;
        std::string_view expected;
    } rows[] = {
        {"", ""},
        {"  a \t\n b  ", "a b"},
        {"\u3000 \u3000a\u3000b \u3000", "a\x81\x40"
                                         "b"},
        {"か\u3099は\u309Aウ\u3099", "\x82\xAA\x82\xCF\x83\x94"}, // が, ぱ, ヴ
        {"\u3099"
         "a\u309A",
            "\x81\x4A"
            "a\x81\x4B"},
        {"ワ\u3099", "\x83\x8F"},
        {"Ångström ½ №", "Angstrom 1/2 \x87\x82"},
        {"㌀㍻\U0001F600", "\x83\x41\x83\x6E\x81\x5B\x83\x67\x87\x7E?"},
        {"a\xFF"
         "b\xE3\x81",
            "a?b??"},
        {"a\0b"sv, "a"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(cp932(row.utf8), row.expected) << row.utf8;
    }
    EXPECT_EQ(cp932("あい", 4), "\x82\xA0");
    EXPECT_EQ(cp932("ab cd", 4), "ab");
    EXPECT_EQ(cp932("abc", 1), "");
}

TEST(TextCodes, bytes_of_unknown_code) {
    const struct {
        std::string_view bytes;
        std::string_view expected;
    } rows[] = {
        {"plain", "plain"},
        {"\xEF\xBB\xBFplain", "plain"},
        {"caf\xC3\xA9", "café"},
        {"\x93\xFA\x96\x7B", "日本"},
        {"\x83\x41\x83\x42", "アィ"}, // the second one behind another
        {"a\x83\x41", "aƒA"},         // one alone, with a low trail
        {"\xB1\xB2 a", ""},           // half-width kana alone: too many high bytes
        {"\xB1\xB2 ab", "±² ab"},     // at most half of them
        {"caf\xE9", "café"},
        {"\x80 5", "€ 5"},
        {"\x93\xFA\x96\x7B\xF0\x40", ""}, // a user-defined row
        {"\x93\xFA\x96\x7B\x93 abcdef", "“ú–{“ abcdef"},
        {"ab\0c"sv, "ab"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(guessed(row.bytes), row.expected) << row.bytes;
    }
    EXPECT_EQ(guessed("\x93\xFA\x96\x7B", 6), "日");
}

TEST(TextCodes, cp932_and_utf16_to_utf8) {
    char out[64];
    cp932_to_utf8("\x81\x60\xED\x40\xA0\xB1\x81\x20\x85\x40\xF0\x41\xFD\x82", out, sizeof out);
    EXPECT_STREQ(out, "～纊\uFFFDｱ\uFFFD \uFFFD@\uFFFDA\uFFFD\uFFFD");

    const uint8_t little[] = {0x42, 0x30, 0x3D, 0xD8, 0x00, 0xDE, 0x00, 0xD8, 0x41, 0x00, 0x00, 0xDC, 0x41};
    utf16le_to_utf8(little, out, sizeof out);
    EXPECT_STREQ(out, "あ\U0001F600\uFFFDA\uFFFD");
    EXPECT_EQ(utf16le_to_utf8(little, out, 7), 3U);
    const uint8_t big[] = {0x30, 0x42, 0, 0, 0, 0x41};
    utf16be_to_utf8(big, out, sizeof out);
    EXPECT_STREQ(out, "あ");
}

} // namespace zat::test::text_codes_test
