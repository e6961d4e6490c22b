#include "audio/wav_file.h"

#include "common/catalogue_directory.h"
#include "common/text.h"
#include "support/byte_builder.h"
#include "support/temp_file.h"

#include <fstream>
#include <gtest/gtest.h>

namespace zat::test {

namespace {

using Buffer = std::vector<uint8_t>;

// A chunk whose announced size may lie.
Buffer chunk(std::string_view id, const Buffer& payload, int64_t size = -1) {
    return ByteBuilder().text(id).le32(size < 0 ? payload.size() : static_cast<uint64_t>(size)).append(payload).bytes;
}

Buffer chunk(std::string_view id, std::string_view payload, int64_t size = -1) {
    return chunk(id, ByteBuilder().text(payload).bytes, size);
}

struct Format {
    uint32_t tag = 1;
    uint32_t channels = 2;
    uint32_t rate = 44100;
    uint32_t byte_rate = 176400;
    uint32_t align = 4;
    uint32_t bits = 16;
};

Buffer fmt(const Format& format, const Buffer& extension = {}, int64_t size = -1) {
    return chunk("fmt ",
        ByteBuilder()
            .le16(format.tag)
            .le16(format.channels)
            .le32(format.rate)
            .le32(format.byte_rate)
            .le16(format.align)
            .le16(format.bits)
            .append(extension)
            .bytes,
        size);
}

// cbSize, valid bits, mask and the GUID of PCM.
Buffer extension(uint32_t mask) {
    return ByteBuilder().le16(22).le16(24).le32(mask).raw({1, 0, 0, 0, 0, 0, 16, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}).bytes;
}

Buffer wave(const std::vector<Buffer>& chunks) {
    ByteBuilder builder;
    builder.text("RIFF").le32(0).text("WAVE");
    for (const Buffer& bytes : chunks) {
        builder.append(bytes);
    }
    return builder.bytes;
}

Buffer data(size_t size) {
    return chunk("data", Buffer(size, 1));
}

// There is no catalogue: the name of a codec is "C", one character, and the key.
std::unique_ptr<InfoRecord> analyse_path(const std::string& path, int result = 0) {
    auto record = std::make_unique<InfoRecord>();
    copy_text(record->path, path);
    set_catalogue_directory("no catalogue/");
    EXPECT_EQ(AnalyzeWavFile(record.get()), result);
    set_catalogue_directory("");
    expect_sound(*record);
    return record;
}

std::unique_ptr<InfoRecord> analyse(const Buffer& bytes) {
    auto record = analyse_path(TempFile(bytes).path);
    EXPECT_EQ(record->file_size, bytes.size());
    return record;
}

// The first frame of a stream: MPEG-1 Layer III, 128 kbit/s, 44100 Hz, stereo.
Buffer mpeg_frame(std::string_view kind = "", uint32_t flags = 0, uint32_t frames = 0) {
    return ByteBuilder()
        .raw({0xFF, 0xFB, 0x90, 0x00})
        .pad_to(36)
        .text(kind)
        .be32(flags)
        .be32(frames)
        .be32(100000)
        .pad_to(417)
        .bytes;
}

// A core frame header: 48000 Hz, 3/2 channels and LFE, 1536 kbit/s, 24 bits.
Buffer dts_frame() {
    BitBuilder bits;
    bits.bits(0x7FFE8001, 32).bits(1, 1).bits(31, 5).bits(0, 1).bits(15, 7).bits(2012, 14);
    bits.bits(9, 6).bits(13, 4).bits(24, 5).bits(0, 10).bits(1, 2).bits(0, 8).bits(6, 3);
    return ByteBuilder().append(bits.bytes).pad_to(400).bytes;
}

const Format mp3 = {0x55, 2, 44100, 16000, 1, 0};
const Format pcm_8_channels = {1, 8, 48000, 768000, 16, 16};
const Format float_6_channels = {3, 6, 48000, 1152000, 24, 32};
const Format mu_law = {7, 1, 8000, 8000, 1, 8};

constexpr char plain_line[] = "[C\x96\xB3"
                              "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:16Byte]";

struct Row {
    const char* name;
    Buffer bytes;
    std::string label;
    std::string audio;
    std::string chain;
    double play_time;
};

const Row rows[] = {
    {"plain PCM", wave({fmt({}), data(176400)}), "[RIFF(WAVE)]", plain_line, "[fmt ][data]", 1},
    {"PCM with an empty extension", wave({fmt({}, {0, 0}), data(4)}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:18Byte]",
        "[fmt ][data]", 1 / 44100.0},
    {"PCM with an extension is named by mask", wave({fmt({}, extension(0x30)), data(4)}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0001] 44100Hz 2ch(SL+SR) 1411.20kbps 16Bit [fmt:40Byte]",
        "[fmt ][data]", 1 / 44100.0},
    {"an extension of one byte", wave({fmt({}, {5}), data(4)}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0001] 44100Hz 2ch() 1411.20kbps 16Bit [fmt:17Byte]",
        "[fmt ][data]", 1 / 44100.0},
    {"the extension keeps the label, the speakers end with a whole name",
        wave({fmt(pcm_8_channels, extension(0xFFFFFFFF)), data(16)}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0001] 48000Hz 8ch(L+R+C+LFE+SL+SR+FL-C+FR-C+B-C+Side-L+Side-R+T-C+TF-L+TF-C+TF-R) "
        "6144.00kbps 16Bit [fmt:40Byte]",
        "[fmt ][data]", 1 / 48000.0},
    {"many channels are named by count", wave({fmt(float_6_channels), data(1152000)}), "[RIFF(WAVE-EXT)]",
        "[C\x96\xB3"
        "0003] 48000Hz 6ch(L+R+C+LFE+BL+BR) 9216.00kbps 32Bit [fmt:16Byte]",
        "[fmt ][data]", 1},
    {"only nine speakers have names", wave({fmt({1, 65535, 48000, 4294967295, 65535, 8}), data(65535)}), "[RIFF(WAVE-EXT)]",
        "[C\x96\xB3"
        "0001] 48000Hz 65535ch(L+R+C+LFE+BL+BR+FL-C+FR-C+B-C) 34359738.36kbps 8Bit [fmt:16Byte]",
        "[fmt ][data]", 1 / 48000.0},
    {"an extensible format is named by GUID", wave({fmt({0xFFFE, 2, 48000, 288000, 6, 24}, extension(0x33)), data(288000)}),
        "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "00000001-0000-0010-8000-00AA00389B71] 48000Hz 2ch 2304.00kbps 24Bit [fmt:40Byte]",
        "[fmt ][data]", 1},
    {"a cut extensible format", wave({fmt({0xFFFE, 3}, {22, 0}), data(4)}), "[RIFF(WAVE-EXT)]",
        "[C\x96\xB3"
        "00000000-0000-0000-0000-000000000000] 44100Hz 3ch(L+R+C) 1411.20kbps 16Bit "
        "[fmt:18Byte]",
        "[fmt ][data]", 4 / 176400.0},
    {"a later fmt and data replace all of the earlier ones",
        wave({fmt({0xFFFE, 2}, extension(3)), fmt({}, extension(3)), fmt(mu_law), data(9), data(4000)}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0007] 8000Hz 1ch 64.00kbps 8Bit [fmt:16Byte]",
        "[fmt ][fmt ][fmt ][data][data]", 0.5},
    {"a short fmt reads as zeros", wave({chunk("fmt ", Buffer{1, 0, 2, 0}), data(4)}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0001] 0Hz 2ch 0.00kbps 0Bit [fmt:4Byte]",
        "[fmt ][data]", 0},
    {"a zero block align", wave({fmt({1, 2, 44100, 176400, 0, 16}), data(4)}), "[RIFF(WAVE)]", plain_line, "[fmt ][data]", 0},
    {"a zero byte rate", wave({fmt({7, 1, 8000, 0, 1, 8}), data(4)}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0007] 8000Hz 1ch 0.00kbps 8Bit [fmt:16Byte]",
        "[fmt ][data]", 0},
    {"an fmt of 4 GiB", wave({fmt({}, {}, 0xFFFFFFFF), data(4)}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0001] 44100Hz 2ch(C) 1411.20kbps 16Bit [fmt:-1Byte]",
        "[fmt ]", 0},
    {"data beyond the file", wave({fmt({}), chunk("data", "abcd", 1764000)}), "[RIFF(WAVE)]", plain_line, "[fmt ][data]", 10},
    {"zeros between chunks, and lists",
        wave({chunk("LIST", "INFOx"), {0}, fmt({}), {0, 0, 0}, chunk("LIST", "adtl"), data(4), {0}}), "[RIFF(WAVE)]", plain_line,
        "[LIST(INFOTAG)]+[fmt ]+[LIST(INFOTAG)][data]", 1 / 44100.0},
    {"a cut chunk header", wave({fmt({}), data(4), {'L', 'I', 'S', 'T', 1}}), "[RIFF(WAVE)]", plain_line, "[fmt ][data]",
        1 / 44100.0},
    {"an id ends at its zero byte, the chain at 63 characters",
        wave({fmt({}), chunk(std::string_view("a\0bc", 4), ""), data(4), chunk("LIST", "x"), chunk("LIST", "x"),
            chunk("LIST", "x"), chunk("last", "x"), chunk("more", "x")}),
        "[RIFF(WAVE)]", plain_line, "[fmt ][a][data][LIST(INFOTAG)][LIST(INFOTAG)][LIST(INFOTAG)][la", 1 / 44100.0},
    {"Broadcast Wave by its text", wave({chunk("bext", "BWF take"), fmt({}), data(4)}), "[RIFF(WAVE-BWF)]", plain_line,
        "[bext][fmt ][data]", 1 / 44100.0},
    {"the first description that is not empty",
        wave({chunk("fact", Buffer{0, 'B'}), chunk("bext", "BWF"), chunk("fact", "lossyWAV"), fmt({}), data(4)}),
        "[RIFF(WAVE-BWF)]", plain_line, "[fact][bext][fact][fmt ][data]", 1 / 44100.0},
    {"MPEG audio", wave({fmt(mp3, Buffer(14)), chunk("data", mpeg_frame())}), "[RIFF(WAVE)]",
        "MPEG1-LayerIII 44100Hz [CBR Stereo] 128.00kbps [417bpf] ", "[fmt ][data]", static_cast<double>(417.0F / 16000.0F)},
    {"MPEG audio that is cut", wave({fmt({0x50, 2, 44100, 16000, 1, 0}), chunk("data", Buffer{0xFF, 0xFB, 0x90}, 1600)}),
        "[RIFF(WAVE)]", "MPEG1-LayerIII 44100Hz [CBR Stereo] 128.00kbps [417bpf] ", "[fmt ][data]",
        static_cast<double>(1600.0F / 16000.0F)},
    {"an unusable Xing header keeps the plain line", wave({fmt(mp3), chunk("data", mpeg_frame("Xing", 1, 0))}), "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0055] 44100Hz 2ch 128.00kbps 0Bit [fmt:16Byte]",
        "[fmt ][data]", 417 / 16000.0},
    {"MPEG audio by another tag", wave({fmt({}), chunk("data", mpeg_frame())}), "[RIFF(WAVE)]", plain_line, "[fmt ][data]",
        104 / 44100.0},
    {"DTS far behind the file's start", wave({fmt({}), chunk("junk", Buffer(2000000, 1)), chunk("data", dts_frame())}),
        "[RIFF(WAVE)]", "DTS(16BitBE) 48000Hz 5.1Ch C+L+R+SL+SR+LFE 1536.000kbps 24Bit", "[fmt ][junk][data]", 100 / 44100.0},
    {"many channels replace a DTS line", wave({fmt({1, 3, 44100, 176400, 4, 16}), chunk("data", dts_frame())}),
        "[RIFF(WAVE-EXT)]",
        "[C\x96\xB3"
        "0001] 44100Hz 3ch(L+R+C) 1411.20kbps 16Bit [fmt:16Byte]",
        "[fmt ][data]", 100 / 44100.0},
    {"no RIFF file", ByteBuilder().text("RIFX").fill(40, 1).bytes, "[RIFF(WAVE)]",
        "[C\x96\xB3"
        "0000] 0Hz 0ch 0.00kbps 0Bit [fmt:0Byte]",
        "", 0},
};

} // namespace

TEST(WavFile, DescribesWhatTheChunksSay) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = analyse(row.bytes);
        EXPECT_EQ(record->label, row.label);
        EXPECT_EQ(record->audio[0], row.audio);
        EXPECT_EQ(record->audio_count, 1);
        EXPECT_EQ(record->extra[0], row.chain);
        EXPECT_EQ(record->extra_count, 1);
        EXPECT_EQ(record->play_time, row.play_time);
        EXPECT_STREQ(record->extra_info, "");
    }
}

TEST(WavFile, QuotesLossyWav) {
    const struct {
        const char* text;
        const char* label;
        const char* extra_info;
    } cases[] = {
        {"lossyWAV 1.3.0 : -q 5 -cbs 512 -x", "[RIFF(lossyWAV(512))]", "lossyWAV 1.3.0 "},
        {"lossyWAV -cbs 512", "[RIFF(lossyWAV(512))]", "lossyWAV -cbs 512"},
        {"lossyWAV -cbs", "[RIFF(lossyWAV())]", "lossyWAV -cbs"},
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
TEST(WavFile, EstimatesThePlayTimeBeyond2Gb) {
    const struct {
        Format format;
        int32_t extra_count;
        const char* note;
    } cases[] = {
        {{}, 2,
            "2GB\x92\xB4\x8B\x4B\x8A\x69\x8A\x4Fwav \x8A\x54\x8E\x5A\x8D\xC4\x90\xB6\x8E\x9E\x8A"
            "\xD4[3:22:53.943]"},
        {{1, 2, 44100, 176400, 0, 16}, 2, "2GB\x92\xB4\x8B\x4B\x8A\x69\x8A\x4Fwav"},
        {{0x55, 2, 0, 0, 4, 0}, 3,
            "2GB\x92\xB4\x8B\x4B\x8A\x69\x8A\x4FwavnAvgBytesPerSec\x82\xAA"
            "0\x82\xC8\x82\xCC\x82\xC5\x81\x41\x8D\xC4\x90\xB6\x8E\x9E\x8A\xD4\x82\xCD\x8A\x53\x8E"
            "\x5A\x82\xC5\x82\xB7"},
    };
    for (const auto& row : cases) {
        const TempFile file(wave({fmt(row.format), chunk("data", "", 0x7FFFFFF0)}));
        std::ofstream(file.path, std::ios::binary | std::ios::in).seekp(44 + 0x7FFFFFF0LL).write("more", 4);
        const auto record = analyse_path(file.path);
        EXPECT_EQ(record->extra_count, row.extra_count);
        EXPECT_STREQ(record->extra[1], row.note);
        EXPECT_STREQ(record->extra[0], "[fmt ][data]");
    }
}

TEST(WavFile, WarnsOfMp3WithoutByteRate) {
    const auto record = analyse(wave({fmt({0x55, 2, 44100, 0, 1, 0}), data(4)}));
    EXPECT_EQ(record->extra_count, 2);
    EXPECT_TRUE(std::string_view(record->extra[1]).starts_with("nAvgBytesPerSec\x82\xAA"));
}

TEST(WavFile, SurvivesAMissingFile) {
    EXPECT_EQ(analyse_path(temp_directory() + "missing.wav", 1)->audio_count, 0);
}

TEST(WavFile, IsSoundAtEveryLength) {
    const Buffer whole = wave({chunk("bext", "BWF"), {0}, fmt(mp3, extension(63)), chunk("data", mpeg_frame("Xing", 3, 100))});
    for (size_t length = 0; length < whole.size(); ++length) {
        analyse({whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)});
    }
}

// A read or a text for each of them would take seconds.
TEST(WavFile, WalksAMillionTinyChunks) {
    const Buffer tiny = chunk("fmt ", Buffer{1, 0, 2, 0});
    ByteBuilder builder;
    builder.append(wave({fmt({})}));
    for (int i = 0; i < 1000000; ++i) {
        builder.append(tiny);
    }
    const auto record = analyse(builder.append(data(8)).bytes);
    EXPECT_STREQ(record->audio[0], "[C\x96\xB3"
                                   "0001] 0Hz 2ch 0.00kbps 0Bit [fmt:4Byte]");
}

} // namespace zat::test
