#include "common/codec_catalogue.h"

#include "common/catalogue_directory.h"
#include "common/text.h"
#include "support/byte_builder.h"
#include "support/shipped_catalogue.h"
#include "support/temp_file.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace zat::test {

namespace {

CodecQuery query_of(std::string_view path, std::string_view section, std::string_view key) {
    CodecQuery query{};
    copy_text(query.file_path, path);
    copy_text(query.section, section);
    copy_text(query.key, key);
    return query;
}

struct Row {
    const char* name;
    std::string catalogue;
    const char* section;
    const char* key;
    int result;
    std::string shown;
};

const std::string z(1, '\0');

const Row rows[] = {
    {"plain", "'c\n\n[A]\n0055\tMP3\n", "[A]", "0055", 0, "MP3"},
    {"last line without a newline", "[A]\n0055\tMP3", "[A]", "0055", 0, "MP3"},
    {"line ends of both kinds", "[A]\r\n0055\tMP3\r\n", "[A]", "0055", 0, "MP3"},
    {"a lone carriage return is text", "[A]\n0055\tM\rP\n", "[A]", "0055", 0, "M\rP"},
    {"a shorter key above wins", "[A]\n00\tany\n0055\tMP3\n", "[A]", "0055", 0, "any"},
    {"a longer key is no match", "[A]\n0055\tMP3\n", "[A]", "005", 1, ""},
    {"a key in another section", "[B]\n1\tx\n[A]\n2\ty\n[C]\n1\tz\n", "[A]", "1", 1, ""},
    {"a later section of the same name", "[A]\n2\ty\n[A]\n1\tz\n", "[A]", "1", 1, ""},
    {"a header that is a beginning", "[QT\n1\tx\n[QT]\n1\ty\n", "[QT]", "1", 0, "x"},
    {"a header with a blank behind", "[A] \n1\tx\n", "[A]", "1", 1, ""},
    {"a comment", "[A]\n'1\tx\n1\ty\n", "[A]", "'1", 1, ""},
    {"the last tab divides", "[A]\n1\tx\ty\n", "[A]", "1\tx", 0, "y"},
    {"a tab in front is no key", "[A]\n\tx\n1\ty\n", "[A]", "1", 0, "y"},
    {"an empty key", "[A]\n1\ty\n", "[A]", "", 1, ""},
    {"an empty name", "[A]\n1\t\n1\ty\n", "[A]", "1", 0, ""},
    {"a zero byte ends the line", "[A]\n1\tx" + z + "y\tz\n2\tw\n", "[A]", "1", 0, "x"},
    {"a zero byte before the tab", "[A]\n1" + z + "\tx\n", "[A]", "1", 1, ""},
    {"a substitute character is no end", "[A]\n\x1A\n1\tx\n", "[A]", "1", 0, "x"},
    {"a name up to the limit", "[A]\n1\t" + std::string(253, 'x') + "\n", "[A]", "1", 0, std::string(253, 'x')},
    {"254 characters and both ends", "[A]\n1\t" + std::string(252, 'x') + "\r\n2\ty\n", "[A]", "2", 0, "y"},
    {"the rest of a long line is a line", "[A]\n" + std::string(255, 'x') + "1\ty\n", "[A]", "1", 0, "y"},
    {"the rest may be a header", "[A]\n" + std::string(510, 'x') + "[B]\n1\ty\n", "[A]", "1", 1, ""},
    {"a line of megabytes", std::string(3000000, 'x') + "\n[A]\n1\ty\n", "[A]", "1", 0, "y"},
    {"the last match of the identifiers", "[MPEG2-TS-PID]\n001\tr\n0010\tNIT\n", "[MPEG2-TS-PID]", "0010", 0, "NIT"},
    {"a header behind the identifiers", "[MPEG2-TS-PID]\n0010\tNIT\n[A]\n", "[MPEG2-TS-PID]", "0010", 1, "NIT"},
    {"an empty catalogue", "", "[A]", "1", 1, ""},
};

// Lines across every place where a block of the file may end.
std::string long_catalogue() {
    std::string text = "[A]\n";
    for (int i = 0; i < 20000; ++i) {
        text += std::to_string(100000 + i) + "\tname " + std::to_string(i) + "\n";
    }
    return text;
}

} // namespace

TEST(CodecLookup, FollowsTheRulesOfTheFile) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TempFile file(ByteBuilder().text(row.catalogue).bytes);
        CodecQuery query = query_of(file.path, row.section, row.key);
        EXPECT_EQ(CodecLookup(&query), row.result);
        EXPECT_EQ(query.result, row.shown);
    }
}

TEST(CodecLookup, LosesNoLineBetweenBlocks) {
    const TempFile file(ByteBuilder().text(long_catalogue()).bytes);
    for (int i = 0; i < 20000; i += 499) {
        CodecQuery query = query_of(file.path, "[A]", std::to_string(100000 + i));
        EXPECT_EQ(CodecLookup(&query), codec_found);
        EXPECT_EQ(query.result, "name " + std::to_string(i));
    }
}

TEST(CodecLookup, SurvivesWhatIsNoCatalogue) {
    std::vector<uint8_t> noise;
    uint32_t state = 1;
    for (int i = 0; i < 200000; ++i) {
        state = state * 1664525 + 1013904223;
        noise.push_back(static_cast<uint8_t>(state >> 24));
    }
    const TempFile binary(noise);
    CodecQuery query = query_of(binary.path, "[A]", "1");
    EXPECT_EQ(CodecLookup(&query), codec_not_listed);
    query = query_of(temp_directory() + "missing", "[A]", "1");
    EXPECT_EQ(CodecLookup(&query), codec_no_catalogue);
    query = query_of(temp_directory(), "[A]", "1");
    EXPECT_EQ(CodecLookup(&query), codec_no_catalogue);
}

TEST(CodecName, ShowsTheNameOrTheReasonWhyThereIsNone) {
    const std::string directory = temp_directory() + "names/";
    std::filesystem::create_directories(directory);
    char name[32];
    set_catalogue_directory(directory.c_str());
    EXPECT_EQ(codec_name("[A]", "1", "one", name, sizeof name), codec_no_catalogue);
    EXPECT_STREQ(name, "C\x96\xB3one");
    std::filesystem::copy_file(TempFile(ByteBuilder().text("[A]\n1\tx\n").bytes).path, directory + "zat-codec.ini");
    EXPECT_EQ(codec_name("[A]", "1", "one", name, sizeof name), codec_found);
    EXPECT_STREQ(name, "x");
    EXPECT_EQ(codec_name("[A]", "2", "two", name, sizeof name), codec_not_listed);
    EXPECT_STREQ(name, "\x8A\x59\x93\x96\x96\xB3\x82\xB5two");
    set_catalogue_directory(std::string(505, '/').c_str());
    EXPECT_EQ(codec_name("[A]", "2", "two", name, sizeof name), codec_no_catalogue);
    set_catalogue_directory("");
}

namespace {

constexpr std::string_view upper_hex = "0123456789ABCDEF";

bool consists_of(std::string_view text, std::string_view characters) {
    return text.find_first_not_of(characters) == std::string_view::npos;
}

bool is_printable(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

bool is_tag(std::string_view key) {
    return key.size() == 4 && consists_of(key, upper_hex);
}

bool is_guid(std::string_view key) {
    return key.size() == 36 && consists_of(key, "0123456789ABCDEF-") && key[8] == '-' && key[13] == '-' && key[18] == '-' &&
           key[23] == '-';
}

bool is_four_characters(std::string_view key) {
    return key.size() == 4 && is_printable(key);
}

bool is_upper_case(std::string_view key) {
    return is_four_characters(key) && std::ranges::none_of(key, [](char c) { return c >= 'a' && c <= 'z'; });
}

// Four characters, the number of a compression, or the text that an encoder leaves in its stream.
bool is_video_code(std::string_view key) {
    return is_four_characters(key) || (key.size() == 8 && consists_of(key, "0123456789abcdef")) ||
           (is_printable(key) && (key.starts_with("DivX") || key.starts_with("XviD")));
}

bool is_identifier(std::string_view key) {
    return (key.size() == 3 || key.size() == 4) && consists_of(key, upper_hex);
}

struct SectionForm {
    bool (*fits)(std::string_view key);
    size_t entries; // at least
};

const std::map<std::string, SectionForm> forms = {
    {"[AVI-Audio]", {is_tag, 200}},
    {"[AVI-Video]", {is_video_code, 250}},
    {"[WAV-EXT]", {is_guid, 12}},
    {"[QT-AUDIO]", {is_four_characters, 60}},
    {"[QT-VIDEO]", {is_four_characters, 90}},
    {"[QT-BRAND]", {is_upper_case, 100}},
    {"[REAL]", {is_upper_case, 10}},
    {"[MPEG2-TS-PID]", {is_identifier, 20}},
};

} // namespace

// The file is edited by hand: every entry must be found by its own key, which fails for a key below
// its own beginning, a duplicate and a misplaced section.
TEST(ShippedCatalogue, EveryEntryIsReachable) {
    const TempFile file(shipped_catalogue);
    std::istringstream lines(std::string(shipped_catalogue.begin(), shipped_catalogue.end()));
    std::map<std::string, std::vector<std::string>> keys;
    std::string section;
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 254U) << line;
        const size_t tab = line.rfind('\t');
        if (line.starts_with('[')) {
            section = line;
            EXPECT_FALSE(keys.contains(section)) << section;
            keys[section] = {};
        } else if (!line.starts_with('\'') && tab != std::string::npos) {
            ASSERT_TRUE(forms.contains(section)) << section;
            const std::string key = line.substr(0, tab);
            const std::string name = line.substr(tab + 1);
            EXPECT_TRUE(forms.at(section).fits(key)) << line;
            EXPECT_TRUE(is_printable(name) && !name.empty() && name.back() != ' ') << line;
            for (const std::string& above : keys[section]) {
                EXPECT_TRUE(above != key && (section == "[MPEG2-TS-PID]" || !key.starts_with(above)))
                    << line << " stands below " << above;
            }
            keys[section].push_back(key);
            CodecQuery query = query_of(file.path, section, key);
            EXPECT_EQ(CodecLookup(&query), codec_found) << line;
            EXPECT_EQ(query.result, name);
        }
    }
    for (const auto& [name, form] : forms) {
        EXPECT_GE(keys[name].size(), form.entries) << name;
    }
}

} // namespace zat::test
