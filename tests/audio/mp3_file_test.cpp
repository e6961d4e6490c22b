#include "audio/framed/mp3_file.h"

#include "audio/framed/rmp3_file.h"
#include "support/analysed.h"
#include "support/details_text.h"
#include "support/mpeg_audio_builder.h"
#include "support/riff_builder.h"

namespace zat::test::mp3_file_test {

using test::analysed;
using test::ByteBuilder;
using test::id3v1_tag;
using test::id3v2_tag;
using test::mpeg_frames;

constexpr const char* cbr_line = "MPEG1-LayerIII 44100Hz [CBR Stereo] 128.00kbps [417bpf] "; // of frames()
#define OTHER_TAG                                                                                                                \
    "\x91\xBC\x82\xCC"                                                                                                           \
    "tag"

ByteBuilder frames(int count) {
    return mpeg_frames(count);
}

const ByteBuilder id3v1 = id3v1_tag();

TEST(Mp3File, describes_stream_and_tags) {
    const auto file = [] { return ByteBuilder(); };
    const ByteBuilder ape = file().text("APETAGEX").pad_to(32);
    const ByteBuilder lyrics = file().fill(20).text("000020LYRICS200");
    const ByteBuilder xing = file().fill(36, 0x55).text("Xing").be32(3).be32(101).be32(52200);
    const struct {
        const char* name;
        ByteBuilder file;
        const char* audio; // null: not described
        const char* extra;
        double time;
    } rows[] = {
        {"padding behind ID3v2", id3v2_tag(30).append(frames(4).bytes).append(id3v1.bytes), cbr_line, "ID3v2(30Byte),ID3v1",
            1668 / 16000.0},
        {"tags of the end", frames(4).append(ape.bytes).append(ape.bytes).append(lyrics.bytes).append(id3v1.bytes), cbr_line,
            "ID3v1,ape,apetag,LYRICS3(35Byte)", (1668 + 32 + 35) / 16000.0},
        {"zeros before the stream", id3v2_tag(10).fill(5).append(frames(4).bytes), cbr_line,
            "ID3v2(10Byte)+," OTHER_TAG "(5Byte)", 1673 / 16000.0},
        {"the VBR header stands behind ID3v2, not in the frame found", ByteBuilder(xing).append(frames(4).bytes),
            "MPEG1-LayerIII 44100Hz [VBR Xing Stereo] 160.00kbps [417bpf/101f] ", OTHER_TAG "(52Byte)",
            1720 / (52200 * 8 / 100.0 * 44100 / 1151 / 8)},
        {"a rejected second header is hidden too: 417 + 3 bytes, then a frame",
            file().be32(0xFFFB9000).fill(413, 0xAA).raw({0xFF, 0xFB, 0x9C}).append(frames(3).bytes), cbr_line,
            OTHER_TAG "(837Byte)", (417 + 3 + 1251) / 16000.0},
        {"even without a syncword", file().raw({0x01, 0x1B, 0x90, 0x00}).fill(413, 0xAA), cbr_line, OTHER_TAG "(418Byte)",
            417 / 16000.0},
        {"free format", file().be32(0xFFFB0000).fill(97384, 0x55), "MPEG1-LayerIII 44100Hz [CBR Stereo] -1.00kbps [97388bpf] ",
            OTHER_TAG "(97389Byte)", -97388 / 125.0},
        {"free format in a short file", file().be32(0xFFFB0000).fill(97383, 0x55), nullptr, "", 0},
        {"a second header cut by the end counts", frames(1).raw({0xFF, 0xFB}), cbr_line, "", 419 / 16000.0},
        {"a frame far behind garbage", file().fill(300000, 0xFF).fill(70000, 0x55).append(frames(2).bytes), cbr_line,
            OTHER_TAG "(370000Byte)", 370834 / 16000.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = analysed(AnalyzeMp3File, row.file.bytes, FILETYPE_MP3);
        EXPECT_EQ(record->audio_count, row.audio != nullptr ? 1 : 0);
        EXPECT_STREQ(record->audio[0], row.audio != nullptr ? row.audio : "");
        EXPECT_STREQ(record->extra[0], row.extra);
        EXPECT_EQ(record->extra_count, *row.extra != '\0' ? 1 : 0);
        EXPECT_NEAR(record->play_time, row.time, 1e-9);
    }
}

TEST(Mp3File, tells_typed_details_by_counts_and_tags) {
    const ByteBuilder names = test::id3v2_text("TIT2", "Title").append(test::id3v2_text("TPE1", "Artist").bytes);
    // Of 101 frames, the first ones are there: what the header counts holds, and tells what is missing.
    const auto counted = [](const char* kind, uint32_t bytes) {
        return test::xing_frame(test::xing_header(kind, 3, 100, bytes, "LAME3.99r\x04")).append(frames(1).bytes);
    };
    const auto ape_end = [](uint32_t flags) {
        return ByteBuilder().text("APETAGEX").le32(2000).le32(99).le32(1).le32(flags).fill(8);
    };
    const std::pair<ByteBuilder, const char*> rows[] = {
        {id3v2_tag(100, names).append(counted("Xing", 52667).bytes).append(id3v1_tag("Other").bytes),
            "MPEG audio title=Title artist=Artist notes=truncated duration=2.612 bit_rate=161991 missing=51833\n"
            "audio mode=2 duration=2.612 bit_rate=160016 bytes=834 samples=115200 sample_rate=44100 channels=2 codec=MP3 "
            "encoder=LAME3.99r layout=L R"},
        {counted("Info", 42217).append(id3v1_tag("Other").bytes), // the rate of the other frames
            "MPEG audio title=Other notes=truncated duration=2.612 bit_rate=129682 missing=41383\n"
            "audio mode=1 duration=2.612 bit_rate=128000 bytes=834 samples=115200 sample_rate=44100 channels=2 codec=MP3 "
            "encoder=LAME3.99r layout=L R"},
        // Two frames of 128 kbit/s and two of 64, which no header counts.
        {frames(2).be32(0xFFFB5000).fill(204).be32(0xFFFB5000).fill(204),
            "MPEG audio duration=0.104 bit_rate=95703\n"
            "audio mode=2 duration=0.104 bit_rate=95703 bytes=1250 samples=4608 sample_rate=44100 channels=2 codec=MP3 layout=L "
            "R"},
        {frames(4).text("APETAGEX").le32(2000).le32(32 + 16).le32(1).le32(0).fill(8), // an APE tag of 48 bytes
            "MPEG audio duration=0.103 bit_rate=131719 estimated=3\n"
            "audio estimated=1 duration=0.103 bit_rate=128000 bytes=1652 sample_rate=44100 channels=2 codec=MP3 layout=L R"},
        // An APE tag of 131 bytes: the letters of ID3v1 stand 128 bytes before the end.
        {frames(4)
                .append(ape_end(0xA0000000).bytes)
                .le32(52)
                .le32(0)
                .text("Artist")
                .u8(0)
                .fill(52, 'a')
                .append(ape_end(0x80000000).bytes),
            "MPEG audio artist=aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa duration=0.104 bit_rate=138053 estimated=3\n"
            "audio estimated=1 duration=0.104 bit_rate=128000 bytes=1668 sample_rate=44100 channels=2 codec=MP3 layout=L R"},
    };
    for (const auto& [file, expected] : rows) {
        EXPECT_EQ(test::details_text(*test::details_of(file.bytes)), expected);
    }
}

TEST(Mp3File, notes_shockwave_behind_its_length_prefix) {
    const auto record = analysed(AnalyzeMp3File, ByteBuilder().be32(0x1234).append(frames(2).bytes).bytes, FILETYPE_SHOCKWAVEMP3);
    EXPECT_EQ(record->extra_count, 2);
    EXPECT_STREQ(record->extra[0], OTHER_TAG "(4Byte)");
    EXPECT_STREQ(record->extra[1], "ShockWave MP3");
}

ByteBuilder chunk(const char* id, const ByteBuilder& content) {
    return ByteBuilder().append(test::riff_chunk(id, content.bytes));
}

ByteBuilder riff(std::initializer_list<ByteBuilder> chunks) {
    ByteBuilder file = ByteBuilder().text("RIFF").le32(0).text("RMP3");
    for (const ByteBuilder& part : chunks) {
        file.append(part.bytes);
    }
    return file;
}

TEST(Rmp3File, walks_the_chunks) {
    const ByteBuilder odd = chunk("odd ", ByteBuilder().fill(3));
    const ByteBuilder list = chunk("LIST", ByteBuilder().text("INFO"));
    const ByteBuilder data = chunk("data", frames(2));
    const struct {
        const char* name;
        ByteBuilder file;
        const char* audio; // null: not described
        const char* extra;
        int bytes_per_second;
    } rows[] = {
        {"notes", riff({list, odd, list, data, ByteBuilder().text("TAG").fill(125)}), cbr_line, "SI(INFOTAG),+SI(INFOTAG),ID3v1",
            16000},
        {"a header that does not decode", riff({chunk("data", ByteBuilder().be32(0xFFFB9C00))}),
            "MPEG1-LayerIII -1Hz [CBR] 0.00kbps [0bpf] ", "", 0},
        {"two bytes of a header", riff({chunk("data", ByteBuilder().raw({0xFF, 0xE1}))}),
            "MPEG2.5-LayerIII 11025Hz [CBR Stereo] 0.00kbps [0bpf] ", "", 0},
        {"a frame cut short", riff({chunk("data", frames(1).put(0, "\xFF\xFB\xE0"))}), nullptr, "", 0},
        {"a chunk header cut short", riff({data, ByteBuilder().text("LIST").fill(3)}), nullptr, "", 0},
        {"a size beyond the file", riff({data, ByteBuilder().text("junk").le32(UINT32_MAX)}), cbr_line, "", 16000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = analysed(AnalyzeRmp3File, row.file.bytes, FILETYPE_RMP3);
        const int count = row.audio != nullptr ? 1 : 0;
        EXPECT_EQ(record->audio_count, count);
        EXPECT_STREQ(record->audio[0], row.audio != nullptr ? row.audio : "");
        EXPECT_EQ(record->extra_count, count);
        EXPECT_STREQ(record->extra[0], row.extra);
        EXPECT_STREQ(record->label, row.audio != nullptr ? "RIFF(RMP3)" : "");
        const auto size = static_cast<double>(row.file.bytes.size());
        EXPECT_EQ(record->play_time, row.bytes_per_second != 0 ? size / row.bytes_per_second : 0);
    }
}

TEST(Rmp3File, tells_typed_details) {
    const ByteBuilder info = ByteBuilder().text("INFO").append(chunk("INAM", ByteBuilder().text("Name")).bytes);
    EXPECT_EQ(
        test::details_text(*test::details_of(riff({chunk("LIST", info), chunk("data", frames(4)), id3v1_tag("Other")}).bytes)),
        "RMP3 title=Name duration=0.104 bit_rate=141199 estimated=3\n"
        "audio estimated=1 duration=0.104 bit_rate=128000 bytes=1668 sample_rate=44100 channels=2 codec=MP3 layout=L R");
}

TEST(Mp3File, keeps_the_record_sound_at_every_length) {
    ByteBuilder stream; // two frames of 72 bytes, the first with the start of a Xing header
    stream.be32(0xFFE318C4).pad_to(13).text("Xing").be32(3).be32(9).be32(99).pad_to(72);
    stream.be32(0xFFE318C4).pad_to(144);
    const auto mp3 = id3v2_tag(30).append(stream.bytes).append(id3v1.bytes).bytes;
    const auto rmp3 = riff({chunk("LIST", {}), chunk("data", stream), chunk("tag ", id3v1)}).bytes;
    test::expect_sound_when_cut(AnalyzeMp3File, mp3, FILETYPE_MP3);
    test::expect_sound_when_cut(AnalyzeRmp3File, rmp3, FILETYPE_RMP3);
}

} // namespace zat::test::mp3_file_test
