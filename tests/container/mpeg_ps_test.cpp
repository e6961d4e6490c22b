#include "common/text/messages.h"
#include "support/audio_builder.h"
#include "support/details_text.h"
#include "support/program_builder.h"
#include "support/record_text.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zat::test::mpeg_ps_test {
namespace {

constexpr int64_t second = 90'000;
constexpr int64_t wrap = int64_t{1} << 33;

Payload join(std::initializer_list<Payload> parts) {
    ByteBuilder all;
    for (const Payload& part : parts) {
        all.append(part);
    }
    return all.bytes;
}

Payload private_audio(int substream, const Payload& frames) {
    return ByteBuilder().raw({substream, 1, 0, 1}).append(frames).bytes;
}

// MPEG-2 video of a DVD: 720x480, 29.97 fps.
Payload video_start() {
    return join({sequence_header({}), sequence_extension({}), group_header(1, 2, 3, 4), picture(1)});
}

Payload slices(size_t size) {
    return ByteBuilder().fill(size, 0x55).bytes;
}

std::string lines_of(const Payload& bytes) {
    const auto record = info_of(bytes);
    expect_sound(*record);
    return record->label + std::string("\n") + record_text(*record);
}

const std::string sequence_line = "720x480 16:9 8000kbps 29.97fps 229376Byte interlace MP@ML";
const std::string ac3_line = "AC3 48000Hz [2Ch(2/0) L+R CM] 64kbps";
const std::string mp2_line = "MPEG1-LayerII 44100Hz [CBR Single Channel(mono)] 64.00kbps [208bpf] ";
const std::string tail = "X (30000/1001)fps\nX GOP 01:02:03:04\n";

// Packs with a video and an AC-3 packet each, a 25th of a second apart.
void add_seconds(ProgramBuilder* file, int64_t clock, int count, size_t size = 500) {
    for (int i = 0; i < count; ++i) {
        const int64_t now = (clock + i * second / 25) % wrap;
        file->pack(now).packet(0xE0, i == 0 ? video_start() : slices(size), (now + 9000) % wrap);
        file->packet(0xBD, private_audio(0x80, ac3_frames(1)), (now + 9000) % wrap);
    }
}

TEST(ProgramStream, lists_its_streams) {
    ProgramBuilder dvd;
    dvd.pack(0).unit(0xBB, slices(12)).packet(0xE0, video_start(), 1000);
    dvd.pack(900).unit(0xBF, ByteBuilder().u8(0).fill(0x3D3).bytes).packet(0xBD, private_audio(0x81, ac3_frames(2)), 1000);
    dvd.pack(1800).packet(0xBD, ByteBuilder().raw({0xA0, 7, 0, 4, 0x0C, 0x01, 0x80}).fill(400).bytes, 1000);
    dvd.packet(0xBD, ByteBuilder().u8(0x21).fill(50).bytes, 1000).packet(0xC0, mp2_frames(2), 1000);
    ProgramBuilder video_cd;
    video_cd.pack1(0).packet1(0xE0, join({sequence_header({352, 288, 8, 3, 2875, 20}), picture(1)}), 0);
    video_cd.pack1(900).packet1(0xE1, join({sequence_header({704, 576, 8, 3, 0x3FFFF, 20}), picture(1)}), 0);
    video_cd.packet1(0xC0, mp2_frames(2), 0);
    ProgramBuilder cut_headers; // a sequence header across two packets, and one of audio
    cut_headers.pack(0);
    const Payload start = video_start();
    cut_headers.packet(0xE0, {start.begin(), start.begin() + 9}, 0);
    cut_headers.packet(0xE0, {start.begin() + 9, start.end()}).packet(0xC0, mp2_frames(2), 0);
    ProgramBuilder mapped;
    mapped.pack(0).map({{0x1B, 0xE0}, {0x0F, 0xC0}, {0x02, 0xE1}}).packet(0xE0, slices(300), 0);
    ProgramBuilder languages; // and types that are none of those which streams of their ids mostly are
    languages.pack(0).map({{0x33, 0xE0}, {0x87, 0xC0}, {0x2D, 0xC1}}, {0x0A, 8, 'j', 'p', 'n', 0, 'e', 'n', 'g', 2});
    languages.packet(0xE0, slices(300), 0);
    ProgramBuilder substream; // in the map in the place of its stream
    substream.pack(0).map({{0x81, 0x80}}, {0x0A, 4, 'j', 'p', 'n', 0}).packet(0xBD, private_audio(0x80, ac3_frames(2)), 0);
    ProgramBuilder extension; // a stream_id_extension in the map and in the packet
    extension.pack(0).map({{0x81, 0xFD}}, {1, 1, 0x80 | 0x71, 0x0A, 4, 'j', 'p', 'n', 0}, 0xA1);
    extension.unit(0xFD, ByteBuilder().raw({0x81, 1, 3, 1, 0x81, 0x71}).append(ac3_frames(2)).bytes);
    ProgramBuilder timed; // a video whose header has no rate, two packets for each frame
    BitBuilder vol;
    vol.bits(0x1B0, 32).bits(1, 8).bits(0x120, 32).bits(0, 1).bits(1, 8).bits(0, 1).bits(1, 4).bits(0, 1).bits(0, 2);
    vol.bits(1, 1).bits(24, 16).bits(1, 1).bits(0, 1).bits(1, 1).bits(640, 13).bits(1, 1).bits(480, 13).bits(1, 1).bits(0, 8);
    timed.pack(0).packet(0xE0, vol.bytes, 0).packet(0xE0, slices(99));
    for (int frame = 1; frame < 12; ++frame) {
        timed.packet(0xE0, slices(99), frame * 3750).packet(0xE0, slices(120));
    }
    ProgramBuilder sparse = ProgramBuilder().pack(0).packet(0xE0, vol.bytes); // a stamp for every fourth picture
    for (uint64_t frame = 0; frame < 12; ++frame) {
        const BitBuilder vop = BitBuilder().bits(0x1B6, 32).bits(1, 2).bits(1, 2).bits(frame * 2, 5).bits(3, 2);
        const int64_t stamp = frame % 4 == 0 ? static_cast<int64_t>(frame) * 7500 : no_stamp;
        sparse.packet(0xE0, join({vop.bytes, slices(99)}), stamp).packet(0xE0, slices(120));
    }
    // AudioMuxElement with a StreamMuxConfig: AAC LC of 48 kHz, stereo.
    Payload latm = loas_frame(BitBuilder().bits(1, 3).bits(0, 13).bits(0x1190, 16), 300);
    const Payload adts = adts_frame(4000, {.rate_index = 3});
    std::copy_n(adts.begin(), 7, latm.begin() + 100);
    const struct {
        const char* name;
        Payload bytes;
        std::string expected;
    } rows[] = {
        {"DVD", dvd.bytes,
            "[MPEG2]\nV " + sequence_line + "\nA 0x81 " + ac3_line + "\nA 0xA0 LPCM 48000Hz 2ch 16Bit 1536.000kbps\nA 0xC0 " +
                mp2_line + "\nX [DVD subtitle] 0x21\nX [DVD navigation]\n" + tail + "0.033"},
        {"two videos of MPEG-1", video_cd.bytes,
            "[MPEG1]\nV 0xE0 352x288 4:3(PAL) 1150kbps 25fps 40960Byte Progressive\nV 0xE1 704x576 4:3(PAL) VBR 25fps "
            "Progressive\nA " +
                mp2_line + "\nX ...fps\n0.040"},
        {"headers across packets", cut_headers.bytes, "[MPEG2]\nV " + sequence_line + "\nA " + mp2_line + "\n" + tail + "0.033"},
        {"a map tells what the bytes do not", mapped.bytes,
            "[MPEG2]\nV 0xE0 [AVC/H264] jpn\nV 0xE1 MPEG2 no data jpn\nA [AAC] no data jpn\n0.000"},
        {"languages of a map", languages.bytes,
            "[MPEG2]\nV [video] jpn/eng hearing impaired\nA 0xC0 [E-AC-3] no data jpn/eng hearing impaired\n"
            "A 0xC1 [audio] no data jpn/eng hearing impaired\n0.000"},
        {"a substream of a map", substream.bytes, "[MPEG2]\nA " + ac3_line + " jpn\n0.032"},
        {"an extended stream of a map", extension.bytes, "[MPEG2]\nA " + ac3_line + " jpn\n0.000"},
        {"LATM with an ADTS sync word by chance", ProgramBuilder().pack(0).map({{0x11, 0xC0}}).packet(0xC0, latm, 0).bytes,
            "[MPEG2]\nA [AAC LC] 48000Hz stereo(L,R) 112.500kbps jpn\n0.021"},
        {"AAC that begins with silence",
            ProgramBuilder()
                .pack(0)
                .map({{0x0F, 0xC0}})
                .packet(0xC0, adts_frame(40, {.rate_index = 3}), 0)
                .packet(0xC0, adts_frame(360, {.rate_index = 3}), 1920)
                .bytes,
            "[MPEG2]\nA [MPEG4-AAC AAC_LC] 48000Hz stereo(L,R) 75.000kbps 200Byte jpn\n0.043"},
        {"E-AC-3 of one block a frame, behind a sync word by chance",
            ProgramBuilder()
                .pack(0)
                .packet(0xBD, private_audio(0xC0, join({{0x0B, 0x77, 0xFF, 0xFF}, eac3_frame(0, 0, 200, 2, 0, -1, 0)})), 0)
                .bytes,
            "[MPEG2]\nA [E-AC-3 2/0] 48000Hz 2ch 300.000kbps\n0.005"},
        {"TrueHD and DVD-Audio's MLP",
            ProgramBuilder()
                .pack(0)
                .packet(0xBD, private_audio(0xB1, mlp_unit(400, 0xBA, 0x00F80000 | 0x0F << 15 | 0x4F, 0x8960)), 0)
                .packet(0xBD, private_audio(0xB2, mlp_unit(400, 0xBB, 0)), 0)
                .bytes,
            "[MPEG2]\nA 0xB1 Dolby_TrueHD 48000Hz [7.1ch VBR] 7200.000kbps\nA 0xB2 [MLP]\n0.000"},
        {"AC-3 without a substream header",
            ProgramBuilder().pack(0).packet(0xBD, ac3_frames(2), 0).packet(0xBD, slices(40)).bytes,
            "[MPEG2]\nA " + ac3_line + "\n0.032"},
        {"a frame rate by the time stamps", timed.bytes,
            "[MPEG2]\nV 640x480 [MPEG4 Simple@L1 1:1] 8Bit 24.000fps 40.432kbps Progressive\n0.500"},
        {"a frame rate by the pictures", sparse.bytes,
            "[MPEG2]\nV 640x480 [MPEG4 Simple@L1 1:1] 8Bit 12.000fps 29.003kbps Progressive\n0.750"},
        {"packets without packs", ProgramBuilder().packet(0xE0, video_start(), 0).packet(0xE0, slices(20), 3003).bytes,
            "[MPEG2]\nV " + sequence_line + "\n" + tail + "0.067"},
        {"cut in the middle", ByteBuilder().be32(0x1B3).append(slices(90)).append(dvd.bytes).bytes,
            "[MPEG2]\nV " + sequence_line + "\nA 0x81 " + ac3_line + "\nA 0xA0 LPCM 48000Hz 2ch 16Bit 1536.000kbps\nA 0xC0 " +
                mp2_line + "\nX [DVD subtitle] 0x21\nX [DVD navigation]\n" + tail + "0.033"},
        {"start codes in other data", ByteBuilder().be32(0x1E1).append(slices(600)).be32(0x1BA).append(slices(60)).bytes,
            "\n0.000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lines_of(row.bytes), row.expected);
    }
}

TEST(ProgramStream, times_what_was_joined_or_went_round) {
    ProgramBuilder plain;
    add_seconds(&plain, 5 * second, 50);
    ProgramBuilder round;
    add_seconds(&round, wrap - second, 50);
    ProgramBuilder parts;
    for (const int64_t start : {10 * second, int64_t{0}, 3600 * second}) {
        add_seconds(&parts, start, 50);
    }
    ProgramBuilder unsteady; // a clock that steps back where the time stamps go on
    for (int i = 0; i < 2500; ++i) {
        unsteady.pack((i / 20 % 2 == 0 ? i + 40 : i) * second / 25)
            .packet(0xE0, i == 0 ? video_start() : slices(3000), (i + 60) * second / 25);
    }
    ProgramBuilder large; // more than is walked
    add_seconds(&large, 0, 1500, 2500);
    ProgramBuilder loops;
    for (int i = 0; i < 30; ++i) {
        add_seconds(&loops, 0, 100, 2500);
    }
    ProgramBuilder wrong_clock;
    add_seconds(&wrong_clock, 0, 25);
    wrong_clock.pack(700 * second).packet(0xE0, slices(100), 800 * second);
    add_seconds(&wrong_clock, second, 25);
    const std::string streams = "[MPEG2]\nV " + sequence_line + "\nA " + ac3_line + "\n" + tail;
    const std::string estimated = "X joined\nX time estimated\n";
    const struct {
        const char* name;
        Payload bytes;
        std::string expected;
    } rows[] = {
        {"from the first picture to the end of the last", plain.bytes, streams + "1.993"},
        {"a clock that goes round", round.bytes, streams + "1.993"},
        {"three recordings", parts.bytes, streams + estimated + "6.0"},
        {"one recording", unsteady.bytes, "[MPEG2]\nV " + sequence_line + "\n" + tail + "99.993"},
        {"by the stamps at both ends", large.bytes, streams + "59.993"},
        {"many short recordings", loops.bytes, streams + estimated},
        {"a lone wrong value", wrong_clock.bytes, streams + "1.993"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lines_of(row.bytes).substr(0, row.expected.size()), row.expected);
    }
    Payload filling = large.bytes; // a download in a file of its full size
    filling.resize(2'097'152);
    filling.resize(large.bytes.size());
    EXPECT_NEAR(details_of(filling)->duration, 60, 1);
    EXPECT_EQ(details_of(filling)->streams[0].duration, 0);
    EXPECT_NEAR(info_of(loops.bytes)->play_time, 120, 8);
    EXPECT_NEAR(info_of(parts.bytes)->play_time, 6, 0.1);
}

TEST(ProgramStream, counts_damaged_packets) {
    const auto result = [](const Payload& bytes, uint32_t options) {
        const TempFile file(bytes);
        InfoRecord record{};
        record.options = options;
        file.path.copy(record.path, sizeof record.path - 1);
        GetInfo(&record);
        return std::string(record.general_count != 0 ? record.general[0] : "") + " " + std::to_string(record.scan_budget);
    };
    const auto errors = [](const char* count) { return count + std::string(message::errors_found).substr(2); };
    ProgramBuilder whole;
    add_seconds(&whole, 0, 3);
    ProgramBuilder lying; // a length that ends inside the payload, twice, and zeros between packets
    lying.pack(0).packet(0xE0, video_start(), 0, 40).pack(900).packet(0xE0, slices(900), 0, 700).pack(1800);
    lying.packet(0xE0, slices(100)).fill(500);
    lying.pack(2700).packet(0xE0, slices(100));
    Payload cut = whole.bytes;
    cut.resize(cut.size() - 100);
    ProgramBuilder late; // damage behind the bytes that are walked
    add_seconds(&late, 0, 1000, 2500);
    late.packet(0xE0, slices(900), 0, 700).pack(second * 41).packet(0xE0, slices(100));
    const auto size = [](const ByteBuilder& file) { return " " + std::to_string(file.bytes.size()); };
    EXPECT_EQ(result(whole.bytes, 0), size(whole));
    EXPECT_EQ(result(cut, 0), " " + std::to_string(cut.size()));
    EXPECT_EQ(result(lying.bytes, 0), errors("2") + size(lying));
    EXPECT_EQ(result(late.bytes, 0), " 2097152");
    EXPECT_EQ(result(late.bytes, 2), errors("1") + " 2097152");
}

TEST(ProgramStream, fills_the_details) {
    ProgramBuilder file;
    add_seconds(&file, 0, 25);
    file.packet(0xBD, ByteBuilder().u8(0x20).fill(50).bytes, 18000);
    file.packet(0xBD, ByteBuilder().raw({0xA0, 7, 0, 4, 0x0C, 0x01, 0x80}).fill(400).bytes, 9000);
    EXPECT_EQ(details_text(*details_of(file.bytes)),
        "MPEG-PS duration=0.993 bit_rate=161930\n"
        "video id=224 duration=0.993 bit_rate=97213 nominal_bit_rate=8000000 bytes=12071 frame_rate=29.970 size=720:480 "
        "pixel=32:27 display=16:9 fps_ratio=30000:1001 scan=2 field_order=1 bit_depth=8 codec=MPEG-2 Video profile=Main "
        "level=Main chroma=4:2:0\n"
        "audio mode=1 id=48512 duration=0.992 bit_rate=64000 bytes=6400 sample_rate=48000 channels=2 codec=AC-3 layout=L R\n"
        "audio mode=1 id=48544 duration=0.002 bit_rate=1536000 bytes=400 sample_rate=48000 channels=2 bit_depth=16 "
        "codec=PCM profile=signed 16 BE layout=L R\n"
        "text id=48416 start=0.100 bytes=50 codec=VobSub");
}

TEST(ProgramStream, waits_for_what_follows_the_first_picture) {
    const Payload start = video_start(); // ends with a picture_coding_extension
    ProgramBuilder file;
    file.pack(0).packet(0xE0, {start.begin(), start.end() - 9}, 0).packet(0xE0, {start.end() - 9, start.end()});
    EXPECT_EQ(details_of(file.bytes)->streams[0].field_order, ZAT_FIELD_TOP);
}

TEST(ElementaryStream, shows_bare_video) {
    const Payload mpeg1 =
        join({sequence_header({320, 240, 1, 5, 0x3FFFF, 0}), group_header(0, 0, 0, 0), picture(1), picture(2), picture(3)});
    // Telecine: of four frames two repeat a field.
    const Payload telecine = join({video_start(), picture(2, 3, 1, 1), picture(3, 3, 0, 0), picture(3, 3, 0, 1)});
    const struct {
        const char* name;
        Payload bytes;
        std::string expected;
    } rows[] = {
        {"MPEG-1", mpeg1, "[MPEG1-ES]\nV 320x240 1:1 VBR 30fps Progressive\nX ...fps\n0.1"},
        {"MPEG-2", telecine, "[MPEG2-ES]\nV " + sequence_line + "\n" + tail + "0.167"},
        {"no video", ByteBuilder().be32(0x1B7).append(slices(3000)).bytes, "\n0.000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(lines_of(row.bytes).substr(0, row.expected.size()), row.expected);
    }
}

TEST(ProgramStream, survives_every_cut_and_any_byte) {
    ProgramBuilder file;
    file.pack(0).map({{0x1B, 0xE0}, {0x03, 0xC0}}).unit(0xBB, slices(12)).packet(0xE0, video_start(), 1000);
    file.packet(0xBD, private_audio(0x80, ac3_frames(1)), 1000).packet(0xFD, slices(9)).packet(0xC0, mp2_frames(1)).pack(900);
    expect_sound_at_every_length(file.bytes);
    for (size_t i = 0; i < file.bytes.size(); ++i) {
        Payload changed = file.bytes;
        changed[i] ^= 0xFF;
        expect_sound(*info_of(changed));
    }
}

// Sectors of a VideoCD around a program stream, one pack in each.
Payload video_cd(const std::vector<Payload>& packs, size_t wrong_sync = 0) {
    ByteBuilder file;
    file.text("RIFF").le32(0).text("CDXAfmt ").le32(16).fill(16).text("data").le32(7).fill(wrong_sync, 1);
    for (size_t i = 0; i < packs.size(); ++i) {
        file.u8(0).fill(10, 0xFF).u8(0).raw({0, 2, static_cast<int>(i), 2}).raw({1, 1, 0x62, 0x0F, 1, 1, 0x62, 0x0F});
        const size_t start = file.bytes.size();
        file.append(packs[i]).pad_to(start + 2328);
    }
    return file.bytes;
}

TEST(VideoCd, reads_the_user_data_of_its_sectors) {
    const auto pack = [](int64_t clock, int id, const Payload& payload) {
        return ProgramBuilder().pack1(clock).packet1(id, payload, clock).bytes;
    };
    const Payload first = join({sequence_header({352, 288, 8, 3, 2875, 20}), picture(1), slices(2200)});
    // The last packet ends in the sector behind its own.
    const Payload across = pack(3600, 0xE0, slices(3000));
    const std::vector<Payload> packs = {pack(0, 0xE0, first), pack(1200, 0xC0, mp2_frames(10)),
        {across.begin(), across.begin() + 2324}, {across.begin() + 2324, across.end()}};
    const std::string expected =
        "[VideoCD]\nV 352x288 4:3(PAL) 1150kbps 25fps 40960Byte Progressive\nA " + mp2_line + "\nX ...fps\n0.080";
    EXPECT_EQ(lines_of(video_cd(packs)), expected);
    EXPECT_EQ(lines_of(video_cd(packs, 37)), expected);
    EXPECT_EQ(info_of(video_cd(packs))->data_size, 4U * 2324);
    EXPECT_EQ(lines_of(video_cd({})), "[VideoCD]\n0.000");
    expect_sound_at_every_length(video_cd(packs), 97);
}

} // namespace
} // namespace zat::test::mpeg_ps_test
