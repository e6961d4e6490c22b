#include "support/audio_builder.h"
#include "support/details_text.h"
#include "support/record_text.h"
#include "support/shipped_catalogue.h"
#include "support/temp_file.h"
#include "support/ts_builder.h"
#include "support/video_builder.h"

#include <gtest/gtest.h>

namespace zat::test::mpeg_ts_test {

namespace {

struct Row {
    const char* name;
    Data bytes;
    std::string expected;
};

void expect_rows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        const auto record = info_of(row.bytes);
        expect_sound(*record);
        EXPECT_EQ(record->label + std::string("\n") + record_text(*record), row.expected) << row.name;
    }
}

Data mpeg2_picture() {
    return ByteBuilder().append(sequence_header({})).append(sequence_extension({})).append(picture(1)).bytes;
}

// A frame of 48 kHz stereo AC-3 at 192 kbit/s.
Data ac3_frame() {
    return ByteBuilder().raw({0x0B, 0x77, 0, 0, 0x14, 0x40, 0x40, 0}).pad_to(768).bytes;
}

// Languages with the audio type 0.
Data language(const std::vector<std::string_view>& codes) {
    ByteBuilder data;
    for (const std::string_view code : codes) {
        data.text(code).u8(0);
    }
    return descriptor(0x0A, data.bytes);
}

// Ten pictures of 40 ms with their sound, from a time of the clock on.
TsBuilder& play(TsBuilder& to, int64_t start, int pictures = 10) {
    for (int i = 0; i < pictures; ++i) {
        const int64_t pts = start + i * 3600;
        to.packet(0x100, {}, false, 0, pts % (int64_t{1} << 33) * 300);
        to.pes(0x100, 0xE0, pts, mpeg2_picture());
        to.pes(0x101, 0xBD, pts, ac3_frame());
    }
    return to;
}

TsBuilder film(size_t stride = 188) {
    TsBuilder to;
    to.stride = stride;
    to.table(0, pat({{1, 0x1000}})).table(0x1000, pmt(1, 0x100, {{2, 0x100}, {0x81, 0x101, language({"eng"})}}));
    return to;
}

const std::string film_streams = "V 0x0100 MPEG2 720x480 16:9 8000kbps 29.97fps 229376Byte Interlace MP@ML\n"
                                 "A 0x0101 AC3 48000Hz [2Ch(2/0) L+R CM] 192kbps eng\n";
const std::string film_pids = "X PID 0000 1000(PMT)\n";

TEST(MpegTs, finds_the_layout) {
    const auto of = [](size_t stride, int front) {
        TsBuilder to = film(stride);
        play(to, 90000);
        return ByteBuilder().fill(static_cast<size_t>(front), 0x22).append(to.file.bytes).bytes;
    };
    TsBuilder gap = film();
    gap.file.fill(77, 0x47 + 1);
    play(gap, 90000);
    expect_rows({
        {"188", of(188, 0), "[MPEG2-TS(188)]\n" + film_streams + film_pids + "0.393"},
        {"192", of(192, 0), "[MPEG2-TS(192)]\n" + film_streams + film_pids + "0.393"},
        {"192 from the middle of a packet", of(192, 60), "[MPEG2-TS(192)]\n" + film_streams + film_pids + "0.393"},
        {"188 behind rubbish", of(188, 150), "[MPEG2-TS(188)]\n" + film_streams + film_pids + "0.393"},
        {"bytes lost", gap.file.bytes, "[MPEG2-TS(188)]\n" + film_streams + film_pids + "0.393"},
        {"one packet of nulls", TsBuilder().packet(0x1FFF, Data(184, 0)).packet(0x1FFF, Data(184, 0)).file.bytes,
            "[MPEG2-TS(188)]\nX no PMT\nX PID 1FFF\n0.000"},
    });
}

TEST(MpegTs, tells_the_play_time) {
    const auto film_of = [](int64_t first, int64_t second, int pictures = 10) {
        TsBuilder to = film();
        play(to, first, pictures);
        if (second >= 0) {
            play(to, second, pictures);
        }
        return to.file.bytes;
    };
    const std::string head = "[MPEG2-TS(188)]\n" + film_streams;
    expect_rows({
        {"over a wrap of the clock", film_of((int64_t{1} << 33) - 9000, -1), head + film_pids + "0.393"},
        {"joined", film_of(90'000'000, 90'000), head + "X joined\nX time estimated\n" + film_pids + "0.793"},
        {"joined to one that begins earlier", film_of(990'000, 900'000, 60),
            head + "X joined\nX time estimated\n" + film_pids + "4.806"},
        // Read at its head, at its end and in between.
        {"long", film_of(90000, -1, 2200), head + film_pids + "87.993"},
        {"long and joined", film_of(90000, 90000, 2200), head + "X joined\nX time estimated\n" + film_pids + "176.006"},
    });
}

// A download fills a file that has its size already.
TEST(MpegTs, measures_rates_by_packets_alone) {
    TsBuilder to;
    to.table(0, pat({{1, 0x30}})).table(0x30, pmt(1, 0x40, {{0x1B, 0x40}}));
    for (int64_t i = 0; i < 2500; ++i) {
        to.packet(0x40, {}, false, 0, i * 3600 * 300);
        to.pes(0x40, 0xE0, i * 3600, Data(1000, 0x55));
    }
    Data filling = to.file.bytes;
    filling.resize(to.file.bytes.size() / 2);
    filling.resize(to.file.bytes.size());
    const auto rate = [](const Data& bytes) { return static_cast<double>(details_of(bytes)->streams[0].bit_rate); };
    EXPECT_NEAR(rate(to.file.bytes), 200'000, 2'000);
    EXPECT_NEAR(rate(filling), 200'000, 2'000);
}

TEST(MpegTs, reads_tables_as_they_come) {
    TsBuilder subtitled; // a program of subtitles in front of one with as many streams
    subtitled.table(0, pat({{1, 0x1000}, {2, 0x1001}}))
        .table(0x1000, pmt(1, 0x200, {{6, 0x200, descriptor(0x59, Data(8, 'a'))}}))
        .table(0x1001, pmt(2, 0x101, {{0x81, 0x101}}))
        .pes(0x200, 0xBD, 90000, Data(20, 1));
    for (int i = 0; i < 4; ++i) {
        subtitled.pes(0x101, 0xBD, 90000 + i * 2880, ac3_frame());
    }
    TsBuilder bad_crc;
    bad_crc.table(0, pat({{1, 0x1000}})).table(0x1000, pmt(1, 0x100, {{2, 0x100}, {0x81, 0x101, language({"eng"})}}, {}, 1));
    TsBuilder map_first;
    map_first.table(0x1000, pmt(1, 0x100, {{2, 0x100}, {0x81, 0x101, language({"eng"})}})).table(0, pat({{1, 0x1000}}));
    TsBuilder no_pat;
    no_pat.table(0x1000, pmt(1, 0x100, {{2, 0x100}, {0x81, 0x101, language({"eng"})}}));
    TsBuilder none;
    const std::string whole = "[MPEG2-TS(188)]\n" + film_streams + film_pids + "0.393";
    expect_rows({
        {"map before the association", play(map_first, 90000).file.bytes, whole},
        {"what plays comes first", subtitled.file.bytes,
            "[MPEG2-TS(188)]\nA 0x0101 AC3 48000Hz [2Ch(2/0) L+R CM] 192kbps\nX 0x0200 [DVB subtitle] aaa\n"
            "X PID 0000 1000(PMT) 1001(PMT)\n0.128"},
        {"damaged CRC, and no other", play(bad_crc, 90000).file.bytes, whole},
        {"no association", play(no_pat, 90000).file.bytes, "[MPEG2-TS(188)]\n" + film_streams + "X PID 1000(PMT)\n0.393"},
        {"nothing", play(none, 90000).file.bytes,
            "[MPEG2-TS(188)]\nV 0x0100 MPEG2 720x480 16:9 8000kbps 29.97fps 229376Byte Interlace MP@ML\n"
            "X 0x0101 [data]\nX no PMT\n0.394"},
    });
}

TEST(MpegTs, names_streams_by_type_and_descriptors) {
    const Data hdmv = descriptor(5, "HDMV");
    TsBuilder types;
    types.table(0, pat({{1, 0x1000}, {2, 0x1001}}))
        .table(0x1000,
            pmt(1, 0x1FFF,
                {{0x1B, 0x100}, {0x24, 0x101}, {0xEA, 0x102}, {0x33, 0x103}, {0x0F, 0x110, language({"jpn", "eng"})},
                    {6, 0x111, descriptor(0x7A, "\0")},
                    {6, 0x112, ByteBuilder().append(descriptor(5, "Opus")).append(descriptor(0x6A, "\0")).bytes}, {0xCF, 0x113},
                    {0x0F, 0x114, descriptor(0xC4, Data{0xF2, 2, 0x10, 0x0F, 0xFF, 0xFF, 'j', 'p', 'n', 'e', 'n', 'g'})},
                    {6, 0x120, descriptor(0x59, Data{'f', 'r', 'a', 0x20, 0, 1, 0, 1})},
                    {6, 0x121, descriptor(0x56, Data{'d', 'e', 'u', 0x09, 0, 'd', 'e', 'u', 0x10, 0x88})},
                    {6, 0x122, ByteBuilder().append(descriptor(0x52, "\x30")).append(descriptor(0xFD, Data{0, 8})).bytes},
                    {0x0D, 0x130, descriptor(0xFD, Data{0, 12})},
                    {0x15, 0x131, descriptor(0x26, Data{0xFF, 0xFF, 'I', 'D', '3', ' ', 0xFF, 'I', 'D', '3', ' '})},
                    {0x0B, 0x132}, {0x0B, 0x133}, {5, 0x134, descriptor(0x6F, "")}}))
        .table(0x1001, pmt(2, 0x1FFF, {{0x90, 0x200, language({"eng"})}, {0x83, 0x201}, {0x86, 0x202}}, hdmv));
    EXPECT_EQ(details_of(types.file.bytes)->streams[9].flags, ZAT_FLAG_HEARING_IMPAIRED | ZAT_FLAG_NO_DATA);
    const auto record = info_of(types.file.bytes);
    EXPECT_EQ(record_text(*record),
        "V 0x0100 [AVC/H264] no data\nV 0x0101 [HEVC/H265] no data\nV 0x0102 [VC-1] no data\nV 0x0103 [VVC/H266] no data\n"
        "A 0x0110 [AAC] jpn/eng no data\nA 0x0111 [E-AC-3] no data\nA 0x0112 [Opus] no data\nA 0x0113 [AAC] encrypted no data\n"
        "A 0x0114 [AAC] dual mono jpn/eng no data\n"
        "A 0x0201 [TrueHD] no data\nA 0x0202 [DTS-HD MA] no data\n"
        "X 0x0120 [DVB subtitle] fra hearing impaired\nX 0x0121 [teletext] deu p.888\nX 0x0122 [ARIB caption]\n"
        "X 0x0130 [data broadcasting]\nX 0x0131 [timed ID3]\nX 0x0132,0x0133 [DSM-CC type B]\n"
        "X 0x0134 [AIT]\nX 0x0200 [PGS] eng\nX scrambled\nX PID 0000 1000(PMT) 1001(PMT)\n0.000");
}

TEST(MpegTs, measures_what_headers_leave_out) {
    TsBuilder to;
    to.table(0, pat({{7, 0x30}}))
        .table(
            0x30, pmt(7, 0x40,
                      {{0x0F, 0x40},
                          {6, 0x41, ByteBuilder().append(descriptor(5, "Opus")).append(descriptor(0x7F, Data{0x80, 0})).bytes}}));
    for (int i = 0; i < 6; ++i) {
        to.pes(0x40, 0xC0, 1000 + i * 3840,
            adts_program_frame(i % 2 == 0 ? 300 : 401, {.rate_index = 3, .channels = 0, .blocks = 1}));
        to.pes(0x41, 0xBD, 1000 + i * 1800, ByteBuilder().raw({0x7F, 0xF4, 0xFF, 1, 0, 5, 1, 0, 0xFC}).pad_to(100).bytes);
    }
    expect_rows({{"AAC of two blocks a frame, Opus of two single channels", to.file.bytes,
        "[MPEG2-TS(188)]\nA 0x0040 [MPEG4-AAC AAC_LC] 48000Hz custom 65.718kbps 350Byte\n"
        "A 0x0041 [Opus] 48000Hz 2ch 18.750kbps\nX PID 0000 0030(PMT)\n0.256"}});
    const auto details = details_of(to.file.bytes);
    EXPECT_EQ(details_text(*details),
        "MPEG-TS duration=0.256 bit_rate=" + std::to_string(details->bit_rate) +
            "\naudio estimated=2 id=64 duration=0.256 bit_rate=65718 bytes=2103 sample_rate=48000 channels=4 codec=AAC "
            "codec_id=0x0F profile=LC"
            "\naudio id=65 duration=0.120 bit_rate=18750 bytes=600 sample_rate=48000 channels=2 codec=Opus codec_id=0x06");

    TsBuilder lossless; // its header tells the peak rate only; beside it DTS without a core
    lossless.table(0, pat({{7, 0x30}})).table(0x30, pmt(7, 0x40, {{0x83, 0x40}, {0xA2, 0x41}}, descriptor(5, "HDMV")));
    for (int i = 0; i < 6; ++i) {
        lossless.pes(0x40, 0xBD, 1000 + i * 1800, mlp_unit(100, 0xBA, 0x00000003, 0x8960));
        lossless.pes(0x41, 0xBD, 1000 + i * 1800, dts_extension(2, 0));
    }
    EXPECT_EQ(details_of(lossless.file.bytes)->streams[0].bit_rate, 40000U);
    EXPECT_EQ(info_of(lossless.file.bytes)->audio[1], std::string("0x0041 [DTS Express] 16.800kbps"));

    TsBuilder with_core; // beside it LPCM of an assignment without a name
    with_core.table(0, pat({{7, 0x30}})).table(0x30, pmt(7, 0x40, {{0x83, 0x40}, {0x80, 0x41}}, descriptor(5, "HDMV")));
    with_core.pes(0x41, 0xBD, 1000, ByteBuilder().raw({3, 0xC0, 0x21, 0x40}).pad_to(964).bytes);
    for (int i = 0; i < 3; ++i) {
        with_core.pes(0x40, 0xFD, 1000, mlp_unit(100, i == 0 ? 0xBA : 0, 0x00000003, 0x8960));
        with_core.pes(0x40, 0xFD, 1000, i == 1 ? ac3_frame() : mlp_unit(100, 0, 0));
    }
    const auto record = info_of(with_core.file.bytes);
    EXPECT_EQ(record->audio[0],
        std::string("0x0040 Dolby TrueHD 48000Hz [2Ch(2/0) L+R CM] 192kbps TrueHD 48000Hz [2.1ch VBR] 7200.000kbps"));
    EXPECT_EQ(record->audio[1], std::string("0x0041 LPCM 48000Hz Unknown(0) 16Bit 0.000kbps"));
}

TEST(MpegTs, tells_of_scrambled_streams_and_lost_packets) {
    TsBuilder scrambled = film();
    for (int i = 0; i < 4; ++i) {
        scrambled.pes(0x100, 0xE0, 90000 + i * 3600, mpeg2_picture(), 2).pes(0x101, 0xBD, 90000 + i * 2880, ac3_frame());
    }
    TsBuilder lost = film();
    lost.pes(0x100, 0xE0, 90000, Data(500, 1));
    lost.counters[0x100] += 3;
    play(lost, 93600);
    expect_rows({
        {"scrambled", scrambled.file.bytes,
            "[MPEG2-TS(188)]\nV 0x0100 MPEG2 encrypted\nA 0x0101 AC3 48000Hz [2Ch(2/0) L+R CM] 192kbps eng\n"
            "X scrambled\nX PID 0000 1000(PMT)\n0.128"},
        {"packets lost", lost.file.bytes, "[MPEG2-TS(188)]\n" + film_streams + film_pids + "0.433"},
    });
}

Data counted(std::string_view text) {
    return ByteBuilder().u8(text.size()).text(text).bytes;
}

Data service_entry(int id, std::string_view provider, std::string_view name) {
    const Data data = ByteBuilder().u8(1).append(counted(provider)).append(counted(name)).bytes;
    const Data one = descriptor(0x48, data);
    return ByteBuilder().be16(static_cast<uint64_t>(id)).u8(0xFC).be16(0x8000 | one.size()).append(one).bytes;
}

Data event_section(int service, int network, int number, const Data& start, const Data& descriptors) {
    ByteBuilder body;
    body.be16(1).be16(static_cast<uint64_t>(network)).raw({1, 0x4E}).be16(9).append(start).raw({0, 0x55, 0});
    return section(
        0x4E, static_cast<uint64_t>(service), body.be16(0x8000 | descriptors.size()).append(descriptors).bytes, number);
}

Data short_event(std::string_view language, std::string_view name, std::string_view text) {
    return descriptor(0x4D, ByteBuilder().text(language).append(counted(name)).append(counted(text)).bytes);
}

TEST(MpegTs, shows_services_and_events) {
    TsBuilder dvb = film();
    dvb.table(0x11,
        section(0x42, 1,
            ByteBuilder().be16(0x20FA).u8(0xFF).append(service_entry(1, "P", "One")).append(service_entry(9, "", "Gone")).bytes));
    dvb.table(0x12, event_section(1, 0x20FA, 0, {0xC0, 0x79, 0x12, 0x45, 0},
                        ByteBuilder()
                            .append(short_event("eng", "na\xEFve",
                                "a\x8A"
                                "b"))
                            .append(descriptor(0x54, Data{0x20, 0}))
                            .bytes));
    dvb.table(0x12, event_section(1, 0x20FA, 1, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, short_event("eng", "Later", "")));
    TsBuilder items = film(); // one of which tells the table of all texts
    items.table(
        0x12, event_section(1, 0x20FA, 0, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
                  ByteBuilder()
                      .append(short_event("fra", "Caf\xE9", ""))
                      .append(descriptor(0x4E,
                          ByteBuilder().u8(0).text("fra").u8(8).append(counted("H")).append(counted("na\xEFve")).u8(0).bytes))
                      .bytes));
    TsBuilder arib = film();
    // The text of an item is cut inside a character.
    const Data items1 =
        ByteBuilder().u8(0x01).text("jpn").u8(9).append(counted("\x3D\x50\x31\x69")).append(counted("\x3B\x33\x45")).u8(0).bytes;
    const Data items2 =
        ByteBuilder().u8(0x11).text("jpn").u8(6).append(counted("")).append(counted("\x44\x42\x40\x4F")).u8(0).bytes;
    arib.table(
        0x11, section(0x42, 1, ByteBuilder().be16(0x7FE1).u8(0xFF).append(service_entry(1, "", "\x46\x7C\x4B\x5C")).bytes));
    arib.table(0x12, event_section(1, 0x7FE1, 0, {0xEB, 0xD1, 0x23, 0x55, 0},
                         ByteBuilder()
                             .append(short_event("jpn", "\x7A\x56\x46\x7C", ""))
                             .append(descriptor(0x4E, items1))
                             .append(descriptor(0x4E, items2))
                             .append(descriptor(0x54, Data{0x3F, 0}))
                             .bytes));
    TsBuilder atsc = film();
    atsc.table(0x1FFB, section(0xC8, 1,
                           ByteBuilder()
                               .u8(0)
                               .u8(1)
                               .be16('W')
                               .be16('X')
                               .fill(10)
                               .be32(0xF0000004 | 4 << 18 | 1 << 8)
                               .fill(6)
                               .be16(1)
                               .fill(4)
                               .be16(0xFC00)
                               .be16(0xFC00)
                               .bytes));
    // A sign of ARIB in the network table, for a network that has none itself.
    TsBuilder network = film();
    const Data key = descriptor(0xCD, Data{1, 0x18});
    const Data transport = ByteBuilder().be16(1).be16(0x20FA).be16(0xF000 | key.size()).append(key).bytes;
    network.table(0x10, section(0x40, 1, ByteBuilder().be16(0xF000).be16(0xF000 | transport.size()).append(transport).bytes));
    network.table(
        0x11, section(0x42, 1, ByteBuilder().be16(0x20FA).u8(0xFF).append(service_entry(1, "", "\x46\x7C\x4B\x5C")).bytes));
    // Of a recorder: the time of the whole table, a genre without a name.
    TsBuilder recorded = film();
    const Data time = descriptor(0xC3, Data{1, 0xEB, 0xD1, 0x23, 0x55, 0, 0, 0x55, 0, 0, 0, 0, 0xFD});
    const Data service = ByteBuilder()
                             .append(descriptor(0x48, ByteBuilder().raw({1, 0}).append(counted("\x46\x7C\x4B\x5C")).bytes))
                             .append(descriptor(0x54, Data{0x3F, 0}))
                             .bytes;
    ByteBuilder selection;
    selection.be16(0xF000 | time.size()).append(time).be16(1).be16(0x8000 | service.size()).append(service);
    recorded.table(0x1F, section(0x7F, 0xFFFF, selection.bytes));
    expect_rows({
        {"a recording's table", play(recorded, 90000).file.bytes,
            "[MPEG2-TS(188)]\nG 1 \x93\xFA\x96\x7B\nG 2024/02/29 23:55-00:50 \x83\x68\x83\x89\x83\x7D\n" + film_streams +
                "X PID 0000 001F 1000(PMT)\n0.393"},
        {"ARIB by its network", play(network, 90000).file.bytes,
            "[MPEG2-TS(188)]\nG 1 \x93\xFA\x96\x7B\n" + film_streams + "X PID 0000 0010 0011 1000(PMT)\n0.393"},
        {"DVB", play(dvb, 90000).file.bytes,
            "[MPEG2-TS(188)]\nG 1 One (P)\nG 1993/10/13 12:45-13:40 UTC naive News\n" + film_streams +
                "X next Later\nX PID 0000 0011 0012 1000(PMT)\nI a b\n0.393"},
        {"DVB, by an item", play(items, 90000).file.bytes,
            "[MPEG2-TS(188)]\nG Cafe\n" + film_streams + "X H: naive\nX PID 0000 0012 1000(PMT)\n0.393"},
        {"ARIB", play(arib, 90000).file.bytes,
            "[MPEG2-TS(188)]\nG 1 \x93\xFA\x96\x7B\nG 2024/02/29 23:55-00:50 [\x8E\x9A]\x93\xFA \x83\x68\x83\x89\x83\x7D\n" +
                film_streams + "X \x8F\x6F\x89\x89: \x8E\x52\x93\x63\x91\xBE\nX PID 0000 0011 0012 1000(PMT)\n0.393"},
        {"ATSC", play(atsc, 90000).file.bytes, "[MPEG2-TS(188)]\nG 4.1 WX\n" + film_streams + "X PID 0000 1000(PMT) 1FFB\n0.393"},
    });
}

TEST(MpegTs, survives_lies_and_every_length) {
    TsBuilder lies;
    lies.table(0, pat({{1, 0x1000}}));
    Data map = pmt(1, 0x100, {{6, 0x100, Data{0x56, 0xFF, 1}}, {6, 0x101, Data{0x59, 9, 1}}, {6, 0x102, Data{5}}});
    lies.table(0x1000, map);
    const auto record = info_of(lies.file.bytes);
    expect_sound(*record);
    EXPECT_EQ(record_text(*record), "X 0x0100,0x0101,0x0102 [private data]\nX PID 0000 1000(PMT)\n0.000");

    TsBuilder many;
    many.table(0, pat({{1, 0x1000}}));
    std::vector<MapEntry> entries;
    entries.reserve(150);
    for (int i = 0; i < 150; ++i) {
        entries.push_back({i % 2 == 0 ? 0x1B : 0x0F, 0x100 + i});
    }
    many.table(0x1000, pmt(1, 0x1FFF, entries));
    const auto details = details_of(many.file.bytes);
    EXPECT_EQ(details->stream_count, 150U);

    TsBuilder to = film();
    expect_sound_at_every_length(play(to, 90000, 2).file.bytes, 7);
}

} // namespace

} // namespace zat::test::mpeg_ts_test
