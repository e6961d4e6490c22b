#include "csv_output.h"
#include "table_output.h"
#include "text_width.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zat::test::output_test {

using host::Description;

ZatStream stream_of(ZatStreamKind kind, const char* codec) {
    ZatStream stream{};
    stream.kind = kind;
    std::strcpy(stream.codec, codec);
    return stream;
}

// A video stream, two audio streams of which one has a line, and subtitles.
Description film() {
    Description film;
    film.path = "\xE6\x98\xA0\xE7\x94\xBB\x1B.mkv"; // two wide characters and an escape
    film.record.type_code = FILETYPE_MATROSKA;
    film.type_name = "MATROSKA";
    film.format = "Matroska";
    std::strcpy(film.record.video[0], "line, quoted");
    film.record.video_count = 1;
    std::strcpy(film.record.audio[0], "[AAC]");
    film.record.audio_count = 1;
    film.record.play_time = 3723.5;
    film.record.file_size = 1000;
    film.details = std::make_unique<ZatDetails>();
    ZatDetails& details = *film.details;
    std::strcpy(details.format, "Matroska");
    details.duration = 3723.5;
    details.bit_rate = 12345678;
    details.stream_count = 4;
    details.streams[0] = stream_of(ZAT_STREAM_VIDEO, "H.264");
    details.streams[0].width = 1920;
    details.streams[0].height = 1080;
    details.streams[0].frame_rate = 24000 / 1001.0;
    details.streams[1] = stream_of(ZAT_STREAM_TEXT, "ASS");
    std::strcpy(details.streams[1].language, "jpn");
    details.streams[2] = stream_of(ZAT_STREAM_AUDIO, "AAC");
    details.streams[2].channels = 6;
    details.streams[3] = stream_of(ZAT_STREAM_AUDIO, "MPEG-H 3D Audio");
    return film;
}

TEST(TableOutput, aligns_and_cuts_at_the_terminals_width) {
    constexpr char cells[] = "Matroska        1:02:03  H.264 1920x1080 23.976         AAC 6ch +1"
                             "      12.3M  ";
    const std::string name = "\xE6\x98\xA0\xE7\x94\xBB\\x1B.mkv";
    EXPECT_EQ(host::table_line(film(), 0), cells + name + "\n");
    EXPECT_EQ(host::table_line(film(), 100), cells + name + "\n");
    // 80 columns have the narrow video column, in which the last digit has no room.
    EXPECT_EQ(host::table_line(film(), 80), "Matroska    1:02:03  H.264 1920x1080 23.9\xE2\x80\xA6"
                                            " AAC 6ch +1   12.3M  " +
                                                name + "\n");
    for (size_t columns = 1; columns < 80; ++columns) {
        const std::string line = host::table_line(film(), columns);
        EXPECT_LE(host::text_width(line.substr(0, line.size() - 1)), columns);
    }

    Description unknown;
    unknown.path = "x";
    unknown.unknown = true;
    EXPECT_EQ(host::table_line(unknown, 0).find_first_not_of("- x\n"), std::string::npos);
    unknown.error = "gone";
    EXPECT_EQ(host::table_line(unknown, 0), "");
}

TEST(CsvOutput, has_a_row_for_each_line_and_for_streams_without_one) {
    const std::string head = "\xE6\x98\xA0\xE7\x94\xBB\x1B.mkv,26,FILETYPE_MATROSKA,,";
    const std::string tail = ",3723.5,0,1000,";
    Description missing;
    missing.path = "x";
    missing.error = "gone";
    EXPECT_EQ(host::csv_of(missing), "x,,,,error,1,gone,,," + std::string(18, ',') + "\r\n");
    EXPECT_EQ(host::csv_of(film()),
        head + "video,1,\"line, quoted\"" + tail + "H.264,,,,1920,1080,,23.976023976023978,,,,,,,,,,\r\n" + //
            head + "audio,1,[AAC]" + tail + "AAC,,,,,,,,,,,,6,,,,,\r\n" +                                   //
            head + "audio,2," + tail + "MPEG-H 3D Audio,,,,,,,,,,,,,,,,,\r\n" +                             //
            head + "text,1," + tail + "ASS,,,,,,,,,,,,,,,,jpn,\r\n");
}

} // namespace zat::test::output_test
