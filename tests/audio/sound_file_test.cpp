#include "support/byte_builder.h"
#include "support/dispatched.h"
#include "support/riff_builder.h"

namespace zat::test::sound_file_test {

namespace {

struct Row {
    const char* name;
    uint32_t type_code;
    Data bytes;
    const char* label;
    const char* expected;
};

void expect_rows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        const auto result = dispatched(row.type_code, row.bytes);
        EXPECT_STREQ(result->record.label, row.label) << row.name;
        EXPECT_EQ(result->text(), row.expected) << row.name;
    }
}

// An IFF chunk whose size may lie, with its pad byte.
Data chunk(std::string_view id, const Data& payload, int64_t size = -1) {
    auto out = ByteBuilder().text(id).be32(size < 0 ? payload.size() : static_cast<uint64_t>(size)).append(payload);
    return out.fill(payload.size() % 2).bytes;
}

Data text_chunk(std::string_view id, std::string_view text) {
    return chunk(id, ByteBuilder().text(text).bytes);
}

// "COMM" of 44100 Hz, as 80 bits of floating point.
Data common(int channels, int frames, int bits, std::string_view type = "") {
    auto out = ByteBuilder().be16(static_cast<uint64_t>(channels)).be32(static_cast<uint64_t>(frames));
    out.be16(static_cast<uint64_t>(bits)).be16(0x400E).be64(0xAC44000000000000).text(type);
    return chunk("COMM", type.empty() ? out.bytes : out.be16(0).bytes);
}

Data sound(size_t size, int64_t told = -1, int offset = 0) {
    return chunk("SSND", ByteBuilder().be32(static_cast<uint64_t>(offset)).be32(0).fill(size, 1).bytes, told);
}

Data form(std::string_view type, const std::vector<Data>& chunks) {
    ByteBuilder out;
    out.text("FORM").be32(0).text(type);
    for (const Data& each : chunks) {
        out.append(each);
    }
    return out.bytes;
}

Data au(uint64_t encoding, uint64_t size, size_t present, std::string_view annotation = "", uint64_t channels = 1) {
    auto out = ByteBuilder().text(".snd").be32(24 + annotation.size()).be32(size).be32(encoding).be32(8000).be32(channels);
    return out.text(annotation).fill(present, 1).bytes;
}

Data cd_track(uint64_t track, uint64_t start, uint64_t length) {
    auto out = ByteBuilder().le16(1).le16(track).le32(0x12345678).le32(start).le32(length).le32(0).le32(0);
    return riff_list("RIFF", "CDDA", {riff_chunk("fmt ", out.bytes)});
}

} // namespace

TEST(SoundFile, describes_aiff) {
    const Data tag = ByteBuilder().text("ID3").raw({3, 0, 0, 0, 0, 0, 15}).text("TIT2").be32(5).be16(0).u8(0).text("Song").bytes;
    std::vector<Data> names;
    for (char name = 'a'; name <= 't'; ++name) {
        names.push_back(text_chunk("NAME", {&name, 1}));
    }
    expect_rows({
        {"plain, with texts", 105,
            form("AIFF",
                {text_chunk("NAME", "Name"), text_chunk("AUTH", "Who"),
                    text_chunk("ANNO", std::string_view("AFspdate: 2003\0program: Copy", 28)), common(2, 4, 16), sound(16)}),
            "[AIFF]",
            "A [C\x96\xB3"
            "0001] 44100Hz 2ch 1411.20kbps 16Bit [COMM:18Byte]\n"
            "X [NAME][AUTH]+[ANNO][COMM][SSND]\n"
            "I Who - Name / Copy\n"
            "0.000\n"
            "AIFF title=Name artist=Who writer=Copy duration=0.000\n"
            "audio mode=1 duration=0.000 bit_rate=1411200 bytes=16 samples=4 sample_rate=44100 channels=2 bit_depth=16 codec=PCM "
            "profile=signed 16 BE layout=L R"},
        {"little-endian, told layout, the tag's title first, cut", 105,
            form("AIFC",
                {text_chunk("NAME", "Name"), chunk("ID3 ", tag), chunk("CHAN", ByteBuilder().be32(133 << 16 | 3).be64(0).bytes),
                    common(3, 44100, 16, "sowt"), sound(0, 264608)}),
            "[AIFF-C]",
            "A [C\x96\xB3"
            "0001] 44100Hz 3ch(L+R+LFE) 2116.80kbps 16Bit [COMM:24Byte]\n"
            "X [NAME][ID3 ]+[CHAN][COMM][SSND]\n"
            "X truncated(264,600 Byte missing)\n"
            "I Song\n"
            "1.000\n"
            "AIFF profile=AIFF-C title=Song notes=truncated duration=1.000 missing=264600\n"
            "audio mode=1 duration=1.000 bit_rate=2116800 samples=44100 sample_rate=44100 channels=3 bit_depth=16 codec=PCM "
            "codec_id=sowt profile=signed 16 LE layout=L R LFE"},
        {"blocks of 64 samples; no pad byte", 105, form("AIFC", {common(2, 3, 16, "ima4"), sound(204)}), "[AIFF-C]",
            "A [C\x96\xB3ima4] 44100Hz 2ch 374.85kbps 4Bit [COMM:24Byte]\n"
            "X [COMM][SSND]\n"
            "0.004\n"
            "AIFF profile=AIFF-C duration=0.004\n"
            "audio mode=1 duration=0.004 bit_rate=374850 bytes=204 samples=192 sample_rate=44100 channels=2 codec=ADPCM "
            "codec_id=ima4 profile=IMA layout=L R"},
        {"a compression of no table, behind ID3v2", 105,
            ByteBuilder().append(tag).append(form("AIFC", {common(1, 10, 0, "QDM2"), sound(16)})).bytes, "[AIFF-C]",
            "A [C\x96\xB3QDM2] 44100Hz 1ch [COMM:24Byte]\n"
            "X [COMM][SSND]\n"
            "0.000\n"
            "AIFF profile=AIFF-C duration=0.000\n"
            "audio duration=0.000 bytes=16 samples=10 sample_rate=44100 channels=1 codec=QDesign Music 2 codec_id=QDM2 layout=C"},
        {"the usual layout; frames by the bytes; an offset", 105, form("AIFF", {common(4, 0, 20), sound(37, -1, 1)}), "[AIFF]",
            "A [C\x96\xB3"
            "0001] 44100Hz 4ch(L+R+BL+BR) 4233.60kbps 20Bit [COMM:18Byte]\n"
            "X [COMM][SSND]\n"
            "0.000\n"
            "AIFF duration=0.000\n"
            "audio mode=1 duration=0.000 bit_rate=4233600 bytes=36 samples=3 sample_rate=44100 channels=4 bit_depth=20 codec=PCM "
            "profile=signed 20 BE"},
        {"comments", 105,
            form("AIFF", {chunk("COMT", ByteBuilder()
                                            .be16(2)
                                            .be32(0)
                                            .be16(0)
                                            .be16(3)
                                            .text("abc")
                                            .u8(0)
                                            .be32(0)
                                            .be16(0)
                                            .be16(9)
                                            .text("Title=Tea")
                                            .u8(0)
                                            .bytes),
                             text_chunk("COMT", "?")}),
            "[AIFF]",
            "X [COMT][COMT]\n"
            "I Tea\n"
            "0.000\n"
            "AIFF title=Tea"},
        {"more texts than are read", 105, form("AIFF", names), "[AIFF]",
            "X [NAME]+[NAME]+[NAME]+[NAME]+[NAME]+[NAME]+[NAME]+[NAME]+[NAME]+\n"
            "I a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p\n"
            "0.000\n"
            "AIFF title=a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p"},
        {"a form that is cut, nonsense beside", 105, form("AIFF", {sound(8), chunk("COMM", {0, 2, 0, 0})}), "[AIFF]",
            "X [SSND][COMM]\n"
            "0.000\n"
            "AIFF"},
    });
}

TEST(SoundFile, describes_au) {
    expect_rows({
        {"mu-law, the rest of the file", 104, au(1, 0xFFFFFFFF, 800, "Doorbell\0\0\0"), "[AU]",
            "A [C\x96\xB3"
            "0007] 8000Hz 1ch 64.00kbps 8Bit\n"
            "I Doorbell\n"
            "0.100\n"
            "AU title=Doorbell duration=0.100\n"
            "audio mode=1 duration=0.100 bit_rate=64000 bytes=800 samples=800 sample_rate=8000 channels=1 codec=mu-law "
            "codec_id=1 layout=C"},
        {"cut", 104, au(6, 32000, 16, "Title=T\nartist=A\nfoo=bar\n", 2), "[AU]",
            "A [C\x96\xB3"
            "0003] 8000Hz 2ch 512.00kbps 32Bit\n"
            "X truncated(31,984 Byte missing)\n"
            "I A - T\n"
            "0.500\n"
            "AU title=T artist=A notes=truncated duration=0.500 missing=31984\n"
            "audio mode=1 duration=0.500 bit_rate=512000 bytes=16 samples=4000 sample_rate=8000 channels=2 bit_depth=32 "
            "codec=PCM codec_id=6 profile=float 32 BE layout=L R"},
        {"G.723 of 5 bits, by a known program", 104, au(26, 5000, 5000, "Processed by SoX"), "[AU]",
            "A [C\x96\xB3"
            "0045] 8000Hz 1ch 40.00kbps 5Bit\n"
            "I SoX\n"
            "1.000\n"
            "AU writer=SoX duration=1.000\n"
            "audio mode=1 duration=1.000 bit_rate=40000 bytes=5000 samples=8000 sample_rate=8000 channels=1 codec=G.726 "
            "codec_id=26 layout=C"},
        {"an unknown encoding", 104, au(99, 80, 80), "[AU]",
            "0.000\n"
            "AU"},
        {"more channels than can be", 104, au(3, 80, 80, "", 0xFFFFFFFF), "[AU]",
            "A [C\x96\xB3"
            "0001] 8000Hz 16Bit\n"
            "0.000\n"
            "AU\n"
            "audio bytes=80 sample_rate=8000 bit_depth=16 codec=PCM codec_id=3 profile=signed 16 BE"},
    });
}

TEST(SoundFile, describes_cd_tracks) {
    expect_rows({
        {"two seconds", 107, cd_track(12, 75 * 61 + 7, 150), "[RIFF(CDDA)]",
            "A [C\x96\xB3"
            "0001] 44100Hz 2ch 1411.20kbps 16Bit [fmt:24Byte]\n"
            "X [fmt ]\n"
            "X track 12 start 1:01.07\n"
            "2.000\n"
            "CD audio track duration=2.000\n"
            "audio flags=64 mode=1 id=12 start=61.093 duration=2.000 bit_rate=1411200 samples=88200 sample_rate=44100 channels=2 "
            "bit_depth=16 codec=PCM profile=signed 16 LE layout=L R"},
        {"no track", 107, riff_list("RIFF", "CDDA", {}), "[RIFF(CDDA)]",
            "0.000\n"
            "CD audio track"},
    });
}

TEST(SoundFile, is_sound_at_every_length) {
    expect_sound_when_cut(105, form("AIFC", {text_chunk("NAME", "x"), common(2, 3, 16, "ima4"), sound(20)}));
    expect_sound_when_cut(104, au(1, 8, 8, "Title=x"));
    expect_sound_when_cut(107, cd_track(1, 2, 3));
}

} // namespace zat::test::sound_file_test
