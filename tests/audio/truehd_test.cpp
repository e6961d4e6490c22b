#include "audio/truehd.h"

#include "support/byte_builder.h"

#include <gtest/gtest.h>

namespace zat::test::truehd_test {

namespace {

struct Sync {
    size_t position = 4;
    uint32_t type = 0xBA, rate_code = 0, six_channels = 0, eight_channels = 0;
    uint32_t peak = 0; // variable_rate and sixteenths of a bit per sample
};

TrueHdInfo decoded(const Sync& sync, int result = 0) {
    BitBuilder out;
    out.bits(0xF8726F, 24).bits(sync.type, 8).bits(sync.rate_code, 4).bits(0xFF, 8);
    out.bits(sync.six_channels, 5).bits(3, 2).bits(sync.eight_channels, 13);
    out.bits(0xB752, 16).bits(UINT32_MAX, 32).bits(sync.peak, 16);
    const auto bytes = ByteBuilder().fill(sync.position, 0xF8).append(out.bytes).pad_to(48).bytes;
    TrueHdInfo info;
    EXPECT_EQ(truehd_info(bytes, &info), result);
    return info;
}

TEST(TrueHd, reads_the_major_sync) {
    EXPECT_EQ(decoded({.six_channels = 0x01, .eight_channels = 0x4F}).channels, 8U);
    EXPECT_EQ(decoded({.rate_code = 15, .peak = 0x7FFF}).peak_bitrate, 0U);
    EXPECT_EQ(decoded({.rate_code = 2, .peak = 0x7FFF}).peak_bitrate,
        393204000U); // the product exceeds 32 bits
    EXPECT_EQ(decoded({.peak = 0x8000}).vbr, 1U);
    EXPECT_EQ(decoded({.position = 23, .rate_code = 9}).sample_rate, 88200U);
    decoded({.position = 24}, -1);
    decoded({.type = 0xBB}, -2); // MLP as DVD-Audio has it
}

TEST(TrueHd, names_layouts_with_one_lfe) {
    char name[8] = "kept";
    const std::pair<uint32_t, const char*> rows[] = {{0, "kept"}, {2, "2ch"}, {3, "2.1ch"}, {20, "19.1ch"}, {21, "19.1ch"}};
    for (const auto& [count, expected] : rows) {
        truehd_channel_name(count, name);
        EXPECT_STREQ(name, expected);
    }
}

} // namespace

} // namespace zat::test::truehd_test
