#include "container/matroska.h"

#include "support/audio_builder.h"
#include "support/details_text.h"
#include "support/ebml_builder.h"
#include "support/record_text.h"
#include "support/temp_file.h"
#include "support/video_builder.h"

#include <gtest/gtest.h>

namespace zat::test::matroska_test {
namespace {

constexpr uint64_t video = 1;
constexpr uint64_t audio = 2;
constexpr uint64_t subtitle = 0x11;

Data track(uint64_t index, uint64_t type, std::string_view codec, std::initializer_list<Data> more = {}) {
    ByteBuilder entry;
    entry.append(number(0xD7, index)).append(number(0x73C5, 100 + index)).append(number(0x83, type));
    entry.append(words(0x86, codec));
    for (const Data& each : more) {
        entry.append(each);
    }
    return element(0xAE, entry.bytes);
}

Data picture(uint64_t width, uint64_t height, std::initializer_list<Data> more = {}) {
    ByteBuilder settings;
    settings.append(number(0xB0, width)).append(number(0xBA, height));
    for (const Data& each : more) {
        settings.append(each);
    }
    return element(0xE0, settings.bytes);
}

Data sound(double rate, uint64_t channels, uint64_t bits = 0) {
    return element(0xE1, {real(0xB5, rate), number(0x9F, channels), bits != 0 ? number(0x6264, bits) : Data{}});
}

Data codec_private(const Data& bytes) {
    return element(0x63A2, bytes);
}

Data block(uint64_t index, int64_t time, const Data& frame) {
    return element(0xA3, ByteBuilder().u8(0x80 | index).be16(static_cast<uint64_t>(time)).u8(0x80).append(frame).bytes);
}

// `lacing` with the bytes of its count and sizes.
Data laced_block(uint64_t index, int lacing, std::initializer_list<int> sizes, size_t payload) {
    ByteBuilder to;
    to.u8(0x80 | index).be16(0).u8(static_cast<uint64_t>(lacing)).raw(sizes).fill(payload);
    return element(0xA3, to.bytes);
}

Data group(uint64_t index, int64_t time, uint64_t duration, const Data& frame) {
    const Data inner = ByteBuilder().u8(0x80 | index).be16(static_cast<uint64_t>(time)).u8(0).append(frame).bytes;
    return element(0xA0, {element(0xA1, inner), number(0x9B, duration)});
}

Data cluster(uint64_t time, const Data& blocks) {
    return element(0x1F43B675, {number(0xE7, time), blocks});
}

Data info(double duration, std::initializer_list<Data> more = {}) {
    ByteBuilder all;
    all.append(real(0x4489, duration)).append(words(0x5741, "writer"));
    for (const Data& each : more) {
        all.append(each);
    }
    return element(0x1549A966, all.bytes);
}

Data tracks(std::initializer_list<Data> entries) {
    return element(0x1654AE6B, entries);
}

Data tag(uint64_t uid, std::initializer_list<std::pair<std::string_view, std::string_view>> items, uint64_t level = 50) {
    ByteBuilder all;
    all.append(element(0x63C0, {number(0x68CA, level), uid != 0 ? number(0x63C5, uid) : Data{}}));
    for (const auto& [name, value] : items) {
        all.append(element(0x67C8, {words(0x45A3, name), words(0x4487, value)}));
    }
    return element(0x7373, all.bytes);
}

const Data head = element(0x1A45DFA3, {words(0x4282, "matroska")});

Data file(std::initializer_list<Data> children, const Data& behind = {}) {
    return join_elements({head, element(0x18538067, children), behind});
}

Data live_file(std::initializer_list<Data> children) {
    return join_elements({head, unknown_element(0x18538067, children)});
}

Data vp8_frame(size_t size) {
    return ByteBuilder().raw({0x10, 0, 0, 0x9D, 1, 0x2A, 0x40, 1, 0xF0, 0}).pad_to(size).bytes;
}

// Blocks of `size` bytes, `step` apart, from 0 on.
Data blocks(uint64_t index, int count, int64_t step, size_t size) {
    ByteBuilder all;
    for (int i = 0; i < count; ++i) {
        all.append(block(index, i * step, i == 0 ? vp8_frame(size) : Data(size)));
    }
    return all.bytes;
}

const Data vp8 = track(1, video, "V_VP8", {number(0x23E383, 40'000'000), picture(320, 240)});
const Data ten_frames = cluster(0, blocks(1, 10, 40, 1000));
const std::string ten = "V 320x240 [VP8] 8Bit 25.000fps 200.000kbps 10f";

struct Row {
    const char* name;
    Data bytes;
    std::string expected;
};

void expect_lines(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = info_of(row.bytes);
        expect_sound(*record);
        EXPECT_EQ(record_text(*record), row.expected);
    }
}

TEST(Matroska, describes_streams_of_every_kind) {
    const Data opus_head = ByteBuilder().text("OpusHead").u8(1).u8(6).le16(312).le32(44100).le16(0).u8(1).bytes;
    const Data stream_info = ByteBuilder().be16(4096).be16(4096).be24(0).be24(0).be32(0x0AC442F0).be32(1000).fill(16).bytes;
    const Data flac = ByteBuilder().text("fLaC").u8(0x80).be24(34).append(stream_info).bytes;
    const Data name = words(0x536E, "A name");
    expect_lines({
        {"video with all that lines show",
            file({info(400, {words(0x7BA9, "A film")}),
                tracks({track(1, video, "V_VP8",
                    {number(0x23E383, 40'000'000),
                        picture(320, 240,
                            {number(0x9A, 2), number(0x54B0, 426), number(0x54BA, 240), number(0x54CC, 8), number(0x54DD, 8)}),
                        words(0x22B59C, "jpn"), name, number(0x55AA, 1)})}),
                ten_frames}),
            "V 304x240 [VP8] 8Bit 25.000fps 200.000kbps 10f Progressive display 426x240 jpn \"A name\" forced\n"
            "I A film / writer\n0.400"},
        {"no identifier of a codec", file({info(400), tracks({track(1, video, "", {picture(320, 240)})})}),
            "V 320x240 []\nI writer\n0.400"},
        {"sound, each by its header",
            file({info(1000),
                tracks({track(1, audio, "A_OPUS", {codec_private(opus_head), sound(44100, 2)}),
                    track(2, audio, "A_FLAC", {codec_private(flac), sound(8000, 1)}),
                    track(3, audio, "A_PCM/INT/LIT", {sound(48000, 2, 16)}),
                    track(4, audio, "A_AAC", {codec_private({0x12, 0x10}), sound(44100, 2)}),
                    track(5, audio, "A_AAC/MPEG4/LC/SBR", {sound(24000, 2)}), track(6, audio, "A_NEW\nCODEC", {sound(96000, 8)}),
                    track(7, audio, "A_SPEEX", {sound(16000, 1)}),
                    track(8, audio, "A_AAC", {codec_private({0x17, 0x80, 0x5D, 0xC0, 0x10}), sound(48000, 2)})}),
                ten_frames}),
            "A [Opus] 48000Hz 6ch(L+R+C+LFE+BL+BR) 200.000kbps\nA [FLAC] 44100Hz 2ch 16Bit\nA [PCM] 48000Hz 2ch 16Bit "
            "1536.000kbps\n"
            "A [AAC LC] 44100Hz stereo(L,R)\nA [AAC HE+SBR] 48000Hz stereo(L,R)\n"
            "A [A_NEW?CODEC] 96000Hz 8ch(L+R+C+LFE+BL+BR+SL+SR)\nA [Speex] 16000Hz 1ch\nA [AAC LC] custom\nI writer\n1.000"},
        {"MPEG-2 with the extension in the pictures only, and nowhere",
            file({info(40),
                tracks({track(1, video, "V_MPEG2", {codec_private(sequence_header({})), picture(720, 480)}),
                    track(2, video, "V_MPEG2", {codec_private(sequence_header({})), picture(720, 480)})}),
                cluster(
                    0, block(1, 0, ByteBuilder().append(sequence_header({.aspect = 2})).append(sequence_extension({})).bytes))}),
            "V MPEG2 720x480 4:3 8000kbps 29.97fps 229376Byte Interlace MP@ML\n"
            "V MPEG2 720x480 16:9 8000kbps 29.97fps 229376Byte Interlace\nI writer\n0.040"},
        {"subtitles, chapters, attachments, in their order",
            file({info(1000),
                tracks({track(1, subtitle, "S_TEXT/UTF8", {words(0x22B59C, "jpn"), words(0x22B59D, "ja")}),
                    track(2, subtitle, "S_HDMV/PGS", {words(0x22B59C, "chi"), words(0x22B59D, "zh-TW"), number(0x55AB, 1)}),
                    track(3, subtitle, "S_TEXT/SSA"), track(4, 0x21, "B_VOBBTN")}),
                element(0x1043A770,
                    {element(0x45B9, {element(0xB6, {Data{}})}),
                        element(0x45B9, {number(0x45DB, 1), element(0xB6, {element(0xB6, {Data{}})}), element(0xB6, {Data{}})})}),
                element(0x1941A469, {element(0x61A7, {words(0x4660, "image/png"), element(0x465C, Data(5000))})})}),
            "X [SubRip] jpn\nX [PGS] zh-TW hearing impaired\nX [SSA] eng\nX [VobBtn] eng\n"
            "X \x83\x60\x83\x83\x83\x76\x83\x5E\x81\x5B(2)\nX attachments(1)\nI writer\n1.000"},
    });
}

TEST(Matroska, fills_the_details) {
    const Data colour =
        element(0x55B0, {number(0x55B1, 9), number(0x55BA, 16), number(0x55BB, 9), number(0x55B9, 1), number(0x55B2, 8)});
    const Data bytes = file({info(400, {words(0x7BA9, "A film")}),
        tracks({track(7, video, "V_VP8",
                    {number(0x23E383, 41'708'333),
                        picture(320, 240, {colour, number(0x54B0, 4), number(0x54BA, 3), number(0x54B2, 3)})}),
            track(9, audio, "A_PCM/FLOAT/IEEE", {sound(48000, 1, 32), number(0x88, 0)})}),
        cluster(40, blocks(7, 10, 40, 1000)),
        element(
            0x1254C367, {tag(109, {{"ENCODER", "Lavc"}, {"DURATION", "00:00:00.400000000"}}), tag(0, {{"ARTIST", "Troupe"}})})});
    EXPECT_EQ(details_text(*details_of(bytes)),
        "Matroska title=A film artist=Troupe writer=writer duration=0.400 bit_rate=219500\n"
        "video flags=1 id=7 start=0.040 duration=0.402 bit_rate=199149 bytes=10000 frame_rate=23.976 frames=10 size=320:240 "
        "pixel=1:1 "
        "display=4:3 fps_ratio=24000:1001 bit_depth=8 codec=VP8 codec_id=V_VP8 chroma=4:2:0 primaries=BT.2020 transfer=PQ "
        "matrix=BT.2020 range=limited hdr=HDR10\n"
        "audio flags=64 mode=1 id=9 duration=0.400 bit_rate=1536000 sample_rate=48000 channels=1 bit_depth=32 codec=PCM "
        "codec_id=A_PCM/FLOAT/IEEE profile=float 32 LE encoder=Lavc");

    // Neither a display nor, for the extension of DTS, a rate in the headers.
    const Data dts =
        ByteBuilder().be64(0x7FFE8001FC3C3FF0).be64(0xB5E0013800000000).pad_to(1024).append(dts_extension(1, 0)).bytes;
    const auto plain = details_of(
        file({info(1000), tracks({track(1, video, "V_VP8", {picture(320, 240)}), track(2, audio, "A_DTS", {sound(96000, 8)})}),
            cluster(0, join_elements({block(1, 0, vp8_frame(1000)), block(2, 0, dts), block(2, 500, dts)}))}));
    EXPECT_EQ(stream_text(plain->streams[0]),
        "video flags=1 estimated=2 id=1 bit_rate=8544 bytes=1000 frames=1 size=320:240 pixel=1:1 display=4:3 bit_depth=8 "
        "codec=VP8 codec_id=V_VP8 chroma=4:2:0");
    EXPECT_EQ(stream_text(plain->streams[1]),
        "audio flags=129 mode=2 id=2 duration=1.000 bit_rate=17056 bytes=2132 sample_rate=96000 channels=8 bit_depth=24 "
        "codec=DTS codec_id=A_DTS profile=HD MA layout=L R C LFE Lb Rb Ls Rs");

    // QuickTime's sample entries, and Dolby Vision's configuration ("dvcC") beside the codec's.
    const Data vision = element(0x41E4, {number(0x41E7, 0x64766343), element(0x41ED, Data{1, 0, 10, 0x35, 0x10})});
    const auto entry = [](std::string_view code) { return element(0x63A2, ByteBuilder().be32(0).text(code).bytes); };
    const auto entries =
        details_of(file({info(1000), tracks({track(1, video, "V_QUICKTIME", {entry("SVQ3"), picture(320, 240), vision}),
                                         track(2, audio, "A_QUICKTIME", {entry("QDM2"), sound(44100, 2)}),
                                         track(3, video, "V_QUICKTIME", {entry("rle ")})})}));
    EXPECT_EQ(stream_text(entries->streams[0]),
        "video flags=1 id=1 size=320:240 pixel=1:1 display=4:3 codec=Sorenson Video 3 codec_id=V_QUICKTIME hdr=Dolby Vision");
    EXPECT_EQ(stream_text(entries->streams[1]),
        "audio flags=1 id=2 sample_rate=44100 channels=2 codec=QDesign Music 2 codec_id=A_QUICKTIME");
    EXPECT_STREQ(entries->streams[2].codec, "Apple Animation (RLE)");
}

TEST(Matroska, counts_blocks_in_all_their_forms) {
    const Data pcm = track(1, audio, "A_WAVPACK4", {sound(8000, 1)});
    const auto one = [&](const Data& laced) {
        // Two thousand bytes of payload behind the laced block.
        return file({info(1000), tracks({pcm}), cluster(0, join_elements({laced, group(1, 500, 500, Data(2000))}))});
    };
    const auto rate = [](const char* text) { return std::string("A [WavPack] 8000Hz 1ch ") + text + "kbps\nI writer\n1.000"; };
    expect_lines({
        {"Xiph laces", one(laced_block(1, 2, {2, 255, 45, 10}, 300 + 10 + 690)), rate("24.000")},
        {"EBML laces", one(laced_block(1, 6, {2, 0x41, 0x2C, 0xBF}, 1000)), rate("24.000")},
        {"fixed laces", one(laced_block(1, 4, {3}, 1000)), rate("24.000")},
        {"laces of the whole block", one(laced_block(1, 2, {255, 255, 255}, 0)), rate("16.000")},
        {"stripped headers are part of the frames",
            file({info(1000),
                tracks({track(1, audio, "A_WAVPACK4",
                    {sound(8000, 1),
                        element(0x6D80, {element(0x6240, {element(0x5034, {number(0x4254, 3), words(0x4255, "wvpk")})})})})}),
                cluster(0, join_elements({block(1, 0, Data(996)), group(1, 500, 500, Data(1996))}))}),
            rate("24.000")},
        {"those of the private data alone are not",
            file({info(1000),
                tracks({track(1, audio, "A_WAVPACK4",
                    {sound(8000, 1),
                        element(0x6D80, {element(0x6240, {number(0x5032, 2),
                                                             element(0x5034, {number(0x4254, 3), words(0x4255, "wvpk")})})})})}),
                cluster(0, join_elements({block(1, 0, Data(1000)), group(1, 500, 500, Data(2000))}))}),
            rate("24.000")},
        {"statistics count over blocks",
            file({info(1000), tracks({pcm}), cluster(0, join_elements({block(1, 0, Data(9)), block(1, 500, Data(9))})),
                element(0x1254C367, {tag(101, {{"BPS", "99000"}}), tag(55, {{"BPS", "1"}}), tag(0, {{"BPS", "2"}})})}),
            rate("99.000")},
        {"E-AC-3 of two sizes",
            file({info(1000), tracks({track(1, audio, "A_EAC3", {sound(48000, 2)})}),
                cluster(0,
                    join_elements({block(1, 0, eac3_frame(0, 0, 200, 2, 0)), group(1, 32, 32, eac3_frame(0, 0, 600, 2, 0))}))}),
            "A [E-AC-3 2/0] 48000Hz 2ch 100.000kbps\nI writer\n1.000"},
        {"several elements of tags",
            file({info(1000), tracks({pcm}), element(0x1254C367, {tag(55, {{"BPS", "1"}})}),
                element(0x1254C367, {tag(101, {{"BPS", "99000"}})}), cluster(0, block(1, 0, Data(9)))}),
            rate("99.000")},
        {"negative times, a block duration that is none",
            file({info(1000), tracks({pcm}),
                cluster(500, join_elements({block(1, -500, Data(1000)), group(1, 0, unknown_size, Data(1000))}))}),
            rate("16.000")},
    });
}

TEST(Matroska, measures_rates_and_lengths_that_are_not_told) {
    const auto timed = [](std::initializer_list<int64_t> times) {
        ByteBuilder all;
        for (const int64_t time : times) {
            all.append(block(1, time, vp8_frame(100)));
        }
        return file({info(1000), tracks({track(1, video, "V_VP8", {picture(320, 240)})}), cluster(0, all.bytes)});
    };
    const auto shown = [](const char* rate) { return std::string("V 320x240 [VP8] 8Bit ") + rate + "\nI writer\n1.000"; };
    const Data untimed = element(0x1549A966, {words(0x5741, "writer")});
    expect_lines({
        {"whole milliseconds", timed({0, 42, 83, 125, 167, 209, 250}), shown("24.000fps 19.200kbps 7f")},
        {"out of order, with a gap", timed({0, 80, 40, 120, 1000, 1040}), shown("25.000fps 3.846kbps 6f")},
        {"no usual rate", timed({0, 70, 140, 210}), shown("~14.286fps 11.429kbps 4f")},
        {"irregular", timed({0, 13, 97, 350}), shown("~8.571fps 6.857kbps 4f")},
        {"240 frames a second in whole nanoseconds",
            file({info(1000), tracks({track(1, video, "V_VP8", {number(0x23E383, 4'166'666), picture(320, 240)})})}),
            "V 320x240 [VP8] 8Bit 240.000fps ~240f\nI writer\n1.000"},
        {"one time base is no duration of a frame",
            file({info(1000), tracks({track(1, video, "V_VP8", {number(0x23E383, 1'000'000), picture(320, 240)})}), ten_frames}),
            "V 320x240 [VP8] 8Bit 25.000fps 200.000kbps 10f\nI writer\n1.000"},
        {"live, clusters of unknown size",
            live_file({untimed, tracks({vp8}), unknown_element(0x1F43B675, {number(0xE7, 5000), blocks(1, 5, 40, 1000)}),
                unknown_element(0x1F43B675, {number(0xE7, 5200), blocks(1, 5, 40, 1000)})}),
            ten + "\nX live\nI writer\n0.400"},
        {"not a number", file({info(std::bit_cast<double>(0x7FF8000000000000)), tracks({vp8}), ten_frames}),
            ten + "\nI writer\n0.400"},
    });
}

Data seek(uint64_t id, uint64_t position) {
    return element(0x114D9B74, {element(0x4DBB, {element(0x53AB, ByteBuilder().be32(id).bytes), number(0x53AC, position)})});
}

TEST(Matroska, reads_what_seek_heads_point_to_behind_many_clusters) {
    // Clusters beyond the part that is read; the tags stand behind them.
    const Data tags = element(0x1254C367, {tag(101, {{"BPS", "640000"}, {"NUMBER_OF_FRAMES", "77"}})});
    const Data front = join_elements({info(8000), tracks({vp8})});
    const Data large = cluster(0, block(1, 0, vp8_frame(5 << 20)));
    const Data last = cluster(7000, block(1, 0, Data(9 << 20)));
    const auto cue = [](uint64_t time) { return element(0xBB, {number(0xB3, time)}); };
    const size_t position = seek(0, 0).size() + front.size() + 2 * large.size();
    const auto at = [&](uint64_t place, uint64_t id = 0x1254C367) { return file({seek(id, place), front, large, large, tags}); };
    const std::string told = "V 320x240 [VP8] 8Bit 25.000fps 640.000kbps 77f\nI writer\n8.000";
    const std::string not_told = "V 320x240 [VP8] 8Bit 25.000fps ~10485.999kbps ~200f\nI writer\n8.000";
    expect_lines({
        {"found", at(position), told},
        {"another element there", at(position, 0x1043A770), not_told},
        {"within an element", at(position + 1), not_told},
        {"beyond the end", at(uint64_t{1} << 62), not_told},
        {"no duration: the last cluster's end",
            file({tracks({vp8}), large, large,
                element(0x1F43B675, {number(0xA7, 9), number(0xAB, 9), number(0xE7, 1960), block(1, 0, vp8_frame(99))})}),
            "V 320x240 [VP8] 8Bit 25.000fps ~41944.076kbps ~50f\n2.000"},
        {"no duration, a last cluster too large to be found: the last cue",
            file({seek(0x1C53BB6B, seek(0, 0).size() + tracks({vp8}).size() + large.size() + last.size()), tracks({vp8}), large,
                last, element(0x1C53BB6B, {cue(0), cue(7000)})}),
            "V 320x240 [VP8] 8Bit 25.000fps ~16777.385kbps ~175f\n7.000"},
    });
}

TEST(Matroska, keeps_what_damage_leaves) {
    const Data whole = file({info(400), tracks({vp8}), ten_frames});
    const Data cut(whole.begin(), whole.end() - 5000);
    ByteBuilder empty;
    for (int i = 0; i < 3000; ++i) {
        empty.raw({0xEC, 0x80, 0xBF, 0x84, 1, 2, 3, 4});
    }
    const Data too_many = element(0x1654AE6B, {vp8, vp8, track(1, video, "V_VP9", {picture(1, 1)})});
    expect_lines({
        {"cut off", cut, "V 320x240 [VP8] 8Bit 25.000fps ~203.180kbps ~10f\nX truncated(5,000 Byte missing)\nI writer\n0.400"},
        {"a segment whose size was not filled in",
            join_elements({head, sized_element(0x18538067, 0, {}), info(400), tracks({vp8}), ten_frames}),
            ten + "\nI writer\n0.400"},
        {"a file cut where the segment begins", join_elements({head, sized_element(0x18538067, 1000, {})}),
            "X truncated(1,000 Byte missing)\n0.000"},
        {"zeros in the place of a cluster", file({info(4000), tracks({vp8}), ten_frames, Data(3000)}),
            "V 320x240 [VP8] 8Bit 25.000fps ~26.318kbps ~100f\nI writer\n4.000"},
        {"trailing data", file({info(400), tracks({vp8}), ten_frames}, Data(1234, 'x')),
            ten + "\nX trailing data(1,234 Byte)\nI writer\n0.400"},
        {"two segments", file({info(400), tracks({vp8}), ten_frames}, whole), ten + "\nI writer\n0.400"},
        {"padding everywhere", file({empty.bytes, info(400), empty.bytes, tracks({vp8}), empty.bytes, ten_frames}),
            ten + "\nI writer\n0.400"},
        {"junk between", file({info(400), Data(5000, 'j'), tracks({vp8}), Data(77, 0), ten_frames}), ten + "\nI writer\n0.400"},
        {"tracks said twice", file({info(400), tracks({vp8, vp8}), too_many, ten_frames}), ten + "\nI writer\n0.400"},
        {"tracks in two parts, behind junk that looks like an element without an end",
            file({Data(3, 0xFF), info(400), tracks({vp8}), tracks({track(2, audio, "A_OPUS", {sound(48000, 2)})}), ten_frames}),
            ten + "\nA [Opus] 48000Hz 2ch\nI writer\n0.400"},
        {"an element past its parent",
            file({info(400),
                tracks({track(1, video, "V_VP8",
                    {number(0x23E383, 40'000'000), picture(320, 240), sized_element(0x536E, 1 << 20, {'a'})})}),
                ten_frames}),
            ten + " \"a\"\nI writer\n0.400"},
        {"impossible figures",
            file({info(400),
                tracks({track(1, video, "V_VP8", {picture(70000, 240), number(0x23E383, 0)}),
                    track(2, audio, "A_OPUS", {sound(-1, 5000)}), track(3, audio, "A_TTA1", {sound(1e300, 0, 900)})})}),
            "V [VP8] 8Bit\nA [Opus] 48000Hz\nA [TTA]\nI writer\n0.400"},
        {"encrypted",
            file({info(400),
                tracks({track(1, video, "V_VP8",
                    {number(0x23E383, 40'000'000), picture(320, 240), element(0x6D80, {element(0x6240, {number(0x5033, 1)})})})}),
                ten_frames}),
            ten + " encrypted\nX encrypted\nI writer\n0.400"},
        {"no tracks", file({info(400)}), "I writer\n0.400"},
        {"flags without a value, descriptions without private data",
            file({info(400), tracks({track(1, video, "V_MS/VFW/FOURCC", {picture(320, 240), element(0x55AA, Data{})}),
                                 track(2, audio, "A_MS/ACM", {sound(8000, 1), element(0x55AB, Data{})})})}),
            "V 320x240 [V_MS/VFW/FOURCC]\nA [A_MS/ACM] 8000Hz 1ch\nI writer\n0.400"},
    });
}

TEST(Matroska, survives_every_length_and_every_lie) {
    const Data bytes = file({seek(0x1254C367, 10), info(400), tracks({vp8, track(2, audio, "A_MPEG/L3", {sound(44100, 2)})}),
        cluster(
            0, join_elements({blocks(1, 2, 40, 40), laced_block(2, 6, {2, 0x41, 0x2C, 0xBF}, 30), group(2, 10, 20, Data(20))}))});
    expect_sound_at_every_length(bytes);
    for (size_t i = head.size(); i < bytes.size(); ++i) {
        Data damaged = bytes;
        damaged[i] ^= 0xFF;
        expect_sound(*info_of(damaged));
    }
}

// Millions of elements without data: the work is bounded, and said to be.
TEST(Matroska, bounds_the_work) {
    ByteBuilder empty;
    while (empty.bytes.size() < 24'000'000) {
        empty.raw({0xEC, 0x80, 0xEC, 0x80, 0xEC, 0x80, 0xEC, 0x80});
    }
    EXPECT_STREQ(details_of(file({info(400), empty.bytes, tracks({vp8})}))->notes, "work limit");
    // The tracks are described all the same.
    const auto record =
        info_of(live_file({info(400), tracks({vp8}), unknown_element(0x1F43B675, {blocks(1, 1, 0, 10), empty.bytes})}));
    EXPECT_EQ(record_text(*record), "V 320x240 [VP8] 8Bit 25.000fps ~480000.700kbps ~10f\nI writer\n0.400");
}

} // namespace
} // namespace zat::test::matroska_test
