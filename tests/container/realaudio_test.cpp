#include "support/byte_builder.h"
#include "support/dispatched.h"

namespace zat::test::realaudio_test {

namespace {

// Title, author, copyright and comment, each behind its length.
Data texts(std::string_view title, std::string_view author) {
    return ByteBuilder().u8(title.size()).text(title).u8(author.size()).text(author).be16(0).bytes;
}

Data version3(const Data& texts, uint64_t data_size, size_t present) {
    auto out = ByteBuilder().text(".ra\xFD").be16(3).be16(14 + texts.size() + 6).fill(8).be16(60000).be32(data_size);
    return out.append(texts).u8(0).u8(4).text("lpcJ").fill(present, 1).bytes;
}

// Of 22050 Hz, two channels, 32 kbit/s, with a sound of 4000 bytes.
Data version4or5(int version, std::string_view codec, size_t present, uint64_t rate = 22050) {
    const Data names = texts("Title", "\x83\x65\x83\x58\x83\x67");
    ByteBuilder out;
    out.text(".ra\xFD").be16(static_cast<uint64_t>(version)).be16(0).text(version == 4 ? ".ra4" : ".ra5").be32(4000 + 60);
    out.be16(0).be32((version == 4 ? 69 : 73) + names.size() - 16).be16(0).be32(0).be32(4000).be32(240000).fill(10);
    out.fill(version == 4 ? 0 : 2).be32(rate).fill(version == 4 ? 0 : 4).be32(16).be16(2);
    if (version == 4) {
        out.u8(4).text("genr").u8(4).text(codec);
    } else {
        out.text("genr").text(codec);
    }
    return out.fill(3).append(names).fill(present, 1).bytes;
}

} // namespace

TEST(RealAudio, describes_every_version) {
    constexpr const char* eight_seconds =
        "A [C\x96\xB3"
        "14_4] 8000Hz 16bit 1ch 8.000kbps\n"
        "I B - A\n"
        "8.000\n"
        "RealAudio title=A artist=B duration=8.000\n"
        "audio duration=8.000 bit_rate=8000 bytes=8000 sample_rate=8000 channels=1 codec=RealAudio 14.4 codec_id=14_4";
    const Data version_3 = version3(texts("A", "B"), 8000, 8000);
    const struct {
        const char* name;
        Data bytes;
        const char* expected;
    } rows[] = {
        {"version 3", version_3, eight_seconds},
        {"version 4", version4or5(4, "cook", 4000),
            "A [C\x96\xB3"
            "cook] 22050Hz 16bit 2ch 32.000kbps\n"
            "I \x83"
            "e\x83X\x83g - Title\n"
            "1.000\n"
            "RealAudio title=Title artist=\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88 duration=1.000\n"
            "audio duration=1.000 bit_rate=32000 bytes=4000 sample_rate=22050 channels=2 codec=RealAudio Cook codec_id=cook"},
        {"version 5, cut", version4or5(5, "xxxx", 1000),
            "A [C\x96\xB3xxxx] 22050Hz 16bit 2ch 32.000kbps\n"
            "X truncated(3,000 Byte missing)\n"
            "I \x83"
            "e\x83X\x83g - Title\n"
            "1.000\n"
            "RealAudio title=Title artist=\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88 notes=truncated duration=1.000 missing=3000\n"
            "audio duration=1.000 bit_rate=32000 bytes=1000 sample_rate=22050 channels=2 codec=xxxx codec_id=xxxx"},
        {"an impossible rate", version4or5(4, "28_8", 4000, 0xFFFFFFFF),
            "A [C\x96\xB3"
            "28_8] 16bit 2ch 32.000kbps\n"
            "I \x83"
            "e\x83X\x83g - Title\n"
            "1.000\n"
            "RealAudio title=Title artist=\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88 duration=1.000\n"
            "audio duration=1.000 bit_rate=32000 bytes=4000 channels=2 codec=RealAudio 28.8 codec_id=28_8"},
        {"another version", ByteBuilder().text(".ra\xFD").be16(6).fill(100).bytes,
            "0.000\n"
            "RealAudio"},
        {"cut header", ByteBuilder().text(".ra\xFD").be16(4).bytes,
            "0.000\n"
            "RealAudio"},
        {"cut in the header", Data(version_3.begin(), version_3.begin() + 26),
            "A [C\x96\xB3"
            "14_4] 8000Hz 16bit 1ch 8.000kbps\n"
            "X truncated(8,008 Byte missing)\n"
            "I B - A\n"
            "8.000\n"
            "RealAudio title=A artist=B notes=truncated duration=8.000 missing=8008\n"
            "audio duration=8.000 bit_rate=8000 sample_rate=8000 channels=1 codec=RealAudio 14.4 codec_id=14_4"},
        {"a tag behind the sound", version3(texts("A", "B"), 8000, 8128), eight_seconds},
    };
    for (const auto& row : rows) {
        const auto result = dispatched(119, row.bytes);
        EXPECT_STREQ(result->record.label, "[Real Audio]");
        EXPECT_EQ(result->text(), row.expected) << row.name;
    }
}

TEST(RealAudio, is_sound_at_every_length) {
    expect_sound_when_cut(119, version3(texts("A", "B"), 10, 10));
    expect_sound_when_cut(119, version4or5(5, "cook", 4));
}

} // namespace zat::test::realaudio_test
