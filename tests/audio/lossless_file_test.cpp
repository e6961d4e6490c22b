// Files of one stream of lossless audio: what record and details say of them.
#include "audio/lossless/flac_file.h"
#include "audio/lossless/monkey_file.h"
#include "audio/lossless/optimfrog_file.h"
#include "audio/lossless/tak_file.h"
#include "audio/lossless/tta_file.h"
#include "audio/lossless/wavpack_file.h"
#include "common/bytes/crc.h"
#include "support/audio_file_rows.h"
#include "support/ogg_builder.h"

namespace zat::test::lossless_file_test {

namespace {

// FLAC.

Data flac_block(uint64_t type, const Data& content, int64_t size = -1) {
    return ByteBuilder().u8(type).be24(size < 0 ? content.size() : static_cast<uint64_t>(size)).append(content).bytes;
}

Data streaminfo(uint64_t rate, uint64_t channels, uint64_t bits, uint64_t samples, uint64_t largest_frame = 0) {
    BitBuilder form;
    form.bits(4096, 16).bits(4096, 16).bits(0, 24).bits(largest_frame, 24);
    form.bits(rate, 20).bits(channels - 1, 3).bits(bits - 1, 5).bits(samples, 36);
    return ByteBuilder().append(form.bytes).fill(16).bytes;
}

constexpr uint64_t last = 0x80;

// 4,096 samples of 44,100 Hz in two channels of 16 bits; the first one and the second.
const Data frame_0 = ByteBuilder().raw({0xFF, 0xF8, 0xC9, 0x18, 0x00, 0xC2}).fill(94, 1).bytes;
const Data frame_1 = ByteBuilder().raw({0xFF, 0xF8, 0xC9, 0x18, 0x01, 0xC5}).fill(94, 1).bytes;

// WavPack.

Data wavpack_block(uint64_t version, uint64_t total, uint64_t index, uint64_t samples, uint64_t flags, const Data& content) {
    return ByteBuilder()
        .text("wvpk")
        .le32(24 + content.size())
        .le16(version)
        .u8(0)
        .u8(0)
        .le32(total)
        .le32(index)
        .le32(samples)
        .le32(flags)
        .le32(0)
        .append(content)
        .bytes;
}

constexpr uint64_t rate_44100 = 9 << 23;
constexpr uint64_t only_block = 0x1800; // first and final

} // namespace

TEST(FlacFile, describes_files) {
    const Data info = flac_block(0, streaminfo(44100, 2, 16, 8192, 100));
    const Data picture = ByteBuilder().be32(3).be32(9).text("image/png").be32(0).fill(16).be32(20).fill(20, 2).bytes;
    expect_rows(AnalyzeFlacFile,
        {
            {"comments, picture, cue sheet",
                join({text("fLaC"), info,
                    flac_block(4, comment_block("enc 1", {"ARTIST=A", "TITLE=T", "replaygain_track_gain=-1,5 dB"})),
                    flac_block(6, picture), flac_block(5, Data(8)), flac_block(last | 1, Data(3)), frame_0, frame_1, id3v1("U")}),
                "A [FLAC] 44100Hz 2ch 8.61kbps 16Bit 0.61%\nX VorbisComment(3),picture(1),cuesheet,ID3v1\nX encoder enc 1\nX "
                "ReplayGain track -1.50dB\nI A - T\n0.186 200",
                "FLAC title=T artist=A pictures=1\naudio flags=128 duration=0.186 bit_rate=8613 bytes=200 samples=8192 "
                "sample_rate=44100 channels=2 bit_depth=16 codec=FLAC encoder=enc 1 layout=L R"},
            {"mask, junk in front, a picture too large for its size",
                join({text("junk"), text("fLaC"), flac_block(0, streaminfo(44100, 2, 16, 8192)), flac_block(6, picture, 1),
                    flac_block(last | 4, comment_block("", {"WAVEFORMATEXTENSIBLE_CHANNEL_MASK=0x600"})), frame_0, frame_1}),
                "A [FLAC] 44100Hz 2ch(SL+SR) 8.61kbps 16Bit 0.61%\nX VorbisComment(1),picture(1)\n0.186 200"},
            {"a mask that does not name all",
                join({text("fLaC"), flac_block(0, streaminfo(44100, 5, 16, 4096)),
                    flac_block(last | 4, comment_block("", {"WAVEFORMATEXTENSIBLE_CHANNEL_MASK=0x33"}))}),
                "A [FLAC] 44100Hz 5ch 16Bit\nX VorbisComment(1)\nX truncated\n0.093 0"},
            {"more behind than a frame's size",
                join({text("fLaC"), flac_block(last, streaminfo(44100, 2, 16, 8192, 100)), frame_0, frame_1, Data(300)}),
                "A [FLAC] 44100Hz 2ch ~8.61kbps 16Bit ~0.61%\n0.186 200"},
            {"a last frame of more than 64 KiB",
                join({text("fLaC"), flac_block(last, streaminfo(44100, 2, 16, 8192, 70006)), frame_0, frame_1, Data(69906)}),
                "A [FLAC] 44100Hz 2ch 3019.21kbps 16Bit 213.95%\n0.186 70106"},
            {"unknown total", join({text("fLaC"), flac_block(last, streaminfo(44100, 2, 16, 0)), frame_0, frame_1}),
                "A [FLAC] 44100Hz 2ch 8.61kbps 16Bit 0.61%\n0.186 200"},
            {"no stream information", join({text("fLaC"), flac_block(last | 1, Data(2)), frame_0}),
                "A [FLAC] 44100Hz 2ch 8.61kbps 16Bit 0.61%\nX no STREAMINFO\n0.093 100"},
            {"frames differ", join({text("fLaC"), flac_block(last, streaminfo(48000, 6, 24, 4096)), frame_0, frame_1}),
                "A [FLAC] 44100Hz 2ch 8.61kbps 16Bit 0.61%\nX header and frames "
                "differ(48000Hz/44100Hz,6ch/2ch,24Bit/16Bit)\n0.186 200"},
            {"more frames than told", join({text("fLaC"), flac_block(last, streaminfo(44100, 2, 16, 4096)), frame_0, frame_1}),
                "A [FLAC] 44100Hz 2ch 8.61kbps 16Bit 0.61%\nX header and frames differ(4096/8192 samples)\n0.186 200"},
            {"cut off", join({text("fLaC"), flac_block(last, streaminfo(44100, 2, 16, 0xFFFFFFFFF)), frame_0}),
                "A [FLAC] 44100Hz 2ch 16Bit\nX truncated\n1558264.779 100"},
            {"rate 0, no frame", join({text("fLaC"), flac_block(last, streaminfo(0, 1, 16, 5))}),
                "A [FLAC] 1ch 16Bit\nX damaged header\n0.000 0"},
        });
    const Data cut = join({text("fLaC"), flac_block(last, streaminfo(44100, 2, 16, 441000)), frame_0});
    EXPECT_EQ(details_of(cut)->duration, 10);
    EXPECT_EQ(details_of(cut)->bit_rate, 0U);
}

TEST(WavPackFile, describes_files) {
    const Data audio = ByteBuilder().raw({0x0A, 2, 1, 2, 3, 4}).bytes;
    const Data config = ByteBuilder().raw({0x65, 2, 0x08, 0x00, 0x02, 3}).bytes; // high, extra level 3
    const Data dsd = ByteBuilder().raw({0x0D, 1, 2, 3, 0x0E, 1, 4, 3}).bytes;
    expect_rows(AnalyzeWavPackFile,
        {
            {"high, extra", wavpack_block(0x406, 44100, 0, 44100, rate_44100 | only_block | 1, join({config, audio})),
                "A [WavPack 4 lossless high] 44100Hz 2ch 0.35kbps 16Bit 0.02%\n1.000 44"},
            {"metadata first, hybrid with a correction file, tag",
                join({wavpack_block(0x410, 0, 0, 0, 0, {}),
                    wavpack_block(0x410, 44100, 0, 44100, rate_44100 | only_block | 9,
                        join({ByteBuilder().raw({0x65, 2, 0x02, 0x08, 0, 0, 0x6A, 1, 0, 0}).bytes, audio})),
                    ape_tag(2000, "Artist", "A")}),
                "A [WavPack 5 hybrid lossy fast] 44100Hz 2ch 0.64kbps 16Bit 0.05%\nX APEv2(48Byte)\nX correction file\nI "
                "A\n1.000 80"},
            {"correction stream",
                wavpack_block(0x410, 100, 0, 100, rate_44100 | only_block | 9, ByteBuilder().raw({0x0B, 1, 1, 2}).bytes),
                "A [WavPack 4 correction] 44100Hz 2ch 127.01kbps 16Bit 9.00%\n0.002 36"},
            {"DSD128", wavpack_block(0x410, 176400, 0, 176400, rate_44100 | only_block | 0x80000000U, dsd),
                "A [WavPack 5 DSD128] 5644800Hz 2ch 1.28kbps 1Bit 0.01%\n0.250 40",
                "WavPack\naudio flags=128 duration=0.250 bit_rate=1280 bytes=40 samples=1411200 sample_rate=5644800 channels=2 "
                "bit_depth=1 codec=WavPack layout=L R"},
            {"multichannel, rate of its own",
                join({wavpack_block(0x410, 1000, 0, 1000, (15 << 23) | 0x800 | 1,
                          join({ByteBuilder().raw({0x0D, 3, 5, 1, 0, 0x3F, 0, 0, 0x67, 2, 0xE8, 3, 0, 0}).bytes, audio})),
                    wavpack_block(0x410, 1000, 0, 1000, (15 << 23) | 0x1000 | 5, audio)}),
                "A [WavPack 4 lossless] 1000Hz 6ch(L+R+C+LFE+BL+BR) 0.72kbps 16Bit 0.75%\n1.000 90"},
            {"unknown total, junk in front",
                join({text("wvpk????"), wavpack_block(0x410, 0xFFFFFFFF, 100, 1000, rate_44100 | only_block, audio),
                    wavpack_block(0x410, 0xFFFFFFFF, 1100, 500, rate_44100 | only_block, audio)}),
                "A [WavPack 4 lossless] 44100Hz 2ch 17.88kbps 8Bit 2.53%\nX \x91\xBC\x82\xCCtag(8Byte)\n0.034 76"},
            {"cut off, float", wavpack_block(0x410, 441000, 0, 4410, rate_44100 | only_block | 0x80, audio),
                "A [WavPack 4 lossless float] 44100Hz 2ch 8Bit\nX truncated\n10.000 38"},
            {"lossy integers",
                wavpack_block(
                    0x410, 100, 0, 100, rate_44100 | only_block | 3, join({ByteBuilder().raw({9, 2, 4, 0, 0, 0}).bytes, audio})),
                "A [WavPack 4 lossy] 44100Hz 2ch 155.23kbps 32Bit 5.50%\n0.002 44"},
            {"version 3", ByteBuilder().text("wvpk").le32(0).le16(3).le16(0).le16(0x11).le16(0).le32(44100).fill(12).bytes,
                "A [WavPack 3 lossless high] 1ch 16Bit\n0.000 32"},
            {"no block", text("wvpk and then text that is none of it"), "X damaged header\n0.000 0"},
        });
}

TEST(MonkeyFile, describes_files) {
    const auto newer = [](const char* magic, uint64_t level, uint64_t frames, uint64_t final_blocks, uint64_t declared) {
        return ByteBuilder()
            .text(magic)
            .le16(3990)
            .le16(0)
            .le32(52)
            .le32(24)
            .le32(4)
            .le32(44)
            .le64(declared)
            .le32(0)
            .fill(16)
            .le16(level)
            .le16(0)
            .le32(73728)
            .le32(final_blocks)
            .le32(frames)
            .le16(16)
            .le16(2)
            .le32(44100)
            .fill(48)
            .fill(100, 7)
            .bytes;
    };
    const auto older = [](uint64_t version, uint64_t flags, uint64_t frames, uint64_t last_seek) {
        return ByteBuilder()
            .text("MAC ")
            .le16(version)
            .le16(4000)
            .le16(flags)
            .le16(1)
            .le32(44100)
            .le32(44)
            .le32(3)
            .le32(frames)
            .le32(50)
            .fill(44)
            .le32(100)
            .le32(last_seek)
            .fill(200, 7)
            .bytes;
    };
    Data cut = older(3950, 8, 2, 1000);
    cut.resize(82);
    expect_rows(AnalyzeMonkeyFile,
        {
            {"3.99 with a tag", join({newer("MAC ", 4000, 2, 1000, 100), ape_tag(1000, "Title", "T"), id3v1("U")}),
                "A [Monkey's Audio 3.99 Extra High] 44100Hz 2ch 0.47kbps 16Bit 0.03%\nX APEv1(47Byte),ID3v1\nI T\n1.695 100"},
            {"a tag's own letters where ID3v1 would begin",
                join({newer("MAC ", 4000, 2, 1000, 100), ape_tag(1000, "Title", "T"),
                    ByteBuilder().text("LYRICSBEGIN").fill(73).text("000084LYRICS200").bytes}),
                "A [Monkey's Audio 3.99 Extra High] 44100Hz 2ch 0.47kbps 16Bit 0.03%\nX APEv1(47Byte),LYRICS3(99Byte)\nI "
                "T\n1.695 100"},
            {"float, cut off", newer("MACF", 5000, 1, 1000, 1100),
                "A [Monkey's Audio 3.99 Insane float] 44100Hz 2ch 388.08kbps 16Bit 27.50%\nX truncated(1,000 Byte "
                "missing)\n0.023 100"},
            {"not finalised", newer("MAC ", 2000, 0, 0, 100),
                "A [Monkey's Audio 3.99 Normal] 44100Hz 2ch 16Bit\nX not finalised\n0.000 100"},
            {"no such level", newer("MAC ", 2500, 1, 1000, 100),
                "A [Monkey's Audio 3.99] 44100Hz 2ch 35.28kbps 16Bit 2.50%\nX damaged header\n0.023 100"},
            {"3.80", older(3800, 0, 2, 150), "A [Monkey's Audio 3.80 Extra High] 44100Hz 1ch 0.93kbps 16Bit 0.13%\n1.673 195"},
            {"3.95, 24 bits, cut off", older(3950, 8, 2, 1000),
                "A [Monkey's Audio 3.95 Extra High] 44100Hz 1ch 24Bit\nX truncated\n6.688 197"},
            {"cut off in the seek table", cut, "A [Monkey's Audio 3.95 Extra High] 44100Hz 1ch 24Bit\nX truncated\n6.688 0"},
            {"no such version", older(3100, 0, 2, 1), "X damaged header\n0.000 0"},
        });
}

TEST(TtaFile, describes_files) {
    const auto with_crc = [](ByteBuilder header) {
        const uint32_t crc = crc32(header.bytes);
        return header.le32(crc).bytes;
    };
    const auto tta1 = [&](uint64_t format, uint64_t rate, uint64_t samples) {
        return with_crc(ByteBuilder().text("TTA1").le16(format).le16(2).le16(16).le32(rate).le32(samples));
    };
    const Data table = with_crc(ByteBuilder().le32(60).le32(40));
    expect_rows(AnalyzeTtaFile,
        {
            {"seek table", join({tta1(1, 44100, 50000), table, Data(100, 1), id3v1("T")}),
                "A [TTA1] 44100Hz 2ch 0.71kbps 16Bit 0.05%\nX ID3v1\nI T\n1.134 100"},
            {"cut off by 30 bytes", join({tta1(3, 44100, 50000), table, Data(70, 1)}),
                "A [TTA1 float] 44100Hz 2ch 0.71kbps 16Bit 0.05%\nX truncated(30 Byte missing)\n1.134 70"},
            {"cut off in the seek table", join({tta1(1, 44100, 50000), Data(10)}),
                "A [TTA1] 44100Hz 2ch 16Bit\nX truncated\n1.134 0"},
            {"encrypted, wrong table", join({tta1(2, 44100, 50000), Data(12), Data(70, 1)}),
                "A [TTA1 encrypted] 44100Hz 2ch 0.49kbps 16Bit 0.04%\n1.134 70"},
            {"TTA2 with a mask",
                join({with_crc(ByteBuilder().text("TTA2").le16(4).le16(24).le32(48000).le32(0x33).le64(48000).le64(90)),
                    Data(100)}),
                "A [TTA2] 48000Hz 4ch(L+R+BL+BR) 0.72kbps 24Bit 0.02%\n1.000 90"},
            {"TTA2 without",
                join({with_crc(ByteBuilder().text("TTA2").le16(2).le16(24).le32(48000).le64(48000).le64(0)), Data(100)}),
                "A [TTA2] 48000Hz 2ch 0.80kbps 24Bit 0.03%\n1.000 100"},
            {"TTA2 of the first encoder",
                ByteBuilder().text("TTA2").le16(1).le16(1).le16(2).le16(16).le32(8000).le32(8000).fill(50).bytes,
                "A [TTA2] 8000Hz 2ch 0.40kbps 16Bit 0.16%\n1.000 50"},
            {"the encoder's demonstration",
                ByteBuilder().text("TTA").raw({2}).le16(2).le16(16).le32(8000).le32(8000).fill(50).bytes,
                "A [TTA] 8000Hz 2ch 0.40kbps 16Bit 0.16%\n1.000 50"},
            {"rate 0, wrong checksum", ByteBuilder().text("TTA1").le16(1).le16(2).le16(16).le32(0).le32(9).le32(0).fill(50).bytes,
                "A [TTA1] 2ch 16Bit\nX damaged header\n0.000 46"},
            {"text", text("TTA is not always sound"), "X damaged header\n0.000 0"},
        });
}

TEST(OptimFrogFile, describes_files) {
    const auto frog = [](int type, int channels, uint64_t algorithm) {
        return ByteBuilder()
            .text("OFR ")
            .le32(15)
            .le32(88200)
            .le16(0)
            .raw({type, channels})
            .le32(44100)
            .le16(600 << 4)
            .raw({0x21})
            .text("COMP")
            .le32(100)
            .fill(10)
            .le16(algorithm)
            .fill(88)
            .text("COMP")
            .le32(20)
            .fill(20)
            .bytes;
    };
    const Data tail = ByteBuilder().text("TAIL").le32(0).bytes;
    expect_rows(AnalyzeOptimFrogFile,
        {
            {"stereo", join({frog(3, 1, 0), tail, ape_tag(2000, "Album", "L")}),
                "A [OptimFROG 5.100 best 2x] 44100Hz 2ch 0.96kbps 16Bit 0.07%\nX APEv2(47Byte)\nI L\n1.000 120"},
            {"DualStream, mono, cut off", frog(2, 0, 4 << 6),
                "A [OptimFROG DualStream 5.100 best 2x] 44100Hz 1ch 16Bit\nX truncated\n2.000 120"},
            {"float", join({frog(9, 1, 0), tail}),
                "A [OptimFROG 5.100 best 2x float] 44100Hz 2ch 0.96kbps 32Bit 0.03%\n1.000 120"},
            {"channels and type that are none", join({frog(11, 2, 0), tail}),
                "A [OptimFROG 5.100 best 2x] 44100Hz\nX damaged header\n0.000 120"},
        });
}

TEST(TakFile, describes_files) {
    const auto block = [](int type, const Data& content) {
        const uint32_t crc = crc24(content);
        return ByteBuilder().raw({type}).le16(content.size() + 3).u8(0).append(content).le16(crc & 0xFFFF).u8(crc >> 16).bytes;
    };
    // Lowest bits first: codec, profile, frame size, samples, data type, rate, bits, channels.
    const auto info = [](uint64_t samples, uint64_t rate, bool center_and_lfe = false) {
        const uint64_t low = 2 | 2ULL << 6 | 3ULL << 10 | samples << 14 | (rate - 6000) << 52;
        const uint64_t high = (rate - 6000) >> 12 | 8ULL << 6 | 1ULL << 11;
        const uint64_t speakers = 1 << 15 | 1 << 21 | 3 << 22 | 4ULL << 28;
        ByteBuilder fields;
        fields.le64(low);
        return center_and_lfe ? fields.le32(high | (speakers & 0xFFFFFFFF)).u8(speakers >> 32).bytes : fields.le16(high).bytes;
    };
    const Data encoder = block(4, ByteBuilder().raw({1, 3, 2, 0x22}).bytes);
    const Data last_frame = block(7, ByteBuilder().le32(60).u8(0).le16(40).u8(0).bytes);
    const Data end(4);
    Data wrong = block(1, info(44100, 44100));
    wrong.back() ^= 1;
    expect_rows(AnalyzeTakFile,
        {
            {"encoder and preset", join({text("tBaK"), block(1, info(44100, 44100)), encoder, last_frame, end, Data(100, 3)}),
                "A [TAK 2.3.1 -p2m] 44100Hz 2ch 0.80kbps 16Bit 0.06%\n1.000 100"},
            {"cut off by 90 bytes", join({text("tBaK"), block(1, info(44100, 44100)), encoder, last_frame, end, Data(10, 3)}),
                "A [TAK 2.3.1 -p2m] 44100Hz 2ch 0.80kbps 16Bit 0.06%\nX truncated(90 Byte missing)\n1.000 10",
                "TAK notes=truncated missing=90\naudio flags=128 duration=1.000 bit_rate=800 bytes=10 samples=44100 "
                "sample_rate=44100 channels=2 bit_depth=16 codec=TAK profile=-p2m encoder=2.3.1"},
            {"no preset",
                join({text("tBaK"), block(1, info(44100, 44100)), block(4, ByteBuilder().raw({1, 0, 1}).bytes), end,
                    Data(100, 3)}),
                "A [TAK 1.0.1 -p2] 44100Hz 2ch 0.80kbps 16Bit 0.06%\n1.000 100"},
            {"speakers", join({text("tBaK"), block(1, info(44100, 44100, true)), last_frame, end, Data(100, 3)}),
                "A [TAK -p2] 44100Hz 2ch(C+LFE) 0.80kbps 16Bit 0.06%\n1.000 100"},
            {"wrong checksum", join({text("tBaK"), wrong, encoder, end, Data(100, 3)}),
                "A [TAK -p2] 44100Hz 2ch 0.92kbps 16Bit 0.07%\nX damaged header\n1.000 115"},
        });
}

} // namespace zat::test::lossless_file_test
