#include "details_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace zat::test::details_json_test {

TEST(DetailsJson, names_every_known_member) {
    ZatStream video{};
    video.kind = ZAT_STREAM_VIDEO;
    video.flags = ZAT_FLAG_DEFAULT | ZAT_FLAG_FORCED | ZAT_FLAG_LOSSLESS;
    video.estimated = ZAT_ESTIMATED_BIT_RATE | ZAT_ESTIMATED_FRAMES;
    video.bit_rate_mode = ZAT_BIT_RATE_VARIABLE;
    video.id = 0xFFFFFFFFFFU;
    video.start = 0;
    video.duration = 2.5;
    video.bit_rate = 8000000000;
    video.frame_rate = 24000 / 1001.0;
    video.width = 720;
    video.height = 576;
    video.pixel_aspect_width = 64;
    video.pixel_aspect_height = 45;
    video.frame_rate_numerator = 24000;
    video.frame_rate_denominator = 1001;
    video.scan = ZAT_SCAN_INTERLACED;
    video.field_order = ZAT_FIELD_BOTTOM;
    std::strcpy(video.codec, "H.264");
    std::strcpy(video.title, "a\"\x1B\xE6\x97\xFF");
    EXPECT_EQ(host::stream_json(video).dump(),
        R"({"kind":"video","id":1099511627775,"codec":"H.264","title":"a\"\u001b)"
        "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
        R"(","default":true,"forced":true,"lossless":true,"start":0.0,"duration":2.5,)"
        R"("bit_rate":8000000000,"bit_rate_mode":"variable","width":720,"height":576,)"
        R"("pixel_aspect":"64:45","frame_rate":23.976023976023978,)"
        R"("frame_rate_ratio":"24000/1001","scan":"interlaced","field_order":"bottom",)"
        R"("estimated":["bit_rate"]})"); // of frames there is no figure that could be estimated
}

TEST(DetailsJson, leaves_out_what_is_not_known) {
    ZatDetails details{};
    nlohmann::ordered_json out = nlohmann::ordered_json::object();
    host::add_details(details, &out);
    EXPECT_EQ(out.dump(), "{}");

    std::strcpy(details.format, "FLAC");
    std::strcpy(details.notes, "truncated\nno index");
    details.duration = INFINITY;
    details.stream_count = 70; // more than are kept
    for (ZatStream& stream : details.streams) {
        stream.kind = 99;
        stream.start = NAN;
        stream.duration = -1;
    }
    host::add_details(details, &out);
    EXPECT_EQ(out["notes"].dump(), R"(["truncated","no index"])");
    EXPECT_EQ(out["stream_count"], 70);
    EXPECT_EQ(out["streams"].size(), 64U);
    EXPECT_EQ(out["streams"][0].dump(), R"({"id":0})");
    EXPECT_FALSE(out.contains("duration"));
}

} // namespace zat::test::details_json_test
