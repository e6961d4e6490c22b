#include "audio/lossless/dsdiff_file.h"
#include "audio/lossless/dsf_file.h"
#include "audio/lossless/wsd_file.h"
#include "support/audio_file_rows.h"

namespace zat::test::dsd_file_test {

namespace {

using namespace std::string_view_literals;

Data dsf(uint64_t type, uint64_t channels, uint64_t rate, uint64_t samples, const Data& sound, const Data& tag = {}) {
    const uint64_t pointer = tag.empty() ? 0 : 92 + sound.size();
    ByteBuilder file;
    file.text("DSD ").le64(28).le64(0).le64(pointer).text("fmt ").le64(52).le32(1).le32(0).le32(type).le32(channels);
    file.le32(rate).le32(1).le64(samples).le32(4096).le32(0).text("data").le64(12 + sound.size());
    return file.append(sound).append(tag).bytes;
}

Data chunk(std::string_view id, const Data& content, int64_t size = -1) {
    return ByteBuilder().text(id).be64(size < 0 ? content.size() : static_cast<uint64_t>(size)).append(content).bytes;
}

Data dsdiff(std::initializer_list<Data> chunks) {
    return ByteBuilder().text("FRM8").be64(12345).text("DSD ").append(join(chunks)).bytes;
}

Data sound_properties(std::string_view compression) {
    return chunk("PROP", join({text("SND "), chunk("FS  ", ByteBuilder().be32(2822400).bytes),
                             chunk("CHNL", ByteBuilder().be16(2).text("SLFTSRGT").bytes), chunk("CMPR", text(compression))}));
}

} // namespace

TEST(DsdFiles, describes_files) {
    const Data tag = ByteBuilder().text("ID3").raw({3, 0, 0, 0, 0, 0, 13}).text("TIT2").be32(3).be16(0).text("\0To"sv).bytes;
    expect_rows(AnalyzeDsfFile,
        {
            {"tag behind", dsf(2, 2, 2822400, 2822400, Data(705600), tag),
                "A [DSD64] 2822400Hz 2ch 5644.80kbps 1Bit\nX ID3v2(23Byte)\nI To\n1.000 705600"},
            {"5.1, cut off", dsf(7, 6, 11289600, 8000, Data(5)),
                "A [DSD256] 11289600Hz 6ch(L+R+C+LFE+BL+BR) 67737.60kbps 1Bit\nX truncated(5,995 Byte missing)\n0.001 5"},
            {"no such rate, zeros behind the samples", dsf(9, 1, 1000, 8, Data(4096)),
                "A [DSD] 1000Hz 1ch 1.00kbps 1Bit\n0.008 1"},
            {"nothing known", dsf(0, 0, 0, 0xFFFFFFFFFFFFFFFF, {}), "X damaged header\n0.000 0"},
        });
    const Data information = chunk("DIIN", join({chunk("DIAR", ByteBuilder().be32(3).text("Ann").u8(0).bytes),
                                               chunk("DITI", ByteBuilder().be32(9).text("T").bytes)}));
    expect_rows(AnalyzeDsdiffFile,
        {
            {"plain", dsdiff({sound_properties("DSD "), chunk("DSD ", Data(705600)), information, chunk("ID3 ", tag)}),
                "A [DSD64] 2822400Hz 2ch 5644.80kbps 1Bit\nX ID3v2(23Byte)\nI Ann - To\n1.000 705600",
                "DSDIFF title=To artist=Ann\naudio flags=128 mode=1 duration=1.000 bit_rate=5644800 bytes=705600 samples=2822400 "
                "sample_rate=2822400 channels=2 bit_depth=1 codec=DSD layout=L R"},
            {"missing pad byte", dsdiff({chunk("COMT", Data(3)), sound_properties("DSD "), chunk("DSD ", Data(10), 100)}),
                "A [DSD64] 2822400Hz 2ch 5644.80kbps 1Bit\nX truncated(90 Byte missing)\n0.000 10"},
            {"DST",
                dsdiff({sound_properties("DST "),
                    chunk("DST ", join({chunk("FRTE", ByteBuilder().be32(75).be16(75).bytes), Data(999)}))}),
                "A [DST DSD64] 2822400Hz 2ch 8.14kbps 1Bit 0.14%\n1.000 1017"},
            {"DST without a rate", dsdiff({sound_properties("DST "), chunk("DST ", chunk("FRTE", Data(6)))}),
                "A [DST DSD64] 2822400Hz 2ch 1Bit\nX damaged header\n0.000 18"},
            {"a size of 2^63", dsdiff({chunk("PROP", Data(4), INT64_MIN)}), "X damaged header\n0.000 0"},
        });
    const auto wsd = [](int version, uint64_t rate, uint64_t mask) {
        return ByteBuilder()
            .text("1bit")
            .fill(4)
            .raw({version})
            .fill(11)
            .be32(0x80)
            .be32(0x800)
            .fill(8)
            .be32(rate)
            .be32(0)
            .raw({2, 0, 0, 0})
            .be32(mask)
            .pad_to(0x80)
            .text("Title")
            .pad_to(0x80 + 384, ' ')
            .text("Artist")
            .pad_to(0x800, ' ')
            .fill(705600)
            .bytes;
    };
    expect_rows(AnalyzeWsdFile,
        {
            {"1.1", wsd(0x11, 2822400, 0x28),
                "A [DSD64] 2822400Hz 2ch(BL-C+BR-C) 5644.80kbps 1Bit\nI Artist - Title\n1.000 705600"},
            {"before 1.0", wsd(0x05, 3072000, 1), "A [DSD64] 3072000Hz 2ch 6144.00kbps 1Bit\nI Artist - Title\n0.919 705600"},
            {"no rate", wsd(0x11, 0, 1), "A [DSD] 2ch 1Bit\nX damaged header\nI Artist - Title\n0.000 705600"},
        });
}

} // namespace zat::test::dsd_file_test
