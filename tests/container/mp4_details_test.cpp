#include "support/atom_builder.h"
#include "support/details_text.h"
#include "support/temp_file.h"
#include "support/video_builder.h"

#include <gtest/gtest.h>

namespace zat::test::mp4_details_test {

struct Row {
    const char* name;
    Data bytes;
    std::string expected;
};

void expect_rows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(details_text(*details_of(row.bytes)), row.expected) << row.name;
    }
}

// A version and flags of 0, then the rest.
ByteBuilder full() {
    return ByteBuilder().be32(0);
}

Data handler(std::string_view type, std::string_view name = "") {
    return atom("hdlr", full().be32(0).text(type).fill(12).text(name).u8(0).bytes);
}

Data media_header(uint64_t scale, uint64_t duration, uint64_t language) {
    return atom("mdhd", full().be64(0).be32(scale).be32(duration).be16(language).be16(0).bytes);
}

constexpr uint64_t undetermined = 0x55C4;
constexpr uint64_t japanese = 0x2A0E;

struct TrackParts {
    uint64_t id = 1;
    uint64_t flags = 1; // enabled
    std::string_view type = "vide";
    Data header = media_header(1000, 2000, undetermined);
    std::string_view name = "VideoHandler";
    Data tables = {};
    Data others = {}; // beside the media
};

Data track(const TrackParts& parts) {
    const Data header = ByteBuilder().be32(parts.flags).be64(0).be32(parts.id).fill(60).be32(320U << 16).be32(240U << 16).bytes;
    return atom(
        "trak", {atom("tkhd", header), parts.others,
                    atom("mdia", {parts.header, handler(parts.type, parts.name), atom("minf", {atom("stbl", parts.tables)})})});
}

Data tables(const Data& entry, const Data& size_table, uint64_t sample_duration = 0) {
    const Data durations = atom("stts", full().be32(1).be32(1).be32(sample_duration).bytes);
    return join({descriptions({entry}), size_table, sample_duration != 0 ? durations : Data{}});
}

Data file(std::initializer_list<Data> children, std::string_view brand = "isom") {
    return join({file_type(brand), atom("moov", {movie_header(1000, 2000), join(children)})});
}

std::string head(
    const Data& bytes, const std::string& between = "", const std::string& format = "MP4 profile=isom", size_t missing = 0) {
    char rate[32];
    std::snprintf(rate, sizeof rate, "%zu", (bytes.size() + missing) * 4);
    return format + between + " duration=2.000 bit_rate=" + rate;
}

const Data sps = {0x67, 0x42, 0, 0x1E, 0xDA, 0x05, 0x07, 0xE4}; // Baseline, level 3, 320 x 240
const Data avc = atom("avcC", ByteBuilder().raw({1, 66, 0, 30, 0xFF, 0xE1}).be16(8).append(sps).bytes);

const std::string avc_facts = " size=320:240 pixel=1:1 display=4:3 fps_ratio=25:1 scan=1 bit_depth=8 codec=H.264";

TEST(Mp4Details, tells_the_truth_of_video) {
    const Data ticks = tables(video_entry("avc1", {avc}), sizes({1000, 500}), 40);
    const Data colour = atom("colr", ByteBuilder().text("nclx").be16(9).be16(16).be16(9).u8(0x80).bytes);
    const Data fields = atom("fiel", {2, 9});
    const Data wide = atom("pasp", ByteBuilder().be32(4).be32(3).bytes);
    const Data scheme = atom("sinf", {atom("frma", ByteBuilder().text("avc1").bytes)});
    const Data names =
        atom("udta", {atom("name", ByteBuilder().text("Angle 2").bytes),
                         atom("kind", full().text("urn:mpeg:dash:role:2011").u8(0).text("commentary").u8(0).bytes)});
    ByteBuilder edits = full().be32(102).be32(300).be32(0xFFFFFFFF).be32(0x10000).be32(200).be32(0xFFFFFFFF).be32(0x10000);
    for (int i = 0; i < 100; ++i) {
        edits.be32(15).be32(0).be32(0x10000);
    }
    const Data empty_edit = atom("edts", {atom("elst", edits.bytes)});
    const Data plain = file({track({.tables = ticks})});
    const Data rich = file({track({.flags = 0,
        .header = media_header(1000, 2000, japanese),
        .tables = tables(video_entry("encv", {avc, colour, fields, wide, scheme}), sizes({1000, 500}), 40),
        .others = join({names, empty_edit})})});
    const Data picture =
        join({sequence_header({.width = 320, .height = 240, .aspect = 2, .rate = 3}), sequence_extension({.chroma = 2})});
    const Data front = join({file_type("isom"), atom("mdat", picture)});
    const Data mpeg2 = join({front,
        atom("moov", {movie_header(1000, 2000), track({.tables = join({tables(video_entry("m2v1"), sizes({1000, 500}), 40),
                                                           first_chunk(front.size() - picture.size())})})})});
    const std::string rates = " bit_rate=6000 bytes=1500 frame_rate=25.000 frames=2";
    expect_rows({
        {"plain", plain,
            head(plain) + "\nvideo flags=1 id=1 duration=2.000" + rates + avc_facts +
                " codec_id=avc1 profile=Baseline level=3 chroma=4:2:0"},
        {"MPEG-2 by its first picture", mpeg2,
            head(mpeg2) +
                "\nvideo flags=1 id=1 duration=2.000 bit_rate=6000 nominal_bit_rate=8000000 bytes=1500 frame_rate=25.000"
                " frames=2 size=320:240 pixel=1:1 display=4:3 fps_ratio=25:1 scan=2 bit_depth=8 codec=MPEG-2 Video"
                " codec_id=m2v1 profile=Main level=Main chroma=4:2:2"},
        {"encrypted, delayed, with its own aspect, colour and fields", rich,
            head(rich) + "\nvideo flags=36 id=1 start=0.500 duration=1.500" + rates +
                " size=320:240 pixel=4:3 display=16:9 fps_ratio=25:1 scan=2 field_order=2 bit_depth=8 codec=H.264"
                " codec_id=encv profile=Baseline level=3 language=jpn title=Angle 2 chroma=4:2:0 primaries=BT.2020"
                " transfer=PQ matrix=BT.2020 range=full hdr=HDR10"},
    });
}

TEST(Mp4Details, tells_the_truth_of_sound) {
    const auto sound = [](const Data& entry, const Data& table, uint64_t scale = 44100) {
        return file(
            {track(
                {.type = "soun", .header = media_header(scale, 2 * scale, 0x7FFF), .name = "", .tables = tables(entry, table)})},
            "qt  ");
    };
    const auto line = [](const Data& bytes, const std::string& facts) {
        return head(bytes, "", "QuickTime profile=qt") + "\naudio flags=" + facts;
    };
    const Data he = es_descriptor(0x40, {0x2B, 0x92, 0x08, 0x00}, 64000); // SBR of 22050 Hz, stereo
    const Data flac = atom("dfLa", full().be32(0x80000022).fill(10).be64(0x0BB802F000000000).fill(16).bytes);
    const Data dolby = atom("dec3", ByteBuilder().be16(448 << 3).be24(0x200F02).u8(0).bytes);
    const Data opus = atom("dOps", ByteBuilder().u8(0).u8(6).be16(312).be32(44100).be16(0).u8(1).bytes);
    const Data he_file = sound(audio_entry("mp4a", {he}), sizes({8000, 8000}));
    const auto speaker = [](uint64_t label) { return ByteBuilder().be32(label).fill(16).bytes; };
    const Data layout = atom("chan", {full().be32(0).be32(0).be32(2).bytes, speaker(5), speaker(6)});
    const Data pcm = sound(audio_entry("sowt", {layout}), constant_sizes(1, 88200));
    const Data mace = sound(audio_entry("MAC6"), constant_sizes(1, 88200));
    const Data flac_file = sound(audio_entry("fLaC", {flac}), sizes({100}), 48000);
    const Data dolby_file = sound(audio_entry("ec-3", {dolby}), constant_sizes(1792, 62), 48000);
    const Data opus_file = sound(audio_entry("Opus", {opus}), sizes({100}), 48000);
    expect_rows({
        {"SBR that is announced", he_file,
            line(he_file, "1 id=1 duration=2.000 bit_rate=64000 bytes=16000 samples=88200 sample_rate=44100 channels=2 codec=AAC "
                          "codec_id=mp4a"
                          " profile=HE-AAC layout=L R")},
        {"PCM by samples of one byte", pcm,
            line(pcm, "1 mode=1 id=1 duration=2.000 bit_rate=1411200 bytes=352800 samples=88200 sample_rate=44100 channels=2 "
                      "bit_depth=16"
                      " codec=PCM codec_id=sowt profile=signed 16 LE layout=Lb Rb")},
        {"packets of a format", mace,
            line(mace, "1 mode=1 id=1 duration=2.000 bit_rate=117600 bytes=29400 samples=88200 sample_rate=44100 channels=2"
                       " codec=MACE 6:1 codec_id=MAC6")},
        {"FLAC", flac_file,
            line(flac_file, "129 id=1 duration=2.000 bit_rate=400 bytes=100 samples=96000 sample_rate=48000 channels=2 "
                            "bit_depth=16 codec=FLAC"
                            " codec_id=fLaC layout=L R")},
        {"E-AC-3", dolby_file,
            line(dolby_file, "1 mode=1 id=1 duration=2.000 bit_rate=444416 bytes=111104 samples=96000 sample_rate=48000 "
                             "channels=6 codec=E-AC-3"
                             " codec_id=ec-3 layout=L R C LFE Ls Rs")},
        {"Opus", opus_file,
            line(opus_file, "1 id=1 duration=2.000 bit_rate=400 bytes=100 samples=96000 sample_rate=48000 channels=6 codec=Opus "
                            "codec_id=Opus layout=L R C LFE Lb Rb")},
    });
}

Data item(std::string_view type, uint64_t value_type, const Data& value) {
    return atom(type, {atom("data", ByteBuilder().be32(value_type).be32(0).append(value).bytes)});
}

TEST(Mp4Details, tells_text_tracks_chapters_and_metadata) {
    const Data list =
        atom("ilst", {item("\xA9nam", 1, ByteBuilder().text("Caf\xC3\xA9").bytes),
                         item("\xA9"
                              "ART",
                             2, {0xFF, 0xFE, 'A', 0, 'B', 0}),
                         item("\xA9too", 3, {0x93, 0xFA, 0x96, 0x7B}), item("covr", 13, {1}), item("desc", 1, {'x'})});
    const Data user = atom("udta", {atom("meta", full().append(handler("mdir")).append(list).bytes)});
    const Data subtitle = atom("tx3g", ByteBuilder().fill(6).be16(1).be32(0x80000000).bytes);
    const Data referring = atom("tref", {atom("chap", ByteBuilder().be32(9).bytes)});
    const Data bytes =
        join({file({user, track({.id = 7, .type = "sbtl", .tables = tables(subtitle, sizes({50, 50})), .others = referring}),
                  track({.id = 8,
                      .type = "tmcd",
                      .name = "",
                      .tables = tables(atom("tmcd", ByteBuilder().fill(6).be16(1).bytes), sizes({4}))}),
                  track({.id = 9,
                      .type = "text",
                      .tables = tables(atom("text", ByteBuilder().fill(6).be16(1).bytes), sizes({9, 9, 9}))}),
                  track({.id = 10, .type = "vide"})}),
            atom("mdat", {1, 2, 3}, 111)});
    expect_rows({{"all", bytes,
        head(bytes, " title=Caf\xC3\xA9 artist=AB writer=\xE6\x97\xA5\xE6\x9C\xAC notes=truncated", "MP4 profile=isom", 100) +
            " missing=100 chapters=3 pictures=1"
            "\ntext flags=3 id=7 duration=2.000 bit_rate=400 bytes=100 codec=timed text codec_id=tx3g"
            "\ndata flags=1 id=8 duration=2.000 bit_rate=16 bytes=4 codec=timecode codec_id=tmcd"
            "\nvideo flags=65 id=10 duration=2.000"}});
}

// Texts of QuickTime's user data: their bytes, a language, the text.
TEST(Mp4Details, tells_roles_and_international_texts) {
    const auto international = [](std::string_view type, std::string_view text, uint64_t length) {
        return atom(type, ByteBuilder().be16(length).be16(0).text(text).bytes);
    };
    const Data titled = atom("titl", full().be16(0).raw({0xFE, 0xFF, 0, 'T'}).bytes);
    const Data user = atom("udta", {international("\xA9"
                                                  "ART",
                                        "Maker", 5),
                                       titled, international("\xA9swr", "Cut at", 3)});
    const auto role = [](std::string_view tag) { return atom("tagc", ByteBuilder().text(tag).bytes); };
    const Data sound = track({.type = "soun",
        .tables = tables(audio_entry("sawb"), sizes({32, 32})),
        .others = atom("udta", {international("\xA9nam", "Told", 99), role("public.accessibility.describes-video")})});
    const Data text = track({.id = 2,
        .type = "sbtl",
        .tables = tables(atom("tx3g", ByteBuilder().fill(6).be16(1).be32(0).bytes), sizes({50})),
        .others = atom("udta", {role("public.subtitles.forced-only"), role("public.accessibility.transcribes-spoken-dialog")})});
    const Data bytes = file({user, sound, text});
    expect_rows({{"all", bytes,
        head(bytes, " title=T artist=Maker writer=Cut") +
            "\naudio flags=17 id=1 duration=2.000 bit_rate=256 bytes=64 sample_rate=16000 channels=1 codec=AMR-WB codec_id=sawb"
            " title=Told"
            "\ntext flags=11 id=2 duration=2.000 bit_rate=200 bytes=50 codec=timed text codec_id=tx3g"}});
}

TEST(Mp4Details, tells_which_tracks_of_fragments_have_no_data) {
    const Data announced =
        file({track({.type = "text", .name = ""}), track({.id = 2, .type = "text", .name = ""}), atom("mvex", Data{})});
    const Data run = atom("trun", ByteBuilder().be32(0x300).be32(1).be32(1000).be32(50).bytes);
    const Data fragment = atom("moof", {atom("traf", {atom("tfhd", full().be32(2).bytes), run})});
    const Data whole = join({announced, fragment});
    const std::string second = "text flags=1 id=2 duration=2.000";
    expect_rows({
        {"an initialisation segment", announced, head(announced) + "\ntext flags=1 id=1 duration=2.000\n" + second},
        {"a fragment of the second track", whole,
            head(whole) + "\ntext flags=65 id=1 duration=2.000\n" + second + " bit_rate=400 bytes=50"},
    });
}

TEST(Mp4Details, reads_headers_of_version_1) {
    const Data movie = atom("mvhd", ByteBuilder().be32(1 << 24).be64(3786825600).be64(0).be32(1000).be64(2000).bytes);
    const Data media = atom("mdhd", ByteBuilder().be32(1 << 24).be64(0).be64(0).be32(1000).be64(2000).be16(0).be16(0).bytes);
    const Data extended = atom("elng", full().text("pt-BR").u8(0).bytes);
    const Data bytes =
        join({file_type("isom"), atom("moov", {movie, track({.type = "soun",
                                                          .header = join({media, extended}),
                                                          .tables = tables(audio_entry("samr"), sizes({32, 32}))})})});
    expect_rows({{"all", bytes,
        head(bytes, " created=2023-12-31T00:00:00Z") +
            "\naudio flags=1 id=1 duration=2.000 bit_rate=256 bytes=64 sample_rate=8000 channels=1 codec=AMR-NB codec_id=samr"
            " language=pt-BR"}});
}

} // namespace zat::test::mp4_details_test
