#include "container/ogg.h"

#include "support/details_text.h"
#include "support/ogg_builder.h"
#include "support/record_text.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

namespace zat::test::ogg_test {

namespace {

Data opus_head(uint64_t pre_skip = 312, uint64_t channels = 2) {
    return ByteBuilder().text("OpusHead").u8(1).u8(channels).le16(pre_skip).le32(44100).le16(0).u8(0).bytes;
}

Data opus_tags(std::initializer_list<std::string_view> items = {}) {
    return ByteBuilder().text("OpusTags").append(comment_block("libopus", items)).bytes;
}

// 20 ms each.
Data opus_packet(size_t size) {
    return ByteBuilder().u8(0x78).pad_to(size, 'x').bytes;
}

Data vorbis_head(uint64_t maximum, uint64_t nominal, uint64_t minimum) {
    return ByteBuilder()
        .u8(1)
        .text("vorbis")
        .le32(0)
        .u8(2)
        .le32(44100)
        .le32(maximum)
        .le32(nominal)
        .le32(minimum)
        .u8(0xB8)
        .u8(1)
        .bytes;
}

Data theora_head(uint64_t bit_rate) {
    ByteBuilder head;
    head.u8(0x80).text("theora").raw({3, 2, 1}).be16(20).be16(15).be24(320).be24(240).raw({0, 0});
    return head.be32(25).be32(1).be24(4).be24(3).u8(0).be24(bit_rate).be16(6 << 5).bytes;
}

Data ogm_head(std::string_view kind, std::string_view subtype, uint64_t unit, uint64_t samples, const Data& rest) {
    ByteBuilder head;
    head.u8(1).text(kind).pad_to(9).text(subtype).le32(56).le64(unit).le64(samples).le32(1).le32(0).le16(16).le16(0);
    return head.append(rest).bytes;
}

// A second of Opus, 51 packets of 100 bytes.
OggBuilder opus(std::initializer_list<std::string_view> items = {}) {
    OggBuilder file;
    file.page(2, 0, {opus_head()}).page(0, 0, {opus_tags(items)});
    for (int i = 1; i <= 51; ++i) {
        file.page(0, 960 * i, {opus_packet(100)});
    }
    return file;
}

Data theora_and_vorbis() {
    OggBuilder file;
    file.stream(1).page(2, 0, {theora_head(0)}).stream(2).page(2, 0, {vorbis_head(0, 96000, 0)});
    file.stream(3).page(2, 0, {ByteBuilder().text("fishead").fill(57).bytes});
    file.stream(1).page(
        0, 0, {ByteBuilder().u8(0x81).text("theora").append(comment_block("v", {"TITLE=A film"})).bytes, Data(9)});
    file.stream(2).page(0, 0, {ByteBuilder().u8(3).text("vorbis").append(comment_block("w", {"LANGUAGE=jpn"})).bytes, Data(9)});
    file.stream(1).page(0, 1 << 6, {Data(400)}).stream(2).page(0, 4410, {Data(50), Data(50)});
    return file.stream(1).page(4, (1 << 6) + 49, {Data(600)}).bytes;
}

struct Row {
    const char* name;
    Data bytes;
    std::string label_and_lines;
};

std::string lines_of(const InfoRecord& record) {
    return std::string(record.label) + "\n" + record_text(record);
}

TEST(Ogg, describes_each_stream_with_what_its_pages_tell) {
    const Data whole = opus().bytes;
    const Data stream_info =
        ByteBuilder().be32(34).be16(4096).be16(4096).be24(0).be24(0).be32(0x0AC442F0).be32(44100).fill(16).bytes;
    const OggBuilder flac_head =
        OggBuilder().page(2, 0, {ByteBuilder().u8(0x7F).text("FLAC").raw({1, 0, 0, 1}).text("fLaC").append(stream_info).bytes});
    const Data flac_comments = ByteBuilder().u8(0x84).be24(0).append(comment_block("libFLAC", {"TITLE=T"})).bytes;
    const Row rows[] = {
        {"opus", whole, "[Ogg]\nA [Opus] 48000Hz 2ch 40.257kbps\nI libopus\n1.014"},
        {"its texts",
            opus({"title=T", "ARTIST=A", "encoder=E", "LANGUAGE=fran\303\247ais\r\n", "CHAPTER001=00:00:00.000",
                     "CHAPTER001NAME=x"})
                .bytes,
            "[Ogg]\nA [Opus] 48000Hz 2ch 40.257kbps francais\nX \x83\x60\x83\x83\x83\x76\x83\x5E\x81\x5B(1)\nI A - T / E\n1.014"},
        {"cut in its last page", Data(whole.begin(), whole.end() - 30),
            "[Ogg]\nA [Opus] 48000Hz 2ch 40.262kbps\nX truncated(30 Byte missing)\nI libopus\n0.994"},
        {"cut in a page header", Data(whole.begin(), whole.end() - 110),
            "[Ogg]\nA [Opus] 48000Hz 2ch 40.262kbps\nX truncated\nI libopus\n0.994"},
        {"junk behind", ByteBuilder().append(whole).fill(1234, 'j').bytes,
            "[Ogg]\nA [Opus] 48000Hz 2ch 40.257kbps\nX trailing data(1,234 Byte)\nI libopus\n1.014"},
        {"junk between",
            ByteBuilder()
                .append(Data(whole.begin(), whole.end() - 128))
                .fill(9, 'j')
                .append(Data(whole.end() - 128, whole.end()))
                .bytes,
            "[Ogg]\nA [Opus] 48000Hz 2ch 40.257kbps\nI libopus\n1.014"},
        {"two links", opus().stream(2).append(opus({"TITLE=of the second"}).bytes).bytes,
            "[Ogg]\nA [Opus] 48000Hz 2ch 40.257kbps\nX chained(2)\nI libopus\n2.027"},
        {"joined late",
            OggBuilder()
                .page(2, 0, {opus_head()})
                .page(0, 0, {opus_tags()})
                .page(0, 96000960, {opus_packet(99)})
                .page(0, 96048960, {opus_packet(99)})
                .bytes,
            "[Ogg]\nA [Opus] 48000Hz 2ch 1.563kbps\nX joined\nI libopus\n1.014"},
        {"impossible position", OggBuilder().page(2, 0, {opus_head()}).page(0, int64_t{1} << 62, {opus_packet(99)}).bytes,
            "[Ogg]\nA [Opus] 48000Hz 2ch\n0.000"},
        {"video, audio, skeleton", theora_and_vorbis(),
            "[Ogg]\nV 320x240 [Theora 3.2.1] 8Bit 25.000fps 4.000kbps 50f display 427x240\n"
            "A OggVorbis 44100Hz [QB Stereo] 96.000kbps jpn\nI A film / v\n2.000"},
        {"vorbis without a rate",
            OggBuilder().page(2, 0, {vorbis_head(0, 0, 0)}).page(0, 8820, {Data(9), Data(9), Data(982)}).bytes,
            "[Ogg]\nA OggVorbis 44100Hz [CBR Stereo] 40.000kbps\n0.200"},
        {"flac", OggBuilder(flac_head).page(0, 0, {Data(9)}).page(4, 8820, {Data(5000)}).bytes,
            "[Ogg]\nA [FLAC] 44100Hz 2ch 16Bit 200.000kbps\n0.200"},
        {"flac in its first mapping",
            OggBuilder()
                .page(2, 0, {ByteBuilder().text("fLaC").bytes})
                .page(0, 0, {stream_info, flac_comments})
                .page(4, 8820, {Data(5000)})
                .bytes,
            "[Ogg]\nA [FLAC] 44100Hz 2ch 16Bit 200.000kbps\nI T / libFLAC\n0.200"},
        {"ogm",
            OggBuilder()
                .page(2, 0, {ogm_head("video", "XVID", 400000, 1, ByteBuilder().le32(640).le32(480).bytes)})
                .stream(2)
                .page(2, 0, {ogm_head("audio", "0055", 10000000, 44100, ByteBuilder().le16(2).le16(0).le32(16000).bytes)})
                .stream(3)
                .page(2, 0, {ogm_head("text", "", 10000, 1, Data(8))})
                .stream(1)
                .page(0, 50, {Data(9), Data(1000)})
                .stream(2)
                .page(0, 88200, {Data(9), Data(4000)})
                .bytes,
            "[Ogg(OGM)]\nV 640x480 [C\x96\xB3XVID] 25.000fps 4.028kbps 50f\n"
            "A [C\x96\xB3"
            "0055] 44100Hz 2ch 16.028kbps\nX [text]\n2.000"},
        {"ogm sound, its tag without zeros, beside comments that are none",
            OggBuilder()
                .page(2, 0, {ogm_head("audio", {"55\0\0", 4}, 10000000, 44100, ByteBuilder().le16(2).le16(0).le32(16000).bytes)})
                .page(0, 0, {ByteBuilder().u8(3).text("vorbisENCODER=seed").u8(0).bytes})
                .page(4, 88200, {Data(9), Data(4000)})
                .bytes,
            "[Ogg(OGM)]\nA [C\x96\xB3"
            "0055] 44100Hz 2ch 16.028kbps\n2.000"},
        {"ogm by its first packets, behind flags and lengths",
            OggBuilder()
                .page(2, 0, {ogm_head("video", "XVID", 400000, 1, ByteBuilder().le32(640).le32(480).bytes)})
                .stream(2)
                .page(2, 0, {ogm_head("audio", "0055", 10000000, 44100, ByteBuilder().le16(2).le16(0).le32(16000).bytes)})
                .stream(3)
                .page(2, 0, {ogm_head("audio", "0001", 10000000, 8000, ByteBuilder().le16(1).le16(2).le32(16000).bytes)})
                .stream(1)
                .page(0, 0, {ByteBuilder().u8(3).text("vorbis").append(comment_block("v", {})).bytes})
                .page(0, 50, {ByteBuilder().u8(0x48).u8(1).be32(0x1B2).text("XviD0046").pad_to(1000).bytes})
                .stream(2)
                .page(0, 88200, {ByteBuilder().u8(0x82).fill(6).be32(0xFFFB9000).pad_to(4000).bytes})
                .bytes,
            "[Ogg(OGM)]\nV 640x480 [C\x96\xB3XviD0046] 25.000fps 3.992kbps 50f\n"
            "A MPEG1-LayerIII 44100Hz [VBR Stereo] 15.97kbps [417bpf] \nA [C\x96\xB3"
            "0001] 8000Hz 1ch 16Bit 128.000kbps\nI v\n2.000"},
        {"unknown stream", OggBuilder().page(2, 0, {Data(40, 7)}).page(0, 5, {Data(5)}).bytes,
            "[Ogg]\nX [unknown stream]\n0.000"},
        {"unknown stream in front of another",
            OggBuilder().page(2, 0, {Data(40, 7)}).stream(2).page(2, 0, {opus_head()}).page(0, 960, {opus_packet(99)}).bytes,
            "[Ogg]\nA [Opus] 48000Hz 2ch 58.667kbps\nX [unknown stream]\n0.013"},
        {"positions that count no frames",
            OggBuilder().page(2, 0, {ByteBuilder().text("BBCD").fill(14).bytes}).page(0, 1 << 22, {Data(5)}).bytes,
            "[Ogg]\nV [Dirac]\n0.000"},
        {"CELT",
            OggBuilder()
                .page(2, 0, {ByteBuilder().text("CELT    ").pad_to(36).le32(48000).le32(2).pad_to(60).bytes})
                .page(4, 48000, {Data(500)})
                .bytes,
            "[Ogg]\nA [CELT] 48000Hz 2ch 4.000kbps\n1.000"},
        {"PCM",
            OggBuilder()
                .page(2, 0, {ByteBuilder().text("PCM     ").pad_to(16).be32(8000).raw({16, 1}).pad_to(28).bytes})
                .page(4, 4000, {Data(8000)})
                .bytes,
            "[Ogg]\nA [PCM] 8000Hz 1ch 16Bit 128.000kbps\n0.500"},
        {"same serial over and over",
            OggBuilder()
                .page(2, 0, {opus_head()})
                .page(2, 0, {opus_head(0, 1)})
                .page(2, 0, {opus_head(0, 1)})
                .stream(2)
                .page(2, 0, {opus_head()})
                .bytes,
            "[Ogg]\nA [Opus] 48000Hz 2ch\nA [Opus] 48000Hz 2ch\n0.000"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = info_of(row.bytes);
        EXPECT_EQ(lines_of(*record), row.label_and_lines);
        EXPECT_EQ(record->data_size, row.bytes.size());
    }
}

TEST(Ogg, reads_a_large_file_at_its_ends_only) {
    OggBuilder file;
    file.page(2, 0, {opus_head()}).page(0, 0, {opus_tags({"METADATA_BLOCK_PICTURE=x"})});
    const int packets = 500;
    for (int i = 1; i <= packets; ++i) {
        file.page(0, 960 * i + 312, {opus_packet(5000)});
    }
    EXPECT_EQ(lines_of(*info_of(file.bytes)), "[Ogg]\nA [Opus] 48000Hz 2ch ~2018.901kbps\nI libopus\n10.000");
    // Room for what has not come yet.
    OggBuilder filled = file;
    filled.bytes.resize(filled.bytes.size() + 2'000'000);
    EXPECT_EQ(lines_of(*info_of(filled.bytes)),
        "[Ogg]\nA [Opus] 48000Hz 2ch ~2018.901kbps\nX trailing data(2,000,000 Byte)\nI libopus\n10.000");
    // A further link that is as long.
    OggBuilder chain = file;
    chain.stream(2).page(2, 0, {opus_head()}).page(0, 0, {opus_tags()});
    for (int i = 1; i <= packets; ++i) {
        chain.page(0, 960 * i + 312, {opus_packet(5000)});
    }
    const auto record = info_of(chain.bytes);
    EXPECT_NEAR(record->play_time, 20, 0.5);
    EXPECT_STREQ(record->extra[0], "chained");
    EXPECT_STREQ(record->extra[1], "time estimated");
    InfoRecord thorough = {};
    const TempFile temporary(chain.bytes);
    temporary.path.copy(thorough.path, sizeof thorough.path - 1);
    thorough.options = 1;
    GetInfo(&thorough);
    EXPECT_EQ(lines_of(thorough), "[Ogg]\nA [Opus] 48000Hz 2ch 2000.000kbps\nX chained(2)\nI libopus\n20.000");
}

TEST(Ogg, fills_the_details) {
    EXPECT_EQ(details_text(*details_of(theora_and_vorbis())),
        "Ogg title=A film writer=v duration=2.000 bit_rate=6192\n"
        "video id=1 duration=2.000 bit_rate=4000 bytes=1000 frame_rate=25.000 frames=50 size=320:240 pixel=4:3 display=16:9 "
        "fps_ratio=25:1 bit_depth=8 codec=Theora codec_id=theora profile=3.2.1 encoder=v chroma=4:2:0\n"
        "audio mode=2 id=2 duration=0.100 bit_rate=8000 nominal_bit_rate=96000 bytes=100 samples=4410 sample_rate=44100 "
        "channels=2 "
        "codec=Vorbis codec_id=vorbis language=jpn encoder=w layout=L R");
    // A claim that the first frame repeats is none.
    OggBuilder ogm;
    ogm.page(2, 0, {ogm_head("audio", "0055", 10000000, 44100, ByteBuilder().le16(2).le16(0).le32(16000).bytes)});
    ogm.page(0, 44100, {ByteBuilder().u8(8).be32(0xFFFB9000).pad_to(16001).bytes});
    EXPECT_EQ(details_text(*details_of(ogm.bytes)),
        "Ogg duration=1.000 bit_rate=129376\n"
        "audio id=1 duration=1.000 bit_rate=128000 bytes=16000 samples=44100 sample_rate=44100 channels=2 codec=MP3 "
        "codec_id=0x0055 layout=L R");
    // Two units a second, from 3 on for 1; a stream without data, of a rate and channels that none has.
    const Data kate_head = ByteBuilder()
                               .u8(0x80)
                               .text("kate")
                               .fill(4)
                               .raw({0, 7, 2, 0, 0, 0, 32})
                               .fill(8)
                               .le32(2)
                               .le32(1)
                               .text("ja")
                               .pad_to(64)
                               .bytes;
    const Data kate_comments = ByteBuilder().u8(0x81).text("kate").fill(4).append(comment_block("v", {"LANGUAGE=jpn"})).bytes;
    Data nonsense = vorbis_head(0, 96000, 0);
    nonsense[11] = 255;
    nonsense[15] = 255;
    OggBuilder file;
    file.page(2, 0, {kate_head}).stream(2).page(2, 0, {nonsense}).page(0, 0, {Data(9), Data(9)});
    file.stream(1).page(0, 0, {kate_comments}).page(0, (int64_t{3} << 32) + 1, {Data(10)});
    EXPECT_EQ(details_text(*details_of(file.bytes)),
        "Ogg writer=v\n"
        "text id=1 duration=2.000 bit_rate=40 bytes=10 codec=Kate codec_id=Kate language=jpn encoder=v\n"
        "audio flags=64 mode=2 id=2 nominal_bit_rate=96000 codec=Vorbis codec_id=vorbis");
}

TEST(Ogg, survives_every_cut_and_lies) {
    expect_sound_at_every_length(theora_and_vorbis());
    // A comment that claims four gigabytes, and items that run past the packet.
    const Data lying =
        ByteBuilder().text("OpusTags").le32(4).text("vend").le32(0xFFFFFFFF).le32(0xFFFFFFF0).text("TITLE=x").bytes;
    EXPECT_EQ(lines_of(*info_of(OggBuilder().page(2, 0, {opus_head()}).page(0, 0, {lying}).bytes)),
        "[Ogg]\nA [Opus] 48000Hz 2ch\nI vend\n0.000");
    // Links of streams whose second packets are looked for in all that follows.
    OggBuilder links;
    for (uint32_t serial = 0; links.bytes.size() < 1'000'000;) {
        for (int i = 0; i < 12; ++i) {
            links.stream(++serial).page(2, 0, {ByteBuilder().text("fLaC").bytes});
        }
        links.page(0, 5, {Data(2)}).page(0, 6, {Data(2)});
    }
    EXPECT_STREQ(details_of(links.bytes)->notes, "chained\nwork limit");
    // Empty pages without end.
    OggBuilder empty;
    empty.page(2, 0, {opus_head()});
    for (int i = 0; i < 30000; ++i) {
        empty.raw_page(0, -1, {}, {});
    }
    expect_sound(*info_of(empty.bytes));
}

} // namespace

} // namespace zat::test::ogg_test
