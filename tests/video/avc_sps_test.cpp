#include "video/avc_sps.h"

#include "common/text/text.h"
#include "support/byte_builder.h"
#include "video/avc_names.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <sstream>
#include <string>
#include <vector>

namespace zat::test::avc_sps_test {
namespace {

void put_ue(BitBuilder& bits, uint64_t value) {
    const auto width = static_cast<int>(std::bit_width(value + 1));
    bits.bits(0, width - 1).bits(value + 1, width);
}

// Fields as words: "66/8" is 66 in 8 bits, "ue5" and "se-8" are Exp-Golomb codes.
BitBuilder bits_of(const std::string& fields) {
    BitBuilder bits;
    std::istringstream words(fields);
    for (std::string word; words >> word;) {
        const size_t slash = word.find('/');
        if (slash != std::string::npos) {
            bits.bits(std::stoull(word), std::stoi(word.substr(slash + 1)));
        } else if (word.starts_with("ue")) {
            put_ue(bits, std::stoull(word.substr(2)));
        } else {
            const int64_t value = std::stoll(word.substr(2));
            put_ue(bits, static_cast<uint64_t>(value > 0 ? 2 * value - 1 : -2 * value));
        }
    }
    return bits;
}

uint32_t bit_count(const std::string& fields) {
    const BitBuilder bits = bits_of(fields);
    const size_t free_bits = bits.used == 0 ? 0 : 8U - static_cast<size_t>(bits.used);
    return static_cast<uint32_t>(bits.bytes.size() * 8 - free_bits);
}

// With the stop bit and the emulation prevention bytes that an encoder writes.
std::vector<uint8_t> nal_of(const std::string& fields) {
    BitBuilder bits = bits_of(fields);
    bits.bits(1, 1);
    std::vector<uint8_t> nal;
    for (const uint8_t byte : bits.bytes) {
        const size_t n = nal.size();
        if (n >= 2 && nal[n - 1] == 0 && nal[n - 2] == 0 && byte <= 3) {
            nal.push_back(3);
        }
        nal.push_back(byte);
    }
    return nal;
}

struct Parsed {
    AvcSequenceInfo info{};
    AvcParseState state{};
};

// The bytes have no room behind them, so that a sanitizer sees a read past them.
Parsed parse(const std::vector<uint8_t>& nal, AvcRules rules = AvcRules::legacy) {
    Parsed parsed;
    const std::vector<uint8_t> exact(nal.begin(), nal.end());
    ParseAvcSequenceParameterSet(exact.data(), static_cast<uint32_t>(exact.size()), &parsed.info, &parsed.state, rules);
    return parsed;
}

std::string facts(const Parsed& parsed) {
    char text[512];
    const AvcSequenceInfo& info = parsed.info;
    format_text(text, sizeof text, "%dx%d %d %s %s %.3ffps%s %.0fbps%s %s%s", info.width, info.height, info.bit_depth,
        info.profile_level, info.aspect, info.frame_rate, info.fixed_frame_rate != 0 ? "!" : "", info.bit_rate,
        info.cbr != 0 ? "!" : "", info.frame_mbs_only != 0 ? "p" : "i", parsed.state.cpb_clamped != 0 ? " clamped" : "");
    return text;
}

// NAL header, profile, constraints, level, id.
const std::string main_31 = "103/8 77/8 0/8 31/8 ue0 ";
const std::string high_41 = "103/8 100/8 0/8 41/8 ue0 ";
// Frame number, picture order type 0, reference frames, gaps.
const std::string order = "ue0 ue0 ue0 ue4 0/1 ";
const std::string size_320 = "ue19 ue14 1/1 1/1 0/1 "; // 320x240, frames only, not cropped
const std::string main_320 = main_31 + order + size_320;
// Chroma format, depths, bypass; the scaling matrix flag is still to come.
const std::string chroma_420 = "ue1 ue0 ue0 0/1 ";
// No overscan, video signal, chroma location.
const std::string no_display = "0/1 0/1 0/1 ";
const std::string timing_25 = "1/1 1/32 50/32 1/1 ";
const std::string hrd_tail = "23/5 23/5 23/5 24/5 ";

const std::string with_vui = main_320 + "1/1 0/1 " + no_display;
const char plain[] = "320x240 8 Main@3.1 Unspecified 0.000fps 0bps p";

TEST(AvcSps, reads_the_facts_bit_exactly) {
    const struct {
        const char* name;
        std::string fields;
        const char* expected;
    } rows[] = {
        {"field coding: both crop units are 4",
            high_41 + chroma_420 + "0/1 " + order + "ue119 ue33 0/1 1/1 1/1 1/1 ue0 ue2 ue0 ue2 0/1",
            "1912x1080 8 High@4.1 Unspecified 0.000fps 0bps i"},
        {"crop offsets are cut to 8 bits, and the size wraps", main_31 + order + "ue0 ue0 1/1 1/1 1/1 ue257 ue0 ue9 ue256 0/1",
            "14x-2 8 Main@3.1 Unspecified 0.000fps 0bps p"},
        // 33 zeros, then 2^33 + 20.
        {"the low 32 bits of an overlong code count", main_31 + order + "0/33 1/1 20/33 ue14 1/1 1/1 0/1 0/1", plain},
        {"picture order type 1 with its offsets",
            main_31 + "ue0 ue1 0/1 se-3 se5 ue3 se1 se-1 se70000 ue1 0/1 " + size_320 + "0/1", plain},
        {"a scaling list ends at a delta of -8, wherever the scale stands",
            high_41 + chroma_420 + "1/1 1/1 se-8 1/1 se1 se-8 0/1 0/1 0/1 0/1 0/1 1/1 se0 se248 " + order + size_320 + "0/1",
            "320x240 8 High@4.1 Unspecified 0.000fps 0bps p"},
        {"colour plane bit, depths and twelve scaling lists of 4:4:4",
            "103/8 244/8 0/8 40/8 ue0 ue3 0/1 ue1 ue1 0/1 1/1 0/11 1/1 se-8 " + order + size_320 + "0/1",
            "320x240 9 High 4:4:4@4 Unspecified 0.000fps 0bps p"},
        {"an aspect of its own, behind every display field",
            main_320 + "1/1 1/1 255/8 4/16 3/16 1/1 1/1 1/1 5/3 1/1 1/1 1/8 1/8 1/8 1/1 ue2 ue2 " + timing_25 + "0/1 0/1 0/1 0/1",
            "320x240 8 Main@3.1 4:3 25.000fps! 0bps p"},
        {"time scale over no tick", with_vui + "1/1 0/32 50/32 0/1 0/4", "320x240 8 Main@3.1 Unspecified inffps 0bps p"},
        {"NAL HRD: the first entry counts",
            with_vui + timing_25 + "1/1 ue1 4/4 0/4 ue999 ue7 1/1 ue5 ue5 0/1 " + hrd_tail +
                "0/1 0/1 0/1 1/1 1/1 ue2 ue1 ue9 ue9 ue2 ue4",
            "320x240 8 Main@3.1 Unspecified 25.000fps! 1024000bps! p"},
        {"two HRD entries stand for more than 32",
            with_vui + "0/1 1/1 ue32 0/4 0/4 ue1 ue0 0/1 ue0 ue0 0/1 " + hrd_tail + "0/1 0/1 0/1 0/1",
            "320x240 8 Main@3.1 Unspecified 0.000fps 128bps p clamped"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::vector<uint8_t> nal = nal_of(row.fields);
        const Parsed parsed = parse(nal);
        EXPECT_EQ(facts(parsed), row.expected);
        EXPECT_EQ(parsed.state.error, 0);
        // Every field was stepped over; only the total counts prevention bytes.
        EXPECT_EQ(parsed.state.end_pos, bit_count(row.fields));
        EXPECT_EQ(parsed.state.total_bits, nal.size() * 8);
    }
}

TEST(AvcSps, goes_by_the_standard_outside_the_first_lines) {
    const struct {
        const char* name;
        std::string fields;
        const char* expected;
    } rows[] = {
        {"crop units of a 4:2:0 field picture",
            high_41 + chroma_420 + "0/1 " + order + "ue119 ue33 0/1 1/1 1/1 1/1 ue0 ue2 ue0 ue2 0/1",
            "1916x1080 8 High@4.1  0.000fps 0bps i"},
        {"crop units of 4:2:2, and a crop of more than 8 bits",
            "103/8 122/8 0/8 52/8 ue0 ue2 ue2 ue2 0/1 0/1 " + order + "ue119 ue67 1/1 1/1 1/1 ue0 ue300 ue0 ue8 0/1",
            "1320x1080 10 High 4:2:2@5.2  0.000fps 0bps p"},
        {"a scaling list counts from the entry before",
            high_41 + chroma_420 + "1/1 1/1 se2 se-10 0/7 " + order + size_320 + "0/1", "320x240 8 High@4.1  0.000fps 0bps p"},
        {"level 1b by its constraint flag", "103/8 66/8 16/8 11/8 ue0 " + order + size_320 + "0/1",
            "320x240 8 Baseline@1b  0.000fps 0bps p"},
        {"an aspect that was added later", main_320 + "1/1 1/1 14/8 " + no_display + "0/5",
            "320x240 8 Main@3.1 4:3 0.000fps 0bps p"},
        {"a reserved aspect is none", main_320 + "1/1 1/1 17/8 " + no_display + "0/5", "320x240 8 Main@3.1  0.000fps 0bps p"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Parsed parsed = parse(nal_of(row.fields), AvcRules::standard);
        EXPECT_EQ(facts(parsed), row.expected);
        EXPECT_EQ(parsed.state.error, 0);
    }
    // A picture of which the cropping leaves nothing is no parameter set, and the search goes on.
    const std::string nothing_left = main_31 + order + "ue0 ue0 1/1 1/1 1/1 ue4 ue4 ue0 ue0 0/1";
    EXPECT_EQ(parse(nal_of(nothing_left), AvcRules::standard).state.error, 1);
    AvcSequenceInfo info;
    const ByteBuilder stream =
        ByteBuilder().raw({0, 0, 1}).append(nal_of(nothing_left)).raw({0, 0, 1}).append(nal_of(main_320 + "0/1"));
    EXPECT_EQ(find_avc_sps(stream.bytes, &info), 0);
    EXPECT_EQ(info.width, 320U);
}

TEST(AvcSps, keeps_the_positions_of_the_aspect_and_the_hrds) {
    const std::string hrd = "ue0 0/4 0/4 ue0 ue0 0/1 " + hrd_tail;
    const std::string vui = "1/1 1/1 255/8 40/16 33/16 " + no_display + "0/1 1/1 " + hrd + "1/1 " + hrd + "0/1 0/1 0/1";
    const AvcParseState state = parse(nal_of(main_320 + vui)).state;
    const uint32_t start = bit_count(main_320) + 1;
    EXPECT_EQ(std::to_array(state.aspect_field_pos), (std::array{start, start + 1, start + 9, start + 25}));
    const std::array tail = {state.vui_start, state.nal_hrd_start, state.vcl_hrd_start};
    EXPECT_EQ(tail, (std::array{start, start + 46, start + 46 + 32 + 1}));
}

TEST(AvcSps, stops_at_the_next_start_code) {
    // Everything behind the VUI's flag reads as zero, not as the picture parameter set there.
    const std::string cut = main_320 + "1/1 ";
    BitBuilder bits = bits_of(cut);
    bits.bits(0, bits.used == 0 ? 0 : 8 - bits.used);
    std::vector<uint8_t> nal = ByteBuilder().append(bits.bytes).raw({0, 0, 1, 0x68}).fill(20, 0xFF).bytes;
    EXPECT_EQ(facts(parse(nal)), plain);
    // Without a NAL type behind it, it is no start code.
    nal[bits.bytes.size() + 3] = 0xE0;
    EXPECT_NE(parse(nal).state.end_pos, parse(bits.bytes).state.end_pos);
}

TEST(AvcSps, tells_a_truncated_parameter_set_at_every_length) {
    const std::string head = high_41 + chroma_420 + "0/1 " + order + "ue119 ue67 ";
    const std::string vui = "1/1 1/1 1/1 ue0 ue0 ue0 ue4 1/1 ";
    const std::string fields = head + vui + "1/1 255/8 40/16 33/16 " + no_display +
                               "1/1 4294967295/32 4294967294/32 1/1 1/1 ue0 4/4 0/4 ue999 ue7 1/1 " + hrd_tail +
                               "0/1 0/1 0/1 1/1 1/1 ue2 ue1 ue9 ue9 ue2 ue4";
    const std::vector<uint8_t> whole = nal_of(fields);
    const uint32_t end = parse(whole).state.end_pos;
    for (size_t length = 1; length < whole.size(); ++length) {
        const Parsed parsed = parse({whole.begin(), whole.begin() + static_cast<int64_t>(length)});
        EXPECT_EQ(parsed.state.error, length * 8 < end ? 1 : 0) << length;
        if (length < bits_of(head).bytes.size()) {
            EXPECT_EQ(facts(parsed), "0x0 0   0.000fps 0bps i");
        } else if (length >= bits_of(head + vui).bytes.size()) {
            EXPECT_TRUE(facts(parsed).starts_with("1920x1080 8 High@4.1 "));
            // Cut fields make no rate.
            EXPECT_TRUE(parsed.info.frame_rate == 0 || parsed.info.frame_rate > 0.49);
            EXPECT_TRUE(parsed.info.bit_rate == 0 || parsed.info.bit_rate == 1024000);
        }
    }
    EXPECT_EQ(parse({}).state.total_bits, 0U);
}

TEST(AvcSps, bounds_exp_golomb_codes_and_counts_by_the_bits_present) {
    const struct {
        std::string fields;
        size_t zeros; // bytes behind the fields
        const char* expected;
    } rows[] = {
        // Nothing but zeros; an offset count of 2^32 - 2; a value past the end.
        {"103/8 66/8 0/8 30/8", 65531, "524281/524280"},
        {main_31 + "ue0 ue1 0/1 se0 se0 ue4294967294", 2, "121/120"},
        {"103/8 66/8 0/8 30/8 0/7 1/1", 0, "47/40"},
    };
    for (const auto& row : rows) {
        const AvcParseState state = parse(ByteBuilder().append(bits_of(row.fields).bytes).fill(row.zeros).bytes).state;
        EXPECT_EQ(std::to_string(state.end_pos) + "/" + std::to_string(state.total_bits), row.expected);
        EXPECT_NE(state.error, 0);
    }
}

TEST(AvcNames, bound_the_text_to_the_size_given) {
    char text[40];
    FormatAvcProfileLevel(text, sizeof text, 255, 9, AvcRules::legacy);
    EXPECT_STREQ(text, "UnknownProfile(255)@UnknownLevel(9)");
    FormatAvcProfileLevel(text, 32, 255, 255, AvcRules::legacy);
    EXPECT_STREQ(text, "UnknownProfile(255)@UnknownLeve");
}

} // namespace
} // namespace zat::test::avc_sps_test
