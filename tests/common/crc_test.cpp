#include "common/bytes/crc.h"

#include "support/byte_builder.h"

namespace zat::test::crc_test {

// The check value by which a catalogue of CRCs knows each of them: that of "123456789".
TEST(Crc, every_one_has_its_published_check_value) {
    const Data digits = ByteBuilder().text("123456789").bytes;
    EXPECT_EQ(crc32(digits), 0xCBF43926U);
    EXPECT_EQ(crc32_mpeg2(digits), 0x0376E6E7U);
    EXPECT_EQ(crc24(digits), 0x21CF02U);
    EXPECT_EQ(crc8(digits), 0xF4U);
}

} // namespace zat::test::crc_test
