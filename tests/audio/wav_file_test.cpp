#include "audio/sound/wav_file.h"

#include "common/catalogue/catalogue_directory.h"
#include "support/analysed.h"
#include "support/byte_builder.h"
#include "support/details_text.h"
#include "support/dispatched.h"

#include <fstream>

namespace zat::test::wav_file_test {

namespace {

// A chunk whose announced size may lie.
Data chunk(std::string_view id, const Data& payload, int64_t size = -1) {
    return ByteBuilder().text(id).le32(size < 0 ? payload.size() : static_cast<uint64_t>(size)).append(payload).bytes;
}

Data chunk(std::string_view id, std::string_view payload, int64_t size = -1) {
    return chunk(id, ByteBuilder().text(payload).bytes, size);
}

struct Format {
    uint32_t tag = 1, channels = 2, rate = 44100, byte_rate = 176400, align = 4, bits = 16;
};

Data fmt(const Format& format, const Data& extension = {}, int64_t size = -1) {
    auto out = ByteBuilder().le16(format.tag).le16(format.channels).le32(format.rate);
    return chunk("fmt ", out.le32(format.byte_rate).le16(format.align).le16(format.bits).append(extension).bytes, size);
}

// cbSize, valid bits, mask and the GUID of PCM.
Data extension(uint32_t mask) {
    return ByteBuilder().le16(22).le16(24).le32(mask).raw({1, 0, 0, 0, 0, 0, 16, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}).bytes;
}

Data wave(const std::vector<Data>& chunks) {
    ByteBuilder builder;
    builder.text("RIFF").le32(0).text("WAVE");
    for (const Data& bytes : chunks) {
        builder.append(bytes);
    }
    return builder.bytes;
}

Data data(size_t size) {
    return chunk("data", Data(size, 1));
}

// There is no catalogue: the name of a codec is "C", one character, and the key.
std::unique_ptr<InfoRecord> analyse(const Data& bytes) {
    set_catalogue_directory("no catalogue/");
    auto record = analysed(AnalyzeWavFile, bytes);
    set_catalogue_directory("");
    return record;
}

// The first frame of a stream: MPEG-1 Layer III, 128 kbit/s, 44100 Hz, stereo.
Data mpeg_frame(std::string_view kind = "", uint32_t flags = 0, uint32_t frames = 0) {
    auto out = ByteBuilder().be32(0xFFFB9000).pad_to(36).text(kind);
    return out.be32(flags).be32(frames).be32(100000).pad_to(417).bytes;
}

// A core frame header: 48000 Hz, 3/2 channels and LFE, 1536 kbit/s, 24 bits.
Data dts_frame() {
    BitBuilder bits;
    bits.bits(0x7FFE8001, 32).bits(1, 1).bits(31, 5).bits(0, 1).bits(15, 7).bits(2012, 14);
    bits.bits(9, 6).bits(13, 4).bits(24, 5).bits(0, 10).bits(1, 2).bits(0, 8).bits(6, 3);
    return ByteBuilder().append(bits.bytes).pad_to(400).bytes;
}

const Format mp3 = {0x55, 2, 44100, 16000, 1, 0};
const Format pcm_8_channels = {1, 8, 48000, 768000, 16, 16};
const Format mu_law = {7, 1, 8000, 8000, 1, 8};

// The line of a codec that the catalogue does not name.
std::string unnamed(const char* key_and_rest) {
    return std::string("[C\x96\xB3") + key_and_rest;
}

const std::string plain_line = unnamed("0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:16Byte]");

struct Row {
    const char* name;
    Data bytes;
    std::string audio;
    double play_time;
    const char* chain = "[fmt ][data]";
    const char* label = "[RIFF(WAVE)]";
};

const Row rows[] = {
    {"plain PCM", wave({fmt({}), data(176400)}), plain_line, 1},
    {"an extension of one byte", wave({fmt({}, {5}), data(4)}), unnamed("0001] 44100Hz 2ch() 1411.20kbps 16Bit [fmt:17Byte]"),
        1 / 44100.0},
    {"the extension keeps the label, the speakers end with a whole name",
        wave({fmt(pcm_8_channels, extension(0xFFFFFFFF)), data(16)}),
        unnamed(
            "0001] 48000Hz 8ch(L+R+C+LFE+SL+SR+FL-C+FR-C+B-C+Side-L+Side-R+T-C+TF-L+TF-C+TF-R) 6144.00kbps 16Bit [fmt:40Byte]"),
        1 / 48000.0},
    {"only nine speakers have names", wave({fmt({1, 65535, 48000, 4294967295, 65535, 8}), data(65535)}),
        unnamed("0001] 48000Hz 65535ch(L+R+C+LFE+BL+BR+FL-C+FR-C+B-C) 34359738.36kbps 8Bit [fmt:16Byte]"), 1 / 48000.0,
        "[fmt ][data]", "[RIFF(WAVE-EXT)]"},
    {"an extensible format is named by GUID", wave({fmt({0xFFFE, 2, 48000, 288000, 6, 24}, extension(0x33)), data(288000)}),
        unnamed("00000001-0000-0010-8000-00AA00389B71] 48000Hz 2ch 2304.00kbps 24Bit [fmt:40Byte]"), 1},
    {"a later fmt and data replace all of the earlier ones",
        wave({fmt({0xFFFE, 2}, extension(3)), fmt({}, extension(3)), fmt(mu_law), data(9), data(4000)}),
        unnamed("0007] 8000Hz 1ch 64.00kbps 8Bit [fmt:16Byte]"), 0.5, "[fmt ][fmt ][fmt ][data][data]"},
    {"a short fmt reads as zeros", wave({chunk("fmt ", Data{1, 0, 2, 0}), data(4)}),
        unnamed("0001] 0Hz 2ch 0.00kbps 0Bit [fmt:4Byte]"), 0},
    {"an fmt of 4 GiB", wave({fmt({}, {}, 0xFFFFFFFF), data(4)}), unnamed("0001] 44100Hz 2ch(C) 1411.20kbps 16Bit [fmt:-1Byte]"),
        0, "[fmt ]"},
    {"zeros between chunks, and lists",
        wave({chunk("LIST", "INFOx"), {0}, fmt({}), {0, 0, 0}, chunk("LIST", "adtl"), data(4), {0}}), plain_line, 1 / 44100.0,
        "[LIST(INFOTAG)]+[fmt ]+[LIST(INFOTAG)][data]"},
    {"an id ends at its zero byte, the chain at 63 characters",
        wave({fmt({}), chunk(std::string_view("a\0bc", 4), ""), data(4), chunk("LIST", "x"), chunk("LIST", "x"),
            chunk("LIST", "x"), chunk("last", "x"), chunk("more", "x")}),
        plain_line, 1 / 44100.0, "[fmt ][a][data][LIST(INFOTAG)][LIST(INFOTAG)][LIST(INFOTAG)][la"},
    {"the first description that is not empty",
        wave({chunk("fact", Data{0, 'B'}), chunk("bext", "BWF"), chunk("fact", "lossyWAV"), fmt({}), data(4)}), plain_line,
        1 / 44100.0, "[fact][bext][fact][fmt ][data]", "[RIFF(WAVE-BWF)]"},
    {"MPEG audio", wave({fmt(mp3, Data(14)), chunk("data", mpeg_frame())}),
        "MPEG1-LayerIII 44100Hz [CBR Stereo] 128.00kbps [417bpf] ", static_cast<double>(417.0F / 16000.0F)},
    {"an unusable Xing header keeps the plain line", wave({fmt(mp3), chunk("data", mpeg_frame("Xing", 1, 0))}),
        unnamed("0055] 44100Hz 2ch 128.00kbps 0Bit [fmt:16Byte]"), 417 / 16000.0},
    {"DTS far behind the file's start", wave({fmt({}), chunk("junk", Data(2000000, 1)), chunk("data", dts_frame())}),
        "DTS(16BitBE) 48000Hz 5.1Ch C+L+R+SL+SR+LFE 1536.000kbps 24Bit", 100 / 44100.0, "[fmt ][junk][data]"},
    {"many channels replace a DTS line", wave({fmt({1, 3, 44100, 176400, 4, 16}), chunk("data", dts_frame())}),
        unnamed("0001] 44100Hz 3ch(L+R+C) 1411.20kbps 16Bit [fmt:16Byte]"), 100 / 44100.0, "[fmt ][data]", "[RIFF(WAVE-EXT)]"},
    {"no RIFF file", ByteBuilder().text("RIFX").fill(40, 1).bytes, unnamed("0000] 0Hz 0ch 0.00kbps 0Bit [fmt:0Byte]"), 0, ""},
};

// "ds64": the sizes of "data" and of one other chunk.
Data sizes(uint64_t data, uint64_t samples, std::string_view id, uint64_t size) {
    return chunk("ds64", ByteBuilder().le64(0).le64(data).le64(samples).le32(1).text(id).le64(size).bytes);
}

Data guid(std::string_view id, bool is_riff = false) {
    static const Data tails[] = {bytes_of_hex("F3ACD311 8CD100C0 4F8EDB8A"), bytes_of_hex("2E91CF11 A5D628DB 04C10000")};
    return ByteBuilder().text(id).append(tails[is_riff ? 1 : 0]).bytes;
}

// With its padding to eight bytes.
Data guid_chunk(std::string_view id, const Data& payload, int64_t size = -1) {
    const uint64_t told = size < 0 ? payload.size() + 24 : static_cast<uint64_t>(size);
    auto out = ByteBuilder().append(guid(id)).le64(told).append(payload);
    return out.pad_to((out.bytes.size() + 7) / 8 * 8, 0xEE).bytes;
}

Data wave64(const std::vector<Data>& chunks) {
    ByteBuilder builder;
    builder.append(guid("riff", true)).le64(0).append(guid("wave"));
    for (const Data& bytes : chunks) {
        builder.append(bytes);
    }
    return builder.bytes;
}

} // namespace

TEST(WavFile, describes_what_the_chunks_say) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = analyse(row.bytes);
        EXPECT_STREQ(record->label, row.label);
        EXPECT_EQ(record->audio[0], row.audio);
        EXPECT_EQ(record->audio_count, 1);
        EXPECT_STREQ(record->extra[0], row.chain);
        EXPECT_EQ(record->extra_count, 1);
        EXPECT_EQ(record->play_time, row.play_time);
        EXPECT_STREQ(record->extra_info, "");
    }
}

TEST(WavFile, tells_typed_details) {
    const Data info = chunk("LIST", ByteBuilder().text("INFO").append(chunk("INAM", "Name")).append(chunk("ISFT", "Tool")).bytes);
    const Format valid_20_of_24 = {0xFFFE, 2, 48000, 288000, 6, 24};
    Data valid_bits = extension(0x3);
    valid_bits[2] = 20;
    const struct {
        const char* name;
        Data bytes;
        const char* expected;
    } files[] = {
        {"Broadcast Wave of 20 bits in 24, cut",
            wave({chunk("bext", "x"), {0}, fmt(valid_20_of_24, valid_bits), info, chunk("data", "cut", 288000)}),
            "WAV profile=BWF title=Name writer=Tool notes=truncated duration=1.000 bit_rate=2304912 missing=287997\n"
            "audio mode=1 duration=1.000 bit_rate=2304000 bytes=3 samples=48000 sample_rate=48000 channels=2 bit_depth=20 "
            "codec=PCM codec_id=0x0001 profile=signed 24 LE layout=L R"},
        {"a size that was never filled in, a wrong alignment",
            wave({fmt({1, 1, 8000, 8000, 4, 8}), chunk("data", "12345678", 0xFFFFFFFF)}),
            "WAV duration=0.001 bit_rate=416000\n"
            "audio mode=1 duration=0.001 bit_rate=64000 bytes=8 samples=8 sample_rate=8000 channels=1 bit_depth=8 codec=PCM "
            "codec_id=0x0001 profile=unsigned 8 layout=C"},
        {"sizes that were not filled in, of RIFF and of the sound",
            ByteBuilder{wave({fmt({1, 1, 8000, 8000, 1, 8}), chunk("data", "12345678", 0)})}
                .put(4, std::string_view("\0\0\0", 3))
                .bytes,
            "WAV duration=0.001 bit_rate=416000\n"
            "audio mode=1 duration=0.001 bit_rate=64000 bytes=8 samples=8 sample_rate=8000 channels=1 bit_depth=8 codec=PCM "
            "codec_id=0x0001 profile=unsigned 8 layout=C"},
        {"nor anything written", wave({fmt({1, 1, 8000, 8000, 1, 8}), chunk("data", "", 0xFFFFFFFF)}),
            "WAV\n"
            "audio mode=1 bit_rate=64000 sample_rate=8000 channels=1 bit_depth=8 codec=PCM codec_id=0x0001 profile=unsigned 8 "
            "layout=C"},
        {"figures that nothing has", wave({fmt({0x50, 255, 10000000, 1000, 1, 0}), chunk("data", Data(100))}),
            "WAV duration=0.100 bit_rate=11520 estimated=3\n"
            "audio estimated=1 duration=0.100 bit_rate=8000 bytes=100 codec=MP2 codec_id=0x0050"},
        {"samples by the fact chunk",
            wave({fmt({0x11, 2, 8000, 8110, 256, 4}), chunk("fact", Data{0x40, 0x1F, 0, 0}), data(8192)}),
            "WAV duration=1.000 bit_rate=65984\n"
            "audio duration=1.000 bit_rate=64880 bytes=8192 samples=8000 sample_rate=8000 channels=2 codec=ADPCM codec_id=0x0011 "
            "profile=IMA layout=L R"},
        {"but not by one of fewer than half the blocks' samples",
            wave({fmt({0x11, 2, 8000, 8110, 256, 4}, {2, 0, 0xF9, 0}), chunk("fact", Data{0x7C, 0x0F, 0, 0}), data(8192)}),
            "WAV duration=0.996 bit_rate=66281\n"
            "audio duration=0.996 bit_rate=64880 bytes=8192 samples=7968 sample_rate=8000 channels=2 codec=ADPCM codec_id=0x0011 "
            "profile=IMA layout=L R"},
        {"MPEG audio", wave({fmt(mp3), chunk("data", mpeg_frame("Info", 1, 100))}),
            "WAV duration=2.612 bit_rate=1412\n"
            "audio mode=1 duration=2.612 bit_rate=128000 bytes=417 samples=115200 sample_rate=44100 channels=2 codec=MP3 "
            "codec_id=0x0055 layout=L R"},
        {"DTS at the speed of PCM", wave({fmt({}), chunk("data", dts_frame())}),
            "WAV duration=0.002 bit_rate=1566432\n"
            "audio mode=1 duration=0.002 bit_rate=1536000 bytes=400 sample_rate=48000 channels=6 codec=DTS codec_id=0x0001 "
            "layout=L R C LFE Ls Rs"},
    };
    for (const auto& row : files) {
        EXPECT_EQ(details_text(*details_of(row.bytes)), row.expected) << row.name;
    }
}

TEST(WavFile, takes_sizes_of_64_bits) {
    constexpr int64_t elsewhere = 0xFFFFFFFF;
    const Data format = fmt({});
    const Data plain_format(format.begin() + 8, format.end());
    const Data adpcm = fmt({0x11, 2, 8000, 8110, 256, 4});
    const auto with_id = [](std::string_view id, const Data& bytes) { return ByteBuilder().append(bytes).put(0, id).bytes; };
    const struct {
        const char* name;
        Data bytes;
        const char* label;
        const char* expected;
    } files[] = {
        {"a cut file of 5 GB, another chunk's size in the table",
            with_id("RF64", wave({sizes(5'000'000'000, 0, "junk", 4), format, chunk("junk", {1, 2, 3, 4}, elsewhere),
                                chunk("data", {1, 2}, elsewhere)})),
            "[RIFF64(WAVE)]",
            "A [C\x96\xB3"
            "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:16Byte]\n"
            "X [ds64][fmt ][junk][data]\n"
            "28344.671\n"
            "WAV profile=RF64 notes=truncated duration=28344.671 missing=4999999998\n"
            "audio mode=1 duration=28344.671 bit_rate=1411200 bytes=2 samples=1250000000 sample_rate=44100 channels=2 "
            "bit_depth=16 codec=PCM codec_id=0x0001 profile=signed 16 LE layout=L R"},
        {"no sizes: all there is", with_id("BW64", wave({format, chunk("data", Data(176400, 1), elsewhere)})), "[RIFF64(WAVE)]",
            "A [C\x96\xB3"
            "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:16Byte]\n"
            "X [fmt ][data]\n"
            "1.000\n"
            "WAV profile=BW64 duration=1.000\n"
            "audio mode=1 duration=1.000 bit_rate=1411200 bytes=176400 samples=44100 sample_rate=44100 channels=2 bit_depth=16 "
            "codec=PCM codec_id=0x0001 profile=signed 16 LE layout=L R"},
        {"samples of ds64; sizes of 32 bits stand",
            with_id("RF64", wave({sizes(99, 8000, "x   ", 0), adpcm, chunk("fact", Data(4, 0xFF)), data(8192)})),
            "[RIFF64(WAVE)]",
            "A [C\x96\xB3"
            "0011] 8000Hz 2ch 64.88kbps 4Bit [fmt:16Byte]\n"
            "X [ds64][fmt ][fact][data]\n"
            "1.010\n"
            "WAV profile=RF64 duration=1.000\n"
            "audio duration=1.000 bit_rate=64880 bytes=8192 samples=8000 sample_rate=8000 channels=2 codec=ADPCM codec_id=0x0011 "
            "profile=IMA layout=L R"},
        {"Wave64, other GUIDs, padding that is not zeros",
            wave64({guid_chunk("levl", {1}), guid_chunk("\x01xyz", {1}), guid_chunk("fmt ", plain_format),
                guid_chunk("fact", ByteBuilder().le64(44100).bytes), guid_chunk("data", Data(176400, 1))}),
            "[Wave64]",
            "A [C\x96\xB3"
            "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:16Byte]\n"
            "X [levl]+[GUID]+[fmt ][fact][data]\n"
            "1.000\n"
            "Wave64 duration=1.000\n"
            "audio mode=1 duration=1.000 bit_rate=1411200 bytes=176400 samples=44100 sample_rate=44100 channels=2 bit_depth=16 "
            "codec=PCM codec_id=0x0001 profile=signed 16 LE layout=L R"},
        {"Wave64, cut", wave64({guid_chunk("fmt ", plain_format), guid_chunk("data", {1}, 24 + 176400)}), "[Wave64]",
            "A [C\x96\xB3"
            "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:16Byte]\n"
            "X [fmt ][data]\n"
            "1.000\n"
            "Wave64 notes=truncated duration=1.000 missing=176392\n"
            "audio mode=1 duration=1.000 bit_rate=1411200 bytes=8 samples=44100 sample_rate=44100 channels=2 bit_depth=16 "
            "codec=PCM codec_id=0x0001 profile=signed 16 LE layout=L R"},
        {"a chunk smaller than its header ends the walk",
            wave64({guid_chunk("fmt ", plain_format), guid_chunk("junk", {}, 23), guid_chunk("data", {1})}), "[Wave64]",
            "A [C\x96\xB3"
            "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:16Byte]\n"
            "X [fmt ]\n"
            "0.000\n"
            "Wave64\n"
            "audio mode=1 bit_rate=1411200 sample_rate=44100 channels=2 bit_depth=16 codec=PCM codec_id=0x0001 profile=signed 16 "
            "LE layout=L R"},
        {"a chunk of 2^63 bytes", wave64({guid_chunk("fmt ", plain_format), guid_chunk("data", {1}, INT64_MAX)}), "[Wave64]",
            "A [C\x96\xB3"
            "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:16Byte]\n"
            "X [fmt ][data]\n"
            "0.000\n"
            "Wave64 duration=0.000\n"
            "audio mode=1 duration=0.000 bit_rate=1411200 bytes=8 samples=2 sample_rate=44100 channels=2 bit_depth=16 codec=PCM "
            "codec_id=0x0001 profile=signed 16 LE layout=L R"},
    };
    for (const auto& row : files) {
        const auto result = dispatched(101, row.bytes);
        EXPECT_STREQ(result->record.label, row.label) << row.name;
        EXPECT_EQ(result->text(), row.expected) << row.name;
        expect_sound_at_every_length(
            {row.bytes.begin(), row.bytes.begin() + std::min<std::ptrdiff_t>(200, std::ssize(row.bytes))});
    }
}

TEST(WavFile, quotes_lossy_wav) {
    const struct {
        const char* text;
        const char* label;
        const char* extra_info;
    } cases[] = {
        {"lossyWAV 1.3.0 : -q 5 -cbs 512 -x", "[RIFF(lossyWAV(512))]", "lossyWAV 1.3.0 "},
        {"lossyWA:", "[RIFF(lossyWAV())]", "lossyWA"},
        {"lossyWAV -cbs 12345678901234567890", "[RIFF(lossyWAV(1234567890123456", "lossyWAV -cbs 12345678901234567890"},
        {"lossyW", "[RIFF(WAVE)]", ""},
    };
    for (const auto& row : cases) {
        const auto record = analyse(wave({fmt({}), chunk("fact", row.text), data(4)}));
        EXPECT_STREQ(record->label, row.label);
        EXPECT_STREQ(record->extra_info, row.extra_info);
    }
    const std::string longest = "lossyWAV" + std::string(247, 'x') + "yz";
    EXPECT_EQ(analyse(wave({chunk("fact", longest)}))->extra_info, longest.substr(0, 255));
}

// A sparse file with bytes behind the 2 GB that the data chunk fills.
TEST(WavFile, estimates_the_play_time_beyond_2_gb) {
    const struct {
        Format format;
        int32_t extra_count;
        const char* note;
    } cases[] = {
        {{}, 2,
            "2GB\x92\xB4\x8B\x4B\x8A\x69\x8A\x4Fwav \x8A\x54\x8E\x5A\x8D\xC4\x90\xB6\x8E\x9E\x8A"
            "\xD4[3:22:53.943]"},
        {{0x55, 2, 0, 0, 4, 0}, 3,
            "2GB\x92\xB4\x8B\x4B\x8A\x69\x8A\x4FwavnAvgBytesPerSec\x82\xAA"
            "0\x82\xC8\x82\xCC\x82\xC5\x81\x41\x8D\xC4\x90\xB6\x8E\x9E\x8A\xD4\x82\xCD\x8A\x53\x8E"
            "\x5A\x82\xC5\x82\xB7"},
    };
    for (const auto& row : cases) {
        const TempFile file(wave({fmt(row.format), chunk("data", "", 0x7FFFFFF0)}));
        std::ofstream(file.path, std::ios::binary | std::ios::in).seekp(44 + 0x7FFFFFF0LL).write("more", 4);
        const auto record = info_of_path(file.path);
        expect_sound(*record);
        EXPECT_EQ(record->extra_count, row.extra_count);
        EXPECT_STREQ(record->extra[1], row.note);
        EXPECT_STREQ(record->extra[0], "[fmt ][data]");
    }
}

TEST(WavFile, is_sound_at_every_length) {
    const Data whole = wave({chunk("bext", "BWF"), {0}, fmt(mp3, extension(63)), chunk("data", mpeg_frame("Xing", 3, 100))});
    expect_sound_when_cut(AnalyzeWavFile, whole);
}

// A read or a text for each of them would take seconds.
TEST(WavFile, walks_a_million_tiny_chunks) {
    const Data tiny = chunk("fmt ", Data{1, 0, 2, 0});
    ByteBuilder builder;
    builder.append(wave({fmt({})}));
    for (int i = 0; i < 1000000; ++i) {
        builder.append(tiny);
    }
    EXPECT_EQ(analyse(builder.append(data(8)).bytes)->audio[0], unnamed("0001] 0Hz 2ch 0.00kbps 0Bit [fmt:4Byte]"));
}

} // namespace zat::test::wav_file_test
