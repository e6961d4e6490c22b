#include "common/text/messages.h"
#include "support/byte_builder.h"
#include "support/details_text.h"
#include "support/record_text.h"
#include "support/temp_file.h"

#include <bit>
#include <gtest/gtest.h>
#include <limits>

namespace zat::test::flv_test {

constexpr int64_t own_size = -1;

struct FlvBuilder : ByteBuilder {
    FlvBuilder() { text("FLV").raw({1, 5}).be32(9).be32(0); }

    FlvBuilder& tag(int type, const Data& data, uint64_t timestamp = 0, int64_t size = own_size) {
        u8(static_cast<uint64_t>(type));
        be24(size == own_size ? data.size() : static_cast<uint64_t>(size));
        be24(timestamp & 0xFFFFFF).u8(timestamp >> 24).be24(0);
        append(data).be32(data.size() + 11);
        return *this;
    }
};

enum { audio = 8, video = 9, script = 18 };

ByteBuilder& name(ByteBuilder& to, std::string_view value) {
    return to.be16(value.size()).text(value);
}

ByteBuilder& number(ByteBuilder& to, std::string_view key, double value) {
    return name(to, key).u8(0).be64(std::bit_cast<uint64_t>(value));
}

// The start of a metadata object: its name and an array that announces too few entries.
ByteBuilder metadata() {
    ByteBuilder to;
    name(to.u8(2), "onMetaData").u8(8).be32(1);
    return to;
}

Data sizes(double width, double height) {
    ByteBuilder to = metadata();
    number(to, "width", width);
    return number(to, "height", height).raw({0, 0, 9}).bytes;
}

// A metadata object with `entry` before the duration of two seconds.
Data duration_behind(const Data& entry) {
    ByteBuilder to = metadata();
    return number(to.append(entry), "duration", 2.0).raw({0, 0, 9}).bytes;
}

// `depth` strict arrays of one value, one in the other.
Data nested(int depth) {
    ByteBuilder to;
    name(to, "keyframes");
    for (int i = 0; i < depth; ++i) {
        to.u8(10).be32(1);
    }
    return to.u8(5).bytes;
}

Data h263(int code, uint64_t width = 0, uint64_t height = 0, int bits = 0) {
    BitBuilder picture;
    picture.bits(0x22, 8).bits(1, 17).bits(0, 5).bits(7, 8).bits(static_cast<uint64_t>(code), 3);
    return picture.bits(width, bits).bits(height, bits).bits(0, 7).bytes;
}

Data without_last(Data data, size_t count) {
    data.resize(data.size() - count);
    return data;
}

const Data avc_baseline = {0x17, 0, 0, 0, 0, 1, 66, 0, 10};
const Data avc_high_41 = {0x17, 0, 0, 0, 0, 1, 100, 0, 41, 0xFF};

std::string described(const Data& bytes) {
    const auto record = info_of(bytes);
    EXPECT_STREQ(record->label, "[FlashVideo]");
    expect_sound(*record);
    return record_text(*record);
}

struct Row {
    const char* name;
    Data bytes;
    std::string expected;
};

void expect_rows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(described(row.bytes), row.expected) << row.name;
    }
}

Data full_metadata() {
    ByteBuilder to = metadata();
    number(number(number(to, "duration", 12.5), "width", 640), "height", 360);
    number(number(number(to, "videodatarate", 500.25), "audiodatarate", 128), "framerate", 29.97);
    return to.raw({0, 0, 9}).bytes;
}

const std::string no_rates = " 0.000kbps 0.000fps\n";
const std::string nothing = "V 0x0 []" + no_rates;

TEST(Flv, describes_the_first_tags_with_the_metadata) {
    const std::string size_note = std::string("X ") + message::script_object + "\n";
    FlvBuilder later;
    later.tag(audio, {}).tag(video, {}).tag(audio, {0x22}).tag(video, {0x13}).tag(audio, {0xAF}).tag(video, avc_high_41);
    expect_rows({
        {"all of it", FlvBuilder().tag(script, full_metadata()).tag(video, {0x14, 0}).tag(audio, {0xAF}).bytes,
            "V 640x360 [On2 VP6] 500.250kbps 29.970fps\nA AAC 44kHz 16bit Stereo 128.000kbps\n"
            "12.500"},
        {"empty tags are passed over, later tags do not count", later.bytes,
            "V 0x0 [Screen video] 0.000kbps 0.000fps\nA MP3 5.5kHz 16bit Mono\n0.000"},
        {"no tags", FlvBuilder().bytes, nothing + "0.000"},
        {"sizes that are no sizes", FlvBuilder().tag(script, sizes(1e300, -1)).bytes,
            "V -1x0 [] 0.000kbps 0.000fps\n" + size_note + "0.000"},
        {"not a number", FlvBuilder().tag(script, sizes(std::numeric_limits<double>::quiet_NaN(), 0.5)).bytes, nothing + "0.000"},
    });
}

TEST(Flv, reads_the_picture_size_where_the_codec_has_it) {
    const Data meta = sizes(8, 6);
    expect_rows({
        {"size code", FlvBuilder().tag(script, meta).tag(video, h263(5)).bytes,
            "V 320x240 [Sorenson H.263]" + no_rates + "0.000"},
        {"8-bit size", FlvBuilder().tag(video, h263(0, 200, 121, 8)).bytes, "V 200x121 [Sorenson H.263]" + no_rates + "0.000"},
        {"16-bit size", FlvBuilder().tag(video, h263(1, 641, 359, 16)).bytes, "V 641x359 [Sorenson H.263]" + no_rates + "0.000"},
        {"cut by its tag",
            FlvBuilder().tag(script, meta).tag(video, without_last(h263(1, 641, 359, 16), 1)).tag(video, h263(5)).bytes,
            "V 8x6 [Sorenson H.263]" + no_rates + "0.000"},
        {"AVC profile in the first sequence header that has one",
            FlvBuilder().tag(video, without_last(avc_high_41, 2)).tag(video, avc_high_41).tag(video, avc_baseline).bytes,
            "V 0x0 [AVC/H264 High@4.1]" + no_rates + "0.000"},
        {"AVC without one", FlvBuilder().tag(video, {0x17, 1}).bytes, "V 0x0 [AVC]" + no_rates + "0.000"},
    });
}

// The play time shows how far the walk came.
TEST(Flv, steps_over_script_values_and_ends_at_damage) {
    const auto with = [](const Data& entry) { return FlvBuilder().tag(script, duration_behind(entry), 7).bytes; };
    const auto entry = [](uint64_t type) {
        ByteBuilder to;
        return name(to, "x").u8(type);
    };
    ByteBuilder typed = entry(16);
    number(name(typed, "class"), "duration", 99).raw({0, 0, 9});
    ByteBuilder large;
    for (int i = 0; i < 2000; ++i) {
        number(large, "key", i);
    }
    const std::string found = nothing + "2.000";
    const std::string ended = nothing + "0.007";
    expect_rows({
        {"typed object", with(typed.bytes), found},
        {"date, long string, XML, reference",
            with(entry(11).fill(10).raw({0, 0, 12, 0, 0, 0, 1, 'l', 0, 0, 15, 0, 0, 0, 1, 'x', 0, 0, 7, 0, 1}).bytes), found},
        {"larger than one read", with(large.bytes), found},
        {"deep", with(nested(64)), found},
        {"too deep", with(nested(65)), ended},
        {"array of 2^32-1 values", with(entry(10).be32(0xFFFFFFFF).bytes), ended},
        {"end marker with a name", with(entry(9).bytes), ended},
        {"name past the tag", with(ByteBuilder().be16(0xFFFF).bytes), ended},
        {"long string past everything", with(entry(12).be32(0xFFFFFFFF).bytes), ended},
        {"object instead of an array", FlvBuilder().tag(script, ByteBuilder{duration_behind({})}.put(13, "\3").bytes, 7).bytes,
            ended},
        {"number cut by its tag", FlvBuilder().tag(script, without_last(duration_behind({}), 4), 7).bytes, ended},
    });
}

TEST(Flv, walks_tags_to_the_end_of_the_first_mebibyte) {
    // A tag that fills the file so that the header of the next one ends `end` bytes in.
    const auto next_header_ends_at = [](size_t end) {
        return FlvBuilder().tag(audio, Data(end - 11 - 4 - 24, 0xAF)).tag(video, {0x13}, 5000).bytes;
    };
    const std::string sound = "A AAC 44kHz 16bit Stereo\n";
    expect_rows({
        {"the largest timestamp, with its extension",
            FlvBuilder().tag(audio, {}, 10).tag(audio, {}, 0x01000000).tag(audio, {}, 20).bytes, nothing + "16777.216"},
        {"reserved types count their time", FlvBuilder().tag(audio, {}, 10).tag('T', {}, 5000).tag(audio, {}, 30).bytes,
            nothing + "5.000"},
        {"size past the end", FlvBuilder().tag(script, duration_behind({}), 0, 0xFFFFFF).tag(video, {0x13}).bytes,
            nothing + "2.000"},
        {"data offset past the end", ByteBuilder().text("FLV").raw({1, 5}).be32(0xFFFFFFFF).fill(64).bytes, nothing + "0.000"},
        {"data within", next_header_ends_at(1048575), "V 0x0 [Screen video]" + no_rates + sound + "5.000"},
        {"header crossing", next_header_ends_at(1048577), nothing + sound + "0.000"},
    });
}

// Formats that a four-character code names behind the first byte.
TEST(Flv, names_formats_by_four_character_codes) {
    const auto tagged = [](int first, std::string_view code, const Data& data = {}) {
        return ByteBuilder().u8(static_cast<uint64_t>(first)).text(code).append(data).bytes;
    };
    const Data avc_record = {1, 100, 0, 41, 0xFF};
    const Data cut = {0x90, 'h', 'v'};
    expect_rows({
        {"AVC with its profile", FlvBuilder().tag(video, tagged(0x90, "avc1", avc_record)).bytes,
            "V 0x0 [AVC/H264 High@4.1]" + no_rates + "0.000"},
        {"AVC without one", FlvBuilder().tag(video, tagged(0x91, "avc1", avc_record)).bytes, "V 0x0 [AVC]" + no_rates + "0.000"},
        {"HEVC and AAC",
            FlvBuilder().tag(script, full_metadata()).tag(video, tagged(0x90, "hvc1")).tag(audio, tagged(0x90, "mp4a")).bytes,
            "V 640x360 [HEVC/H265] 500.250kbps 29.970fps\nA AAC 128.000kbps\n12.500"},
        {"unknown ones", FlvBuilder().tag(video, tagged(0x90, "abcd")).tag(audio, tagged(0x90, "abcd")).bytes,
            nothing + "A format reserved 5.5kHz 8bit Mono\n0.000"},
        {"cut", FlvBuilder().tag(video, cut).tag(audio, cut).bytes, nothing + "A format reserved 5.5kHz 8bit Mono\n0.000"},
    });
}

TEST(Flv, fills_the_details) {
    ByteBuilder named = metadata();
    name(name(named, "encoder").u8(2), "Lavf1");
    number(number(named, "duration", 2), "framerate", 25).raw({0, 0, 9});
    const Data config = ByteBuilder()
                            .raw({0x17, 0, 0, 0, 0, 1, 66, 0, 30, 0xFF, 0xE1})
                            .be16(8)
                            .raw({0x67, 0x42, 0, 0x1E, 0xDA, 0x05, 0x07, 0xE4})
                            .bytes;
    const Data bytes = FlvBuilder()
                           .tag(script, named.bytes)
                           .tag(video, config)
                           .tag(video, {0x17, 1, 0, 0, 0, 9, 9})
                           .tag(audio, {0xAF, 0, 0x2B, 0x92, 0x08, 0x00})
                           .tag(audio, {0xAF, 1, 9, 9, 9, 9}, 40, 106)
                           .bytes;
    EXPECT_EQ(details_text(*details_of(bytes)),
        "FLV writer=Lavf1 notes=truncated duration=2.000 bit_rate=" + std::to_string((bytes.size() + 96) * 4) +
            " missing=96\nvideo id=9 duration=2.000 bytes=2 frame_rate=25.000 frames=1 size=320:240"
            " scan=1 bit_depth=8 codec=H.264 codec_id=7 profile=Baseline level=3 chroma=4:2:0"
            "\naudio id=8 duration=2.000 bytes=8 sample_rate=44100 channels=2 codec=AAC codec_id=10 profile=HE-AAC "
            "layout=L R");
    const Data others = FlvBuilder().tag(video, {0x14, 0x21, 0, 0, 0, 1, 8, 10, 8, 10}).tag(audio, {0x3E, 0, 0}).bytes;
    EXPECT_EQ(details_text(*details_of(others)),
        "FLV\nvideo id=9 bytes=9 frames=1 size=158:127 codec=VP6 codec_id=4"
        "\naudio id=8 bytes=2 sample_rate=44100 channels=1 bit_depth=16 codec=PCM codec_id=3 profile=signed 16 LE");
    // What there is of a file tells how large it was, and its rate in the time that is left.
    ByteBuilder sized = metadata();
    number(number(sized, "filesize", 1000), "duration", 2).raw({0, 0, 9});
    const Data cut = FlvBuilder().tag(script, sized.bytes).tag(audio, {0x3E, 0, 0}).tag(audio, {0x3E, 0, 0}, 16).bytes;
    EXPECT_EQ(details_text(*details_of(cut)),
        "FLV notes=truncated duration=2.000 bit_rate=4000 missing=" + std::to_string(1000 - cut.size()) +
            "\naudio estimated=2 id=8 duration=2.000 bit_rate=1000 bytes=4 sample_rate=44100 channels=1 bit_depth=16 codec=PCM "
            "codec_id=3 profile=signed 16 LE");
    // Behind what is examined the last tag tells the time; where it is cut, the share that was examined does.
    FlvBuilder broken;
    broken.tag(audio, {0x3E, 0, 0}, 1000).tag(audio, Data(0x1FFFDF, 0x3E), 2000).tag(audio, {0x3E, 0, 0}, 5000);
    EXPECT_EQ(details_of(broken.bytes)->duration, 5);
    broken.bytes.pop_back();
    EXPECT_NEAR(details_of(broken.bytes)->duration, 4, 0.001);
    EXPECT_EQ(details_of(broken.bytes)->estimated, uint32_t{ZAT_ESTIMATED_DURATION | ZAT_ESTIMATED_BIT_RATE});
    // A composition time stands before the first frame only.
    const Data enhanced =
        FlvBuilder().tag(video, {0x91, 'h', 'v', 'c', '1', 0, 0, 0, 1, 2}).tag(video, {0x93, 'h', 'v', 'c', '1', 1, 2, 3}).bytes;
    EXPECT_EQ(details_text(*details_of(enhanced)), "FLV\nvideo id=9 bytes=5 frames=2 codec=HEVC codec_id=hvc1");
}

TEST(Flv, survives_every_length) {
    expect_sound_at_every_length(
        FlvBuilder().tag(script, full_metadata()).tag(video, h263(1, 640, 360, 16)).tag(audio, {0xAF, 0}).bytes);
}

} // namespace zat::test::flv_test
