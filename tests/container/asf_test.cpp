#include "support/audio_builder.h"
#include "support/byte_builder.h"
#include "support/details_text.h"
#include "support/record_text.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

namespace zat::test::asf_test {
namespace {

constexpr int64_t own_size = -1;

// A GUID by its first two fields and the rest, as it stands in a file.
Data guid(uint64_t first, uint64_t second, uint64_t third = 0x11CF, uint64_t rest = 0) {
    return ByteBuilder().le32(first).le16(second).le16(third).be64(rest).bytes;
}

Data object(const Data& id, const Data& content, int64_t size = own_size) {
    const auto whole = static_cast<int64_t>(content.size()) + 24;
    return ByteBuilder().append(id).le64(static_cast<uint64_t>(size == own_size ? whole : size)).append(content).bytes;
}

// UTF-16 with its zero.
Data wide(std::string_view text) {
    ByteBuilder out;
    for (const char c : text) {
        out.le16(static_cast<unsigned char>(c));
    }
    return out.le16(0).bytes;
}

constexpr uint64_t packet_size = 200;
constexpr uint64_t second = 10'000'000;

// Play duration in 100 ns; a preroll of 1000 ms.
Data file_properties(uint64_t duration, uint64_t packets, uint64_t flags = 2) {
    ByteBuilder content;
    content.fill(24).le64(131000000000000000).le64(packets).le64(duration).le64(0).le64(1000);
    return object(guid(0x8CABDCA1, 0xA947), content.le32(flags).le32(packet_size).le32(packet_size).le32(0).bytes);
}

Data stream_properties(const Data& type, uint64_t number, const Data& type_data) {
    ByteBuilder content;
    content.append(type).fill(16).le64(0).le32(type_data.size()).le32(0).le16(number).le32(0).append(type_data);
    return object(guid(0xB7DC0791, 0xA9B7), content.bytes);
}

Data video(uint64_t number, std::string_view code, const Data& codec_data = {}) {
    ByteBuilder format;
    format.le32(320).le32(240).u8(2).le16(40 + codec_data.size());
    format.le32(40).le32(320).le32(240).le16(1).le16(24).text(code).fill(20).append(codec_data);
    return stream_properties(guid(0xBC19EFC0, 0x5B4D), number, format.bytes);
}

Data audio(uint64_t number, uint64_t tag, const Data& extension = {}, uint64_t byte_rate = 16000) {
    ByteBuilder format;
    format.le16(tag).le16(2).le32(44100).le32(byte_rate).le16(4).le16(16).le16(extension.size()).append(extension);
    return stream_properties(guid(0xF8699E40, 0x5B4D), number, format.bytes);
}

// With a name and a payload extension, behind which the stream's own properties may stand.
Data extended_properties(uint64_t number, uint64_t rate, uint64_t frame_time, const Data& own = {}) {
    ByteBuilder content;
    content.le64(0).le64(0).le32(rate).fill(28).le16(number).le16(1).le64(frame_time).le16(1).le16(1);
    content.le16(0).le16(10).append(wide("Name")).append(guid(0, 0)).le16(2).le32(3).fill(3);
    return object(guid(0x14E6A5CB, 0xC672), content.append(own).bytes);
}

Data header_extension(std::initializer_list<Data> children) {
    const Data content = join(children);
    return object(guid(0x5FBF03B5, 0xA92E), ByteBuilder().fill(18).le32(content.size()).append(content).bytes);
}

Data languages() {
    ByteBuilder content;
    content.le16(2).u8(6).append(wide("de")).u8(12).append(wide("en-us"));
    return object(guid(0x7C4346A9, 0xEFE0), content.bytes);
}

Data codec_list() {
    ByteBuilder content;
    content.fill(16).le32(2);
    content.le16(1).le16(0).le16(0).le16(0);
    content.le16(2).le16(2).append(wide("A")).le16(12).append(wide(" 9 kbps CBR")).le16(2).le16(0x161);
    return object(guid(0x86D15240, 0x311D), content.bytes);
}

Data attribute(std::string_view name, uint64_t type, const Data& value) {
    const Data text = wide(name);
    return ByteBuilder().le16(text.size()).append(text).le16(type).le16(value.size()).append(value).bytes;
}

Data stream_attribute(uint64_t stream, std::string_view name, uint64_t value) {
    const Data text = wide(name);
    return ByteBuilder().le16(0).le16(stream).le16(text.size()).le16(3).le32(4).append(text).le32(value).bytes;
}

Data header(std::initializer_list<Data> objects, int64_t size = own_size) {
    return object(guid(0x75B22630, 0x668E, 0x11CF, 0xA6D900AA0062CE6C),
        ByteBuilder().le32(objects.size()).raw({1, 2}).append(join(objects)).bytes, size);
}

Data data_object(std::initializer_list<Data> packets, int64_t size = own_size) {
    return object(
        guid(0x75B22636, 0x668E), ByteBuilder().fill(16).le64(packets.size()).le16(0x101).append(join(packets)).bytes, size);
}

// One payload: a whole object of the rest of the packet.
Data packet(uint64_t stream, uint64_t milliseconds, const Data& payload = {}) {
    ByteBuilder bytes;
    bytes.raw({0x82, 0, 0, 0, 0x5D}).le32(0).le16(0).u8(0x80 | stream).u8(0).le32(0).u8(8).le32(100).le32(milliseconds + 1000);
    return bytes.append(payload).pad_to(packet_size, 0x55).bytes;
}

// Several payloads: the start of an object, its rest, and three objects in compressed form.
Data mixed_packet(uint64_t stream, uint64_t milliseconds) {
    ByteBuilder bytes;
    bytes.raw({0x82, 0, 0, 1, 0x5D}).le32(0).le16(0).u8(0x80 | 3);
    bytes.u8(stream).u8(0).le32(0).u8(8).le32(20).le32(milliseconds + 1000).le16(10).fill(10);
    bytes.u8(stream).u8(0).le32(10).u8(8).le32(20).le32(milliseconds + 1000).le16(10).fill(10);
    bytes.u8(stream).u8(1).le32(milliseconds + 1040).u8(1).u8(40).le16(9).raw({2, 0, 0, 2, 0, 0, 2, 0, 0});
    return bytes.pad_to(packet_size).bytes;
}

Data film() {
    const Data extension =
        header_extension({languages(), extended_properties(2, 9000, 0, audio(2, 0x161)), extended_properties(1, 0, second / 30),
            object(guid(0xC5F8CBEA, 0x5BAF), ByteBuilder()
                                                 .le16(2)
                                                 .append(stream_attribute(0, "AspectRatioX", 4))
                                                 .append(stream_attribute(1, "AspectRatioY", 3))
                                                 .bytes)});
    const Data tags = object(guid(0xD2D0A440, 0xE307), ByteBuilder()
                                                           .le16(4)
                                                           .append(attribute("Title", 0, wide("Title")))
                                                           .append(attribute("WM/Picture", 1, Data(9)))
                                                           .append(attribute("WM/ToolName", 0, wide("Tool")))
                                                           .append(attribute("WM/ToolVersion", 0, wide("2")))
                                                           .bytes);
    const Data texts = object(guid(0x75B22633, 0x668E),
        ByteBuilder().le16(2).le16(14).le16(0).le16(0).le16(0).append(wide("")).append(wide("Author")).bytes);
    // Room for three, whatever the count says.
    const Data markers =
        object(guid(0xF487CD01, 0xA951), ByteBuilder().fill(16).le32(0xFFFFFFFF).le16(0).le16(2).fill(2 + 3 * 30).bytes);
    const Data script = object(guid(0x1EFB1A30, 0x0B62), ByteBuilder().fill(16).le16(2).bytes);
    return join({header({file_properties(3 * second, 4), extension, video(1, "WMV3", {0x4E, 0x39, 0x0A, 0x01}), codec_list(),
                     tags, texts, markers, script, object(guid(0x2211B3FB, 0xBD23), {})}),
        data_object({packet(1, 0), packet(1, 100), packet(1, 200), packet(2, 200)})});
}

Data bare(uint64_t flags, const Data& data) {
    return join({header({file_properties(3 * second, 3, flags), video(5, "MP43"),
                     audio(0x8006, 0x162, ByteBuilder().le16(24).le32(0x3F).fill(12).bytes),
                     stream_properties(guid(0x59DACFC0, 0x59E6), 7, {}),
                     object(guid(0x7BF875CE, 0x468D), ByteBuilder().le16(1).le16(5).le32(30000).bytes)}),
        data});
}

struct Row {
    const char* name;
    Data bytes;
    std::string lines;
    std::string details;
};

TEST(Asf, describes_streams) {
    const std::vector<Row> rows = {
        {"tags, languages, settings; a wrong frame time", film(),
            "[ASF]\n"
            "V 320x240 [C\x96\xB3WMV3 Main] 10.000fps 20.880kbps 3f display 427x240 en-us \"Name\"\n"
            "A [C\x96\xB3"
            "0161] 44100Hz 2ch 9.000kbps en-us \"9 kbps CBR\"\n"
            "X \x83`\x83\x83\x83v\x83^\x81[(3)\n"
            "X [script](2)\n"
            "X DRM\n"
            "I Author - Title / Tool 2\n"
            "2.000",
            "ASF title=Title artist=Author writer=Tool 2 created=2016-02-15T08:53:20Z duration=2.000 bit_rate=8752 chapters=3 "
            "pictures=1\n"
            "audio id=2 duration=2.000 bit_rate=9000 nominal_bit_rate=128000 bytes=174 sample_rate=44100 channels=2 codec=WMA2 "
            "codec_id=0x0161 language=en-us title=9 kbps CBR\n"
            "video id=1 duration=2.000 bit_rate=20880 bytes=522 frame_rate=10.000 nominal_frame_rate=30.000 frames=3 "
            "size=320:240 pixel=4:3 display=16:9 fps_ratio=10:1 bit_depth=8 codec=WMV3 codec_id=WMV3 profile=Main language=en-us "
            "title=Name chroma=4:2:0"},
        {"several payloads, compressed ones", bare(2, data_object({mixed_packet(5, 0), mixed_packet(5, 120), packet(5, 240)})),
            "[ASF]\n"
            "V 320x240 [C\x96\xB3MP43] 25.000fps 7.533kbps 9f\n"
            "A [C\x96\xB3"
            "0162] 44100Hz 2ch 24Bit 128.000kbps encrypted\n"
            "X [command]\n"
            "2.000",
            "ASF created=2016-02-15T08:53:20Z duration=2.000 bit_rate=4548\n"
            "video id=5 duration=2.000 bit_rate=7533 nominal_bit_rate=30000 bytes=226 frame_rate=25.000 frames=9 size=320:240 "
            "fps_ratio=25:1 codec=MS-MPEG4 v3 codec_id=MP43\n"
            "audio flags=96 id=6 duration=2.000 bit_rate=128000 sample_rate=44100 channels=2 codec=WMA Pro codec_id=0x0162\n"
            "data flags=64 id=7 duration=2.000 codec=command"},
        {"a packet that has not come yet", bare(2, data_object({packet(5, 0), packet(5, 40), Data(packet_size)})),
            "[ASF]\n"
            "V 320x240 [C\x96\xB3MP43] 25.000fps 30.000kbps\n"
            "A [C\x96\xB3"
            "0162] 44100Hz 2ch 24Bit 128.000kbps encrypted\n"
            "X [command]\n"
            "2.000",
            "ASF created=2016-02-15T08:53:20Z duration=2.000 bit_rate=4548\n"
            "video id=5 duration=2.000 bit_rate=30000 frame_rate=25.000 size=320:240 fps_ratio=25:1 codec=MS-MPEG4 v3 "
            "codec_id=MP43\n"
            "audio flags=32 id=6 duration=2.000 bit_rate=128000 sample_rate=44100 channels=2 codec=WMA Pro codec_id=0x0162\n"
            "data id=7 duration=2.000 codec=command"},
        {"live, all of it", bare(1, data_object({packet(5, 0), packet(5, 40), packet(5, 1000)})),
            "[ASF]\n"
            "V 320x240 [C\x96\xB3MP43] ~2.000fps 4.176kbps 3f\n"
            "A [C\x96\xB3"
            "0162] 44100Hz 2ch 24Bit 128.000kbps encrypted\n"
            "X [command]\n"
            "X live\n"
            "1.000",
            "ASF created=2016-02-15T08:53:20Z notes=live duration=1.000 bit_rate=9096\n"
            "video estimated=4 id=5 duration=1.000 bit_rate=4176 nominal_bit_rate=30000 bytes=522 frame_rate=2.000 frames=3 "
            "size=320:240 codec=MS-MPEG4 v3 codec_id=MP43\n"
            "audio flags=96 id=6 duration=1.000 bit_rate=128000 sample_rate=44100 channels=2 codec=WMA Pro codec_id=0x0162\n"
            "data flags=64 id=7 duration=1.000 codec=command"},
        {"broken off",
            join({header({file_properties(0, 0), video(5, "MP43")}), data_object({packet(5, 0), packet(5, 1000)}, 50)}),
            "[ASF]\nV 320x240 [C\x96\xB3MP43] ~1.000fps 2.784kbps 2f\n1.000",
            "ASF created=2016-02-15T08:53:20Z duration=1.000 bit_rate=5704\n"
            "video estimated=4 id=5 duration=1.000 bit_rate=2784 bytes=348 frame_rate=1.000 frames=2 size=320:240 "
            "codec=MS-MPEG4 v3 codec_id=MP43"},
        {"live, of unknown size", bare(1, data_object({packet(5, 0), packet(5, 40)}, 0)),
            "[ASF]\n"
            "V 320x240 [C\x96\xB3MP43] 25.000fps 30.000kbps\n"
            "A [C\x96\xB3"
            "0162] 44100Hz 2ch 24Bit 128.000kbps encrypted\n"
            "X [command]\n"
            "X live\n"
            "0.000",
            "ASF created=2016-02-15T08:53:20Z notes=live\n"
            "video id=5 bit_rate=30000 frame_rate=25.000 size=320:240 fps_ratio=25:1 codec=MS-MPEG4 v3 codec_id=MP43\n"
            "audio flags=32 id=6 bit_rate=128000 sample_rate=44100 channels=2 codec=WMA Pro codec_id=0x0162\n"
            "data id=7 codec=command"},
        {"live, of no size, its streams on different clocks",
            bare(1, data_object({packet(5, 0), packet(5, 1000), packet(6, 3'600'000)}, 50)),
            "[ASF]\n"
            "V 320x240 [C\x96\xB3MP43] ~1.000fps 2.784kbps 2f\n"
            "A [C\x96\xB3"
            "0162] 44100Hz 2ch 24Bit 128.000kbps encrypted\n"
            "X [command]\n"
            "X live\n"
            "1.000",
            "ASF created=2016-02-15T08:53:20Z notes=live duration=1.000 bit_rate=9096\n"
            "video estimated=4 id=5 duration=1.000 bit_rate=2784 nominal_bit_rate=30000 bytes=348 frame_rate=1.000 frames=2 "
            "size=320:240 codec=MS-MPEG4 v3 codec_id=MP43\n"
            "audio flags=32 id=6 duration=1.000 bit_rate=128000 bytes=174 sample_rate=44100 channels=2 codec=WMA Pro "
            "codec_id=0x0162\n"
            "data flags=64 id=7 duration=1.000 codec=command"},
        {"the rate of the part that is there",
            join({header({file_properties(3 * second, 4), video(1, "MP43")}), data_object({packet(1, 0), packet(1, 40)})}),
            "[ASF]\nV 320x240 [C\x96\xB3MP43] 25.000fps ~2.784kbps\n2.000",
            "ASF created=2016-02-15T08:53:20Z duration=2.000 bit_rate=2852\n"
            "video estimated=2 id=1 duration=2.000 bit_rate=2784 frame_rate=25.000 size=320:240 fps_ratio=25:1 codec=MS-MPEG4 v3 "
            "codec_id=MP43"},
        {"cut", bare(2, data_object({packet(5, 0)}, 50 + 600)),
            "[ASF]\n"
            "V 320x240 [C\x96\xB3MP43] 30.000kbps\n"
            "A [C\x96\xB3"
            "0162] 44100Hz 2ch 24Bit 128.000kbps encrypted\n"
            "X [command]\n"
            "X truncated(400 Byte missing)\n"
            "2.000",
            "ASF created=2016-02-15T08:53:20Z notes=truncated duration=2.000 bit_rate=4548 missing=400\n"
            "video id=5 duration=2.000 bit_rate=30000 size=320:240 codec=MS-MPEG4 v3 codec_id=MP43\n"
            "audio flags=32 id=6 duration=2.000 bit_rate=128000 sample_rate=44100 channels=2 codec=WMA Pro codec_id=0x0162\n"
            "data id=7 duration=2.000 codec=command"},
        {"no data", header({file_properties(second, 0), audio(1, 0x161)}),
            "[ASF]\n"
            "A [C\x96\xB3"
            "0161] 44100Hz 2ch 128.000kbps\n"
            "X no data\n"
            "0.000",
            "ASF created=2016-02-15T08:53:20Z notes=no data\n"
            "audio id=1 bit_rate=128000 sample_rate=44100 channels=2 codec=WMA2 codec_id=0x0161"},
        {"E-AC-3 by the name of AC-3, in an extensible format",
            join({header({file_properties(second, 1), audio(1, 0xFFFE,
                                                          ByteBuilder()
                                                              .le16(16)
                                                              .le32(3)
                                                              .le32(0x2000)
                                                              .raw({0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71})
                                                              .bytes)}),
                data_object({packet(1, 0, eac3_frame(0, 0, 64, 2, 0))})}),
            "[ASF]\nA [E-AC-3 2/0] 48000Hz 2ch 16.000kbps\n0.000",
            "ASF created=2016-02-15T08:53:20Z\n"
            "audio estimated=2 id=1 bit_rate=16000 nominal_bit_rate=128000 bytes=174 sample_rate=48000 channels=2 codec=E-AC-3 "
            "codec_id=0x2000 layout=L R"},
        {"sound that claims no rate",
            join(
                {header({file_properties(3 * second, 2), audio(1, 0x161, {}, 0)}), data_object({packet(1, 0), packet(1, 1000)})}),
            "[ASF]\nA [C\x96\xB3"
            "0161] 44100Hz 2ch 2.784kbps\n2.000",
            "ASF created=2016-02-15T08:53:20Z duration=2.000 bit_rate=2720\n"
            "audio id=1 duration=2.000 bit_rate=2784 bytes=348 sample_rate=44100 channels=2 codec=WMA2 codec_id=0x0161"},
        {"degradable JPEG",
            join({header({file_properties(second, 1),
                      stream_properties(guid(0x35907DE0, 0xE415), 1, ByteBuilder().le32(640).le32(480).bytes)}),
                data_object({packet(1, 0)})}),
            "[ASF]\nV 640x480 [JPEG]\n0.000", "ASF created=2016-02-15T08:53:20Z\nvideo id=1 size=640:480 codec=MJPEG"},
        {"neither a rate nor the tool's version",
            header({file_properties(second, 0), video(1, "MP43"),
                object(guid(0xD2D0A440, 0xE307), ByteBuilder().le16(1).append(attribute("WM/ToolName", 0, wide("Tool"))).bytes)}),
            "[ASF]\n"
            "V 320x240 [C\x96\xB3MP43]\n"
            "X no data\n"
            "I Tool\n"
            "0.000",
            "ASF writer=Tool created=2016-02-15T08:53:20Z notes=no data\n"
            "video id=1 size=320:240 codec=MS-MPEG4 v3 codec_id=MP43"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = info_of(row.bytes);
        EXPECT_EQ(std::string(record->label) + "\n" + record_text(*record), row.lines);
        EXPECT_EQ(details_text(*details_of(row.bytes)), row.details);
        expect_sound(*record);
    }
}

TEST(Asf, reports_the_scan_budget) {
    EXPECT_EQ(info_of(film())->scan_budget, 10'485'760U);
}

TEST(Asf, survives_every_length) {
    expect_sound_at_every_length(film(), 3);
    expect_sound_at_every_length(bare(1, data_object({mixed_packet(5, 0)})), 7);
}

} // namespace
} // namespace zat::test::asf_test
