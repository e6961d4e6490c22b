#include "container/mpeg_pes.h"

#include "support/byte_builder.h"

#include <gtest/gtest.h>
#include <vector>

namespace zat::test::mpeg_pes_test {

constexpr int64_t late = 0x123456789; // needs all 33 bits
const Data late_pts = {0x39, 0x8D, 0x15, 0xCF, 0x13};

Data packet(int id, const Data& header) {
    return ByteBuilder().raw({0, 0, 1, id, 0, 100}).append(header).fill(2, 0x55).bytes;
}

TEST(PesHeader, reads_both_forms) {
    const Data two = ByteBuilder()
                         .raw({0x84, 0xC0, 12})
                         .append({0x31, 0x8D, 0x15, 0xCF, 0x13})
                         .append({0x11, 0, 1, 0, 1})
                         .raw({0xFF, 0xFF})
                         .bytes;
    const Data one = ByteBuilder().raw({0xFF, 0xFF, 0x60, 0x04, 0x31, 0, 1, 0, 3, 0x11, 0, 1, 0, 1}).bytes;
    const struct {
        const char* name;
        Data bytes;
        int result;
        bool mpeg2;
        size_t payload;
        int64_t pts, dts;
        int extension_id;
    } rows[] = {
        {"MPEG-2 with PTS and DTS", packet(0xE0, two), 0, true, 21, 0x023456789, 0, 0},
        {"a header length beats its flags", packet(0xE0, {0x80, 0xC0, 5, 0x21, 0, 1, 0, 3}), 0, true, 14, 1, no_clock, 0},
        {"cut inside the PTS", Data{0, 0, 1, 0xC0, 0, 9, 0x80, 0x80, 5, 0x21, 0}, 0, true, 14, no_clock, no_clock, 0},
        {"the id in the extension", packet(0xFD, {0x80, 0x81, 8, 0x21, 0, 1, 0, 3, 0x0F, 0x81, 0x72}), 0, true, 17, 1, no_clock,
            0x72},
        {"MPEG-1 with stuffing and buffer size", packet(0xC0, one), 0, false, 20, 1, 0, 0},
        {"MPEG-1 without time", packet(0xC0, {0x0F}), 0, false, 7, no_clock, no_clock, 0},
        {"a missing marker", packet(0xC0, {0x21, 0, 0, 0, 1}), 0, false, 11, no_clock, no_clock, 0},
        {"without a header", packet(0xBF, {0x80, 0x80, 5}), 0, false, 6, no_clock, no_clock, 0},
        {"a pack", packet(0xBA, {}), 1, false, 0, no_clock, no_clock, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        PesHeader header;
        EXPECT_EQ(read_pes_header(&header, row.bytes), row.result);
        EXPECT_EQ(header.mpeg2, row.mpeg2);
        EXPECT_EQ(header.payload, row.payload);
        EXPECT_EQ(header.pts, row.pts);
        EXPECT_EQ(header.dts, row.dts);
        EXPECT_EQ(header.extension_id, row.extension_id);
    }
    EXPECT_EQ(read_clock(late_pts.data()), late);
}

TEST(Clock, goes_round) {
    EXPECT_EQ(clock_distance(clock_modulus - 10, 20), 30);
    EXPECT_EQ(clock_distance(20, clock_modulus - 10), -30);
    EXPECT_EQ(clock_elapsed(20, 10), clock_modulus - 10);
    EXPECT_EQ(clock_elapsed(clock_modulus - 10, 20), 30);
}

} // namespace zat::test::mpeg_pes_test
