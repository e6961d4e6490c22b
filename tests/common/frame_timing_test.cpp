#include "common/record/frame_timing.h"

#include <gtest/gtest.h>
#include <vector>

namespace zat::test::frame_timing_test {
namespace {

TEST(FrameTiming, snaps_to_usual_rates_and_marks_others) {
    const struct {
        const char* name;
        std::vector<int64_t> times; // milliseconds
        double rate;
        bool estimated;
    } rows[] = {
        {"NTSC film", {0, 42, 83, 125, 167, 209, 250, 292, 334, 375, 417, 459, 500, 542, 584, 626, 667}, 24000 / 1001.0, false},
        {"too short to tell", {0, 42}, 1000 / 42.0, true},
        {"repeated times", {0, 0, 40, 40, 80}, 25, false},
        {"longest stretch", {0, 100, 200, 5000, 5040, 5080, 5120}, 25, false},
        {"mostly regular", {0, 70, 141, 210, 280, 900}, 1000 / 70.0, true},
        {"irregular", {0, 13, 97, 350}, 3000 / 350.0, true},
        {"one", {5}, 0, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FrameTimes times;
        for (const int64_t time : row.times) {
            add_frame_time(&times, time);
        }
        ZatStream stream = new_stream(ZAT_STREAM_VIDEO);
        measure_frame_rate(&stream, &times, 0.001);
        EXPECT_NEAR(stream.frame_rate, row.rate, 1e-9);
        EXPECT_EQ((stream.estimated & ZAT_ESTIMATED_FRAME_RATE) != 0, row.estimated);
    }
}

} // namespace
} // namespace zat::test::frame_timing_test
