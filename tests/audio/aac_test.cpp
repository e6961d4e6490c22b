#include "audio/aac.h"

#include "audio/adts.h"
#include "common/text/text.h"
#include "support/audio_builder.h"

#include <cstring>
#include <gtest/gtest.h>

namespace zat::test::aac_test {

namespace {

// ---- ADTS -------------------------------------------------------------------------------------

std::vector<uint8_t> adts(uint32_t id, uint32_t profile, uint32_t rate_index, uint32_t channels, uint32_t frame_length) {
    return adts_frame(frame_length, {.id = id, .profile = profile, .rate_index = rate_index, .channels = channels});
}

std::string adts_line(const std::vector<uint8_t>& bytes, uint32_t style = 0) {
    EXPECT_TRUE(IsAdtsSync(bytes.data()));
    AdtsHeader header;
    header.line_style = style;
    if (ParseAdtsHeader(bytes, &header) != 0) {
        return "refused";
    }
    char line[line_size];
    FormatAdtsLine(&header, line);
    return line;
}

TEST(Adts, describes_headers_in_each_style) {
    const auto lc = adts(0, 1, 4, 2, 371);
    const std::string rest = " 44100Hz stereo(L,R) 127.821kbps 371Byte";
    EXPECT_EQ(adts_line(lc, adts_version_and_profile), "[MPEG4-AAC AAC_LC]" + rest);
    EXPECT_EQ(adts_line(lc, adts_name_only), "[AAC]" + rest);
    EXPECT_EQ(
        adts_line(adts(1, 3, 7, 7, 8191)), "[MPEG2-AAC (Reverved)] 22500Hz 7.1ch(C,L,R,BL,BR,SL,SR,LFE) 1439.824kbps 8191Byte");
    EXPECT_EQ(adts_line(adts(1, 0, 0, 0, 8191)), // a product beyond 32 bits
        "[MPEG2-AAC Main Profile] 96000Hz custom 6143.250kbps 8191Byte");
    EXPECT_EQ(adts_line(adts(0, 0, 12, 2, 371)), "refused");

    // A profile that a caller knows from elsewhere.
    char line[line_size];
    AdtsHeader header = {.version_flag = 1, .profile = 4};
    FormatAdtsLine(&header, line);
    EXPECT_STREQ(line, "[MPEG2-AAC Unknown(4)] 0Hz custom 0.000kbps 0Byte");
}

// ---- AudioSpecificConfig ----------------------------------------------------------------------

struct Container {
    uint32_t channels = 2, rate = 44100, average = 64000, maximum = 0, frame_size = 0;
};

std::string config_line(const std::vector<uint8_t>& bytes, const Container& container) {
    AacConfig cfg = {.container_channels = container.channels,
        .container_sample_rate = container.rate,
        .maximum_bitrate = container.maximum,
        .average_bitrate = container.average,
        .bit_depth = 16,
        .frame_size = container.frame_size};
    GetAACConfig(bytes, &cfg);
    char line[line_size];
    FormatAacConfigLine(&cfg, line);
    return line;
}

TEST(AacConfig, decides_on_sbr_ps_and_channels) {
    struct Row {
        const char* name;
        std::vector<uint8_t> bytes;
        Container container;
        const char* start; // of the line
    };
    // LC each: 12 10 is 44.1 kHz stereo, 13 10 24 kHz stereo, 13 88 22.05 kHz mono, 13 90 the same
    // in stereo. 56 E5 opens the extension; 98 and A5 are SBR at 48 and 44.1 kHz, 18 is none; 48 80
    // is PS.
    const Row rows[] = {
        {"implicit SBR", {0x13, 0x30}, {.channels = 6, .rate = 48000},
            "[AAC LC+(SBR)] 48000Hz 5.1ch(C,L,R,BL,BR,LFE) 16Bit 64.000kbps"},
        {"extension behind a zero byte", {0x10, 0x00, 0x56, 0xE5, 0x98}, {.channels = 0}, "[AAC LC] 96000Hz custom "},
        {"PS makes equal counts custom", {0x13, 0x90, 0x56, 0xE5, 0xA5, 0x48, 0x80}, {}, "[AAC HE+SBR+PS] 44100Hz custom "},
        {"PS, container silent", {0x13, 0x88, 0x56, 0xE5, 0xA5, 0x48, 0x80}, {.channels = 0},
            "[AAC HE+SBR+PS] 44100Hz stereo(L,R) "},
        {"PS cut off", {0x13, 0x88, 0x56, 0xE5, 0xA5, 0x48}, {}, "[AAC HE+SBR+(PS)] 44100Hz stereo(L,R) "},
        {"counts that differ", {0x12, 0x58}, {.channels = 6}, "[AAC LC] 44100Hz UnKnown "},
        {"reserved rate", {0x16, 0x90}, {}, "[AAC LC] -1Hz stereo(L,R) "},
        {"rate from the maximum", {0x12, 0x10}, {.average = 0, .maximum = 96001},
            "[AAC LC] 44100Hz stereo(L,R) 16Bit 96.001kbps"},
        {"huge frames", {0x12, 0x10}, {.average = 0, .frame_size = UINT32_MAX},
            "[AAC LC] 44100Hz stereo(L,R) 16Bit 1479750450.855kbps"},
        {"no configuration", {}, {.channels = 0}, "[NULL] 96000Hz custom "},
    };
    for (const Row& row : rows) {
        const std::string line = config_line(row.bytes, row.container);
        EXPECT_EQ(line.substr(0, std::strlen(row.start)), row.start) << row.name;
    }
}

} // namespace

} // namespace zat::test::aac_test
