#include "audio/lossless/musepack_file.h"
#include "common/bytes/crc.h"
#include "support/audio_file_rows.h"

namespace zat::test::musepack_file_test {

TEST(MusePackFile, describes_files) {
    const auto sv7 = [](int version, uint64_t frames, uint64_t form, uint64_t gain, uint64_t ending, int encoder) {
        return ByteBuilder()
            .text("MP+")
            .raw({version})
            .le32(frames)
            .le32(form)
            .le32(gain)
            .le32(gain)
            .le32(ending)
            .raw({0, 0, 0, encoder})
            .fill(100, 1)
            .bytes;
    };
    const auto packet = [](std::string_view key, const Data& content) {
        return ByteBuilder().text(key).u8(content.size() + 3).append(content).bytes;
    };
    const auto sv8 = [&](const Data& fields, const Data& rest) {
        return join({text("MPCK"), packet("SH", join({ByteBuilder().be32(crc32(fields)).bytes, fields})), rest});
    };
    const Data form = ByteBuilder().raw({8, 0x82, 0xD8, 0x44, 0x00, 0x1B, 0x1B}).bytes; // 44,100 samples
    const Data end = join({packet("AP", Data(50)), packet("SE", {})});
    expect_rows(AnalyzeMusePackFile,
        {
            {"SV7", sv7(7, 10, 10 << 20, 0xFC7C0000, 0x80000000U | 100U << 20, 116),
                "A [MusePack SV7 Standard q5] 44100Hz 2ch 3.47kbps\nX encoder 1.16 beta\nX gapless\nX ReplayGain track -9.00dB "
                "album -9.00dB\n0.237 103"},
            {"SV7.1, not gapless", sv7(0x17, 10, (14U << 20) | (3 << 16), 0, 0, 140),
                "A [MusePack SV7.1 q9] 32000Hz 2ch 2.39kbps\nX encoder 1.4\n0.345 103"},
            {"SV7, no quality, cut off", sv7(7, 1000, 1 << 20, 0, 0, 115),
                "A [MusePack SV7 Experimental] 44100Hz 2ch\nX encoder 1.15 alpha\nX truncated\n26.112 103"},
            {"SV5", sv7(5, 10, 0, 0, 0, 0), "X damaged header\n0.000 0"},
            {"SV8",
                sv8(form, join({packet("RG", ByteBuilder().raw({1}).be16(0x4000).be16(0).be16(0).be16(0).bytes),
                              packet("EI", ByteBuilder().raw({0xA4, 1, 29, 3}).bytes), end})),
                "A [MusePack SV8 Standard q5.25] 44100Hz 2ch 0.45kbps\nX encoder 1.29.3 unstable\nX ReplayGain track "
                "+0.82dB\n1.000 56",
                "Musepack profile=SV8\naudio duration=1.000 bit_rate=448 bytes=56 samples=44100 sample_rate=44100 channels=2 "
                "codec=Musepack profile=Standard encoder=1.29.3 unstable"},
            {"SV8, old encoder, cut off",
                sv8(form, join({packet("EI", ByteBuilder().raw({0xB0, 1, 15, 3}).bytes), packet("AP", Data(50))})),
                "A [MusePack SV8 Extreme q6] 44100Hz 2ch\nX encoder 1.15 alpha\nX truncated\n1.000 53"},
            {"SV8, rate that is none", sv8(ByteBuilder().raw({8, 0x44, 0x00, 0xFB, 0x1B}).bytes, end),
                "A [MusePack SV8] 2ch\nX damaged header\n0.000 56"},
        });
}

} // namespace zat::test::musepack_file_test
