#include "video/avc_names.h"

#include "common/text.h"

#include <array>
#include <iterator>

namespace zat {

namespace {

struct CodeName {
    int code;
    const char* name;
};

// ITU-T H.264, A.2 (profile_idc alone; the constraint flags are not looked at).
constexpr CodeName profiles[] = {
    {66, "Baseline"},
    {77, "Main"},
    {88, "Extended"},
    {100, "High"},
    {110, "High 10"},
    {122, "High 4:2:2"},
    {244, "High 4:4:4"},
};

// ITU-T H.264, table A-1. 9, which some encoders write for level 1b, is not named.
constexpr CodeName levels[] = {
    {10, "1"},
    {11, "1.1"},
    {12, "1.2"},
    {13, "1.3"},
    {20, "2"},
    {21, "2.1"},
    {22, "2.2"},
    {30, "3"},
    {31, "3.1"},
    {32, "3.2"},
    {40, "4"},
    {41, "4.1"},
    {42, "4.2"},
    {50, "5"},
    {51, "5.1"},
};

// Writes the code's name, or `unknown` with the code in brackets.
template <size_t N>
void write_name(char* out, size_t size, const CodeName (&names)[N], int code, const char* unknown) {
    for (const CodeName& row : names) {
        if (row.code == code) {
            copy_text(out, size, row.name);
            return;
        }
    }
    format_text(out, size, "%s(%d)", unknown, code);
}

} // namespace

void FormatAvcProfileLevel(char* out, size_t size, int profile_idc, int level_idc) {
    char profile[32];
    char level[32];
    write_name(profile, sizeof profile, profiles, profile_idc, "UnknownProfile");
    write_name(level, sizeof level, levels, level_idc, "UnknownLevel");
    format_text(out, size, "%s@%s", profile, level);
}

// ITU-T H.264, table E-1.
void AvcAspectRatioName(char* out, size_t size, int aspect_ratio_idc) {
    static constexpr std::array names{"Unspecified", "1:1", "12:11", "10:11", "16:11", "40:33",
        "24:11", "20:11", "32:11", "80:33", "18:11", "15:11", "64:33", "160:99"};
    if (aspect_ratio_idc >= 0 && aspect_ratio_idc < std::ssize(names)) {
        copy_text(out, size, names[static_cast<size_t>(aspect_ratio_idc)]);
    } else {
        format_text(out, size, "Unknown(%d)", aspect_ratio_idc);
    }
}

} // namespace zat
