#include "video/avc_names.h"

#include "common/text/text.h"

#include <iterator>

namespace zat {

namespace {

struct CodeName {
    const char* name;
    int code;
    AvcRules since = AvcRules::legacy; // the rules that know the code
};

// ITU-T H.264, A.2 (profile_idc alone; the constraint flags are not looked at).
constexpr CodeName avc_profiles[] = {
    {"Baseline", 66},
    {"Main", 77},
    {"Extended", 88},
    {"High", 100},
    {"High 10", 110},
    {"High 4:2:2", 122},
    {"High 4:4:4", 244},
    {"CAVLC 4:4:4 Intra", 44, AvcRules::standard},
    {"Multiview High", 118, AvcRules::standard},
    {"Stereo High", 128, AvcRules::standard},
};

// ITU-T H.264, table A-1. 9 is level 1b of the profiles from High on.
constexpr CodeName avc_levels[] = {
    {"1", 10},
    {"1.1", 11},
    {"1.2", 12},
    {"1.3", 13},
    {"2", 20},
    {"2.1", 21},
    {"2.2", 22},
    {"3", 30},
    {"3.1", 31},
    {"3.2", 32},
    {"4", 40},
    {"4.1", 41},
    {"4.2", 42},
    {"5", 50},
    {"5.1", 51},
    {"1b", 9, AvcRules::standard},
    {"5.2", 52, AvcRules::standard},
    {"6", 60, AvcRules::standard},
    {"6.1", 61, AvcRules::standard},
    {"6.2", 62, AvcRules::standard},
};

template <size_t N>
const char* name_of(const CodeName (&names)[N], int code, AvcRules rules) {
    for (const CodeName& row : names) {
        if (row.code == code && row.since <= rules) {
            return row.name;
        }
    }
    return nullptr;
}

// Writes the name, or `unknown` with the code in brackets.
void write_name(char* out, size_t size, const char* name, int code, const char* unknown) {
    if (name != nullptr) {
        copy_text(out, size, name);
    } else {
        format_text(out, size, "%s(%d)", unknown, code);
    }
}

// ITU-T H.264, table E-1, from 1 on.
constexpr SampleAspect aspects[] = {{1, 1}, {12, 11}, {10, 11}, {16, 11}, {40, 33}, {24, 11},
    {20, 11}, {32, 11}, {80, 33}, {18, 11}, {15, 11}, {64, 33}, {160, 99}, {4, 3}, {3, 2}, {2, 1}};

// The last one that AvcAspectRatioName knows.
constexpr int last_named_aspect = 13;

} // namespace

const char* avc_profile_name(int profile_idc, AvcRules rules) {
    return name_of(avc_profiles, profile_idc, rules);
}

const char* avc_level_name(int profile_idc, int constraint_flags, int level_idc, AvcRules rules) {
    // A.3.1: Baseline, Main and Extended signal level 1b as 1.1 with constraint_set3_flag.
    constexpr int constraint_set3 = 0x10;
    const bool old_profile = profile_idc == 66 || profile_idc == 77 || profile_idc == 88;
    const bool is_1b = rules == AvcRules::standard && old_profile && level_idc == 11 &&
                       (constraint_flags & constraint_set3) != 0;
    return name_of(avc_levels, is_1b ? 9 : level_idc, rules);
}

void FormatAvcProfileLevel(
    char* out, size_t size, int profile_idc, int level_idc, AvcRules rules, int constraint_flags) {
    char profile[32];
    char level[32];
    write_name(profile, sizeof profile, avc_profile_name(profile_idc, rules), profile_idc,
        "UnknownProfile");
    write_name(level, sizeof level, avc_level_name(profile_idc, constraint_flags, level_idc, rules),
        level_idc, "UnknownLevel");
    format_text(out, size, "%s@%s", profile, level);
}

void AvcAspectRatioName(char* out, size_t size, int aspect_ratio_idc) {
    if (aspect_ratio_idc == 0) {
        copy_text(out, size, "Unspecified");
    } else if (aspect_ratio_idc > 0 && aspect_ratio_idc <= last_named_aspect) {
        const SampleAspect aspect = avc_sample_aspect(aspect_ratio_idc);
        format_text(out, size, "%d:%d", aspect.width, aspect.height);
    } else {
        format_text(out, size, "Unknown(%d)", aspect_ratio_idc);
    }
}

SampleAspect avc_sample_aspect(int aspect_ratio_idc) {
    return aspect_ratio_idc > 0 && aspect_ratio_idc <= std::ssize(aspects)
               ? aspects[static_cast<size_t>(aspect_ratio_idc) - 1]
               : SampleAspect{};
}

} // namespace zat
