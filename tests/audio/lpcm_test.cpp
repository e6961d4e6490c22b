#include "audio/lpcm.h"

#include "common/text/text.h"

#include <gtest/gtest.h>
#include <string>

namespace zat::test::lpcm_test {

namespace {

std::string dvd_line(uint8_t attribute) {
    LpcmInfo info;
    EXPECT_EQ(dvd_lpcm_info(attribute, &info), 0);
    char line[line_size];
    dvd_lpcm_line(&info, line);
    return line;
}

std::string bd_line(uint8_t assignment_and_rate, uint8_t bits) {
    const uint8_t header[] = {0xFF, 0xFF, assignment_and_rate, bits};
    LpcmInfo info;
    EXPECT_EQ(bd_lpcm_info(header, &info), 0);
    char line[line_size];
    bd_lpcm_line(&info, line);
    return line;
}

TEST(Lpcm, describes_dvd_and_blu_ray_headers) {
    EXPECT_EQ(dvd_line(0x61), "LPCM 48000Hz 2ch 20Bit 1536.000kbps"); // 20 bits count two bytes
    EXPECT_EQ(dvd_line(0x97), "LPCM 96000Hz 8ch 24Bit 18432.000kbps");
    EXPECT_EQ(dvd_line(0xC1), "LPCM 48000Hz 2ch -1Bit 0.000kbps");
    EXPECT_EQ(bd_line(0x91, 0xC0), "LPCM 48000Hz 3/2.1(L+R+C+SL+SR+LFE) 24Bit 6912.000kbps");
    EXPECT_EQ(bd_line(0x54, 0xBF), "LPCM 96000Hz 2/1(L+R+S) 20Bit 6144.000kbps");
    EXPECT_EQ(bd_line(0xC2, 0x00), "LPCM 0Hz Unknown(0) 0Bit 0.000kbps");
}

} // namespace

} // namespace zat::test::lpcm_test
