#include "common/catalogue/codec_catalogue.h"

#include "common/catalogue/catalogue_directory.h"
#include "common/catalogue/kept_text.h"
#include "common/text/text.h"
#include "support/byte_builder.h"
#include "support/shipped_catalogue.h"
#include "support/temp_file.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <thread>

namespace zat::test::codec_catalogue_test {

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
    {"last line without a newline", "[A]\n0055\tMP3", "[A]", "0055", 0, "MP3"},
    {"a lone carriage return is text", "[A]\n0055\tM\rP\n", "[A]", "0055", 0, "M\rP"},
    {"a shorter key above wins", "[A]\n00\tany\n0055\tMP3\n", "[A]", "0055", 0, "any"},
    {"a header that is a beginning", "[QT\n1\tx\n[QT]\n1\ty\n", "[QT]", "1", 0, "x"},
    {"a comment", "[A]\n'1\tx\n1\ty\n", "[A]", "'1", 1, ""},
    {"the last tab divides", "[A]\n1\tx\ty\n", "[A]", "1\tx", 0, "y"},
    {"a tab in front is no key", "[A]\n\tx\n1\ty\n", "[A]", "1", 0, "y"},
    {"a zero byte ends the line", "[A]\n1\tx" + z + "y\tz\n2\tw\n", "[A]", "1", 0, "x"},
    {"a substitute character is no end", "[A]\n\x1A\n1\tx\n", "[A]", "1", 0, "x"},
    {"a name up to the limit", "[A]\n1\t" + std::string(253, 'x') + "\n", "[A]", "1", 0, std::string(253, 'x')},
    {"the rest of a long line is a line", "[A]\n" + std::string(255, 'x') + "1\ty\n", "[A]", "1", 0, "y"},
    {"the rest of a long line is a header", "1\tx\n" + std::string(255, 'x') + "[A]\n1\ty\n", "[A]", "1", 0, "y"},
    {"brackets that begin no line", "x[A]\n" + std::string(256, 'x') + "[A]\n1\ty\n", "[A]", "1", 1, ""},
    {"the last match of the identifiers", "[MPEG2-TS-PID]\n001\tr\n0010\tNIT\n", "[MPEG2-TS-PID]", "0010", 0, "NIT"},
    {"a header behind the identifiers", "[MPEG2-TS-PID]\n0010\tNIT\n[A]\n", "[MPEG2-TS-PID]", "0010", 1, "NIT"},
};

} // namespace

TEST(CodecLookup, follows_the_rules_of_the_file) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TempFile file(ByteBuilder().text(row.catalogue).bytes);
        CodecQuery query = query_of(file.path, row.section, row.key);
        EXPECT_EQ(CodecLookup(&query), row.result);
        EXPECT_EQ(query.result, row.shown);
    }
}

// Lines across every place where a block of the file may end.
TEST(CodecLookup, loses_no_line_between_blocks) {
    std::string text = "[A]\n";
    for (int i = 0; i < 20000; ++i) {
        text += std::to_string(100000 + i) + "\tname " + std::to_string(i) + "\n";
    }
    const TempFile file(ByteBuilder().text(text).bytes);
    for (int i = 0; i < 20000; i += 499) {
        CodecQuery query = query_of(file.path, "[A]", std::to_string(100000 + i));
        EXPECT_EQ(CodecLookup(&query), codec_found);
        EXPECT_EQ(query.result, "name " + std::to_string(i));
    }
}

TEST(CodecLookup, finds_the_header_wherever_a_block_ends) {
    for (size_t before = 16384 - 300; before < 16384 + 10; before += 7) {
        std::string text = "[A]\n1\tx\n";
        while (text.size() < before) {
            text += text.size() % 3 == 0 ? "a [B]\n" : std::string(250, 'b') + "[B]\n";
        }
        text += "[B]\n1\ty\n";
        const TempFile file(ByteBuilder().text(text).bytes);
        CodecQuery query = query_of(file.path, "[B]", "1");
        EXPECT_EQ(CodecLookup(&query), codec_found) << before;
        EXPECT_STREQ(query.result, "y");
    }
}

TEST(CodecLookup, survives_what_is_no_catalogue) {
    CodecQuery query = query_of(temp_directory() + "missing", "[A]", "1");
    EXPECT_EQ(CodecLookup(&query), codec_no_catalogue);
    query = query_of(temp_directory(), "[A]", "1");
    EXPECT_EQ(CodecLookup(&query), codec_no_catalogue);
}

// Only what was not written lately is kept: its time would tell no second change.
TEST(KeptText, is_the_files_text_as_long_as_it_stays) {
    const auto write = [path = temp_directory() + "kept.txt"](const char* text) {
        std::ofstream(path, std::ios::binary) << text;
        return path;
    };
    const std::string path = write("[A]\n1\tx\n");
    EXPECT_EQ(kept_text(path.c_str()), "");
    for (int i = 0; i < 100 && kept_text(path.c_str()).empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    const std::string_view kept = kept_text(path.c_str());
    EXPECT_EQ(kept, "[A]\n1\tx\n");
    EXPECT_EQ(kept_text(path.c_str()).data(), kept.data()) << "was read twice";
    for (const char* text : {"[A]\n1\ty\n", "[A]\n1\tz\n"}) {
        CodecQuery query = query_of(write(text), "[A]", "1");
        EXPECT_EQ(CodecLookup(&query), codec_found);
        EXPECT_EQ(query.result[0], text[6]);
    }
    EXPECT_EQ(kept, "[A]\n1\tx\n") << "others may still read it";
}

TEST(CodecName, shows_the_name_or_the_reason_why_there_is_none) {
    const std::string directory = temp_directory() + "names/";
    std::filesystem::create_directories(directory);
    char name[32];
    set_catalogue_directory(directory.c_str());
    EXPECT_EQ(codec_name("[A]", "1", "one", name, sizeof name), codec_no_catalogue);
    EXPECT_STREQ(name, "C\x96\xB3one");
    std::ofstream(directory + "zat-codec.ini") << "[A]\n1\tx\n";
    EXPECT_EQ(codec_name("[A]", "1", "one", name, sizeof name), codec_found);
    EXPECT_STREQ(name, "x");
    EXPECT_EQ(codec_name("[A]", "2", "two", name, sizeof name), codec_not_listed);
    EXPECT_STREQ(name, "\x8A\x59\x93\x96\x96\xB3\x82\xB5two");
    set_catalogue_directory(std::string(505, '/').c_str());
    EXPECT_EQ(codec_name("[A]", "2", "two", name, sizeof name), codec_no_catalogue);
    set_catalogue_directory("");
}

namespace {

bool is_printable(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

// In a form H is an upper-case and h a lower-case hexadecimal digit, U a character but no lower-case
// letter, P any character, and a * at the end any text; the rest stands for itself.
bool fits(std::string_view key, std::string_view form) {
    if (form.ends_with('*')) {
        form.remove_suffix(1);
        key = key.substr(0, form.size());
    }
    return std::ranges::equal(key, form, [](char c, char kind) {
        const bool lower_case = c >= 'a' && c <= 'z';
        return kind == 'H'   ? std::string_view("0123456789ABCDEF").find(c) != std::string_view::npos
               : kind == 'h' ? std::string_view("0123456789abcdef").find(c) != std::string_view::npos
               : kind == 'U' ? !lower_case
                             : kind == 'P' || c == kind;
    });
}

struct SectionForm {
    std::vector<std::string_view> keys; // any of these forms
    size_t entries;                     // at least
};

const std::map<std::string, SectionForm> forms = {
    {"[AVI-Audio]", {{"HHHH"}, 200}},
    {"[AVI-Video]", {{"PPPP", "hhhhhhhh", "DivX*", "XviD*"}, 250}},
    {"[WAV-EXT]", {{"HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH"}, 12}},
    {"[QT-AUDIO]", {{"PPPP"}, 60}},
    {"[QT-VIDEO]", {{"PPPP"}, 90}},
    {"[QT-BRAND]", {{"UUUU"}, 100}},
    {"[REAL]", {{"UUUU"}, 10}},
    {"[MPEG2-TS-PID]", {{"HHH", "HHHH"}, 20}},
};

} // namespace

// The file is edited by hand: every entry must be found by its own key, which fails for a key below
// its own beginning, a duplicate and a misplaced section.
TEST(ShippedCatalogue, every_entry_is_reachable) {
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
            EXPECT_TRUE(std::ranges::any_of(forms.at(section).keys, [&](auto form) { return fits(key, form); })) << line;
            EXPECT_TRUE(is_printable(line.substr(0, tab)) && is_printable(name) && !name.empty() && name.back() != ' ') << line;
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

} // namespace zat::test::codec_catalogue_test
