#include "api/report.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace zat::test::report_test {

namespace {

InfoRecord cleared_record() {
    InfoRecord record;
    std::memset(&record, 0, sizeof record);
    return record;
}

std::string report_of(const InfoRecord& record, size_t body_size = report_body_size) {
    std::string text(write_report(&record, nullptr, 0, body_size) + 1, 'x');
    write_report(&record, text.data(), text.size(), body_size);
    EXPECT_EQ(text.back(), '\0');
    text.pop_back();
    return text;
}

TEST(Report, joins_the_lines_under_headers_of_two_and_more) {
    InfoRecord record = cleared_record();
    std::strcpy(record.label, "[X]");
    record.general_count = 2;
    std::strcpy(record.general[0], "first");
    std::strcpy(record.general[1], "second");
    record.video_count = 1;
    std::strcpy(record.video[0], "picture");
    record.audio_count = 2;
    std::strcpy(record.audio[0], "left");
    std::strcpy(record.audio[1], "right");
    std::strcpy(record.extra_info, "title");
    record.extra_count = 3;
    record.file_size = 12345678901;
    record.play_time = 270.123;
    EXPECT_EQ(report_of(record), "first\r\nsecond\r\npicture\r\n[2 audios]\r\nleft\r\nright\r\ntitle\r\n"
                                 "[3 extras]\r\n\r\n\r\n\r\n[X] 12,345,678,901Byte 0:04:30.123(270.1230sec)\r\n");
    record.video_count = 12; // more than there are slots for
    const std::string report = report_of(record);
    EXPECT_NE(report.find("[12 videos]\r\npicture\r\n"), std::string::npos);
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 2 + 1 + 10 + 3 + 1 + 4 + 1);
}

TEST(Report, shows_times_and_sizes) {
    const struct {
        double seconds;
        uint64_t size;
        const char* summary;
    } rows[] = {
        {0, 0, " 0Byte 0:00:00.000(0.0000sec)"},
        {-0.0, 999, " 999Byte 0:00:00.000(0.0000sec)"},
        {59.9999996, 1000, " 1,000Byte 0:00:59.000(60.0000sec)"}, // the fraction's six decimals are 1.000000
        {3725.5, 1234567, " 1,234,567Byte 1:02:05.500(3725.5000sec)"},
        {360000, 100000, " 100,000Byte 100:00:00.000(360000.0000sec)"},
        {2147483647.75, UINT64_MAX, " 18,446,744,073,709,551,615Byte 596523:14:07.750(2147483647.7500sec)"},
        {2147483648.0, 1, " 1Byte (2147483648.0000sec)"},
        {-1, 1000, " 1,000Byte (-1.0000sec)"},
    };
    for (const auto& row : rows) {
        InfoRecord record = cleared_record();
        record.type_code = 106;
        record.play_time = row.seconds;
        record.file_size = row.size;
        EXPECT_EQ(report_of(record), std::string(row.summary) + "[106:0.0.0]\r\n");
    }
}

// A body of 1,023 bytes is whole; one byte more costs its last line, and what follows it.
TEST(Report, drops_whole_lines_from_the_first_that_does_not_fit) {
    InfoRecord record = cleared_record();
    record.video_count = 3;
    record.audio_count = 1;
    std::strcpy(record.audio[0], "a");
    const std::string header = "[3 videos]\r\n";
    std::string lines[3] = {std::string(500, 'x'), std::string(491, 'y'), ""};
    const size_t used = header.size() + 502 + 493;
    lines[2] = std::string(1023 - used - 2 - 3, 'z'); // what is left, but for "a"
    for (const bool fits : {true, false}) {
        lines[2] += fits ? "" : "z";
        for (int i = 0; i < 3; ++i) {
            std::strcpy(record.video[i], lines[i].c_str());
        }
        const std::string videos = header + lines[0] + "\r\n" + lines[1] + "\r\n" + lines[2] + "\r\n";
        const std::string summary = " 0Byte 0:00:00.000(0.0000sec)\r\n";
        std::string whole = videos;
        whole.append("a\r\n").append(summary);
        EXPECT_EQ(report_of(record), fits ? whole : videos + summary);
        EXPECT_EQ(report_of(record, SIZE_MAX), whole);
    }
}

TEST(Report, is_cut_to_its_buffer_at_a_whole_character) {
    InfoRecord record = cleared_record();
    record.general_count = 1;
    std::strcpy(record.general[0], "\x83\x41\x83\x42");
    char out[4] = "###";
    EXPECT_GT(write_report(&record, out, sizeof out, report_body_size), sizeof out);
    EXPECT_STREQ(out, "\x83\x41");
}

} // namespace

} // namespace zat::test::report_test
