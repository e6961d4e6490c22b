#include "support/byte_builder.h"
#include "support/dispatched.h"
#include "support/riff_builder.h"

namespace zat::test::midi_file_test {

namespace {

Data header(uint64_t format, uint64_t tracks, uint64_t division) {
    return ByteBuilder().text("MThd").be32(6).be16(format).be16(tracks).be16(division).bytes;
}

Data track(const Data& events, int64_t size = -1) {
    return ByteBuilder().text("MTrk").be32(size < 0 ? events.size() : static_cast<uint64_t>(size)).append(events).bytes;
}

// Hexadecimal events, times among them.
Data track(std::string_view events) {
    return track(bytes_of_hex(events));
}

const char* const end_of_track = "00 FF2F00";

} // namespace

TEST(MidiFile, describes_tracks_and_time) {
    const std::string one_second = "81 40 FF5103 0F4240 "; // behind half a quarter: 1 s a quarter
    const Data named = track("00 FF0304 536F6E67 00 FF0301 58 83 60 903C40 00 3C00 00 FF2F00");
    const struct {
        const char* name;
        uint32_t type_code;
        Data bytes;
        const char* expected;
    } rows[] = {
        {"a tempo in the second track; the name of the first", 102,
            join({header(1, 2, 384), named, track(one_second + "83 00 FF2F00")}),
            "A [SMF 1] 2 tracks 384 ticks\n"
            "I Song\n"
            "1.250\n"
            "MIDI title=Song duration=1.250\n"
            "audio duration=1.250 bytes=38 codec=MIDI profile=SMF 1"},
        {"all kinds of events", 102,
            join({header(0, 1, 1), track("00 F003 7E7FF7 00 F701 F3 00 C001 01 02 00 D001 00 E00000 00 A00000 00 B00000 00 "
                                         "FF7F01 00 02 804040 00 FF2F00 "
                                         "7F 804040")}),
            "A [SMF 0] 1 tracks 1 ticks\n"
            "1.500\n"
            "MIDI duration=1.500\n"
            "audio duration=1.500 bytes=47 codec=MIDI profile=SMF 0"},
        {"at one time the last tempo, a tempo of 0 is none", 102,
            join({header(1, 2, 1), track("00 FF5103 0F4240 00 FF5103 000000 01 FF2F00"), track("00 FF5103 1E8480 00 FF2F00")}),
            "A [SMF 1] 2 tracks 1 ticks\n"
            "2.000\n"
            "MIDI duration=2.000\n"
            "audio duration=2.000 bytes=29 codec=MIDI profile=SMF 1"},
        {"tracks one behind the other", 102, join({header(2, 2, 1), track("00 FF5103 0F4240 02 FF2F00"), track("02 FF2F00")}),
            "A [SMF 2] 2 tracks 1 ticks\n"
            "3.000\n"
            "MIDI duration=3.000\n"
            "audio duration=3.000 bytes=15 codec=MIDI profile=SMF 2"},
        {"frames of 25 a second", 102, join({header(0, 1, 0xE728), track("87 68 FF2F00")}),
            "A [SMF 0] 1 tracks 25fps 40 ticks\n"
            "1.000\n"
            "MIDI duration=1.000\n"
            "audio duration=1.000 bytes=5 codec=MIDI profile=SMF 0"},
        {"frames with drops", 102, join({header(0, 1, 0xE364), track("97 38 FF2F00")}),
            "A [SMF 0] 1 tracks 29fps 100 ticks\n"
            "1.001\n"
            "MIDI duration=1.001\n"
            "audio duration=1.001 bytes=5 codec=MIDI profile=SMF 0"},
        {"no division, an unknown format", 102, join({header(9, 1, 0), track("01 FF2F00")}),
            "A [SMF] 1 tracks\n"
            "0.000\n"
            "MIDI\n"
            "audio bytes=4 codec=MIDI"},
        {"a track of two is missing", 102, join({header(1, 2, 1), track("01 FF2F00")}),
            "A [SMF 1] 2 tracks 1 ticks\n"
            "X truncated\n"
            "X time estimated\n"
            "0.500\n"
            "MIDI notes=truncated\n"
            "time estimated duration=0.500 estimated=1\n"
            "audio estimated=1 duration=0.500 bytes=4 codec=MIDI profile=SMF 1"},
        {"a cut track", 102, join({header(1, 1, 1), track(bytes_of_hex("01 903C40 01"), 100)}),
            "A [SMF 1] 1 tracks 1 ticks\n"
            "X truncated(95 Byte missing)\n"
            "X time estimated\n"
            "1.000\n"
            "MIDI notes=truncated\n"
            "time estimated duration=1.000 missing=95 estimated=1\n"
            "audio estimated=1 duration=1.000 bytes=5 codec=MIDI profile=SMF 1"},
        {"a status that no file has", 102, join({header(1, 1, 1), track("01 903C40 01 F4 01 903C40")}),
            "A [SMF 1] 1 tracks 1 ticks\n"
            "X damaged\n"
            "X time estimated\n"
            "1.000\n"
            "MIDI notes=damaged\n"
            "time estimated duration=1.000 estimated=1\n"
            "audio estimated=1 duration=1.000 bytes=10 codec=MIDI profile=SMF 1"},
        {"a change of tempo that is cut off", 102, join({header(1, 1, 1), track("01 FF5103 07A1")}),
            "A [SMF 1] 1 tracks 1 ticks\n"
            "X damaged\n"
            "X time estimated\n"
            "0.500\n"
            "MIDI notes=damaged\n"
            "time estimated duration=0.500 estimated=1\n"
            "audio estimated=1 duration=0.500 bytes=6 codec=MIDI profile=SMF 1"},
        {"a time of five bytes, other chunks, tracks too many", 102,
            join({header(1, 2, 1), bytes_of_hex("58585858 00000002 FFFF"), track("01 903C40 81 81 81 81 01"), track(end_of_track),
                track("7F FF2F00")}),
            "A [SMF 1] 2 tracks 1 ticks\n"
            "X damaged\n"
            "X time estimated\n"
            "0.500\n"
            "MIDI notes=damaged\n"
            "time estimated duration=0.500 estimated=1\n"
            "audio estimated=1 duration=0.500 bytes=13 codec=MIDI profile=SMF 1"},
        {"in RIFF, with texts", 103,
            riff_list("RIFF", "RMID",
                {riff_chunk("data", join({header(0, 1, 1), track("01 FF2F00")})),
                    riff_list("LIST", "INFO", {riff_chunk("INAM", {'N'}), riff_chunk("ISFT", {'T'})})}),
            "A [SMF 0] 1 tracks 1 ticks\n"
            "I N / T\n"
            "0.500\n"
            "MIDI profile=RMID title=N writer=T duration=0.500\n"
            "audio duration=0.500 bytes=4 codec=MIDI profile=SMF 0"},
        {"RIFF without it", 103, riff_list("RIFF", "RMID", {riff_chunk("LIST", {})}),
            "0.000\n"
            "MIDI profile=RMID"},
    };
    for (const auto& row : rows) {
        const auto result = dispatched(row.type_code, row.bytes);
        EXPECT_STREQ(result->record.label, row.type_code == 102 ? "[MIDI]" : "[RIFF(RMID)]");
        EXPECT_EQ(result->text(), row.expected) << row.name;
    }
}

// More changes of tempo than are kept, in the order that takes longest to sort; a walk over a million chunks.
TEST(MidiFile, bounds_its_work) {
    ByteBuilder changes;
    changes.append(header(1, 3000, 1));
    for (int i = 3000; i > 0; --i) {
        const Data tempo = ByteBuilder().u8(static_cast<uint64_t>(0x80 | i >> 7)).u8(static_cast<uint64_t>(i & 0x7F)).bytes;
        changes.append(track(ByteBuilder().append(tempo).append(bytes_of_hex("FF5103 07A120")).bytes));
    }
    EXPECT_EQ(dispatched(102, changes.bytes)->text(), "A [SMF 1] 3000 tracks 1 ticks\n"
                                                      "X time estimated\n"
                                                      "1500.000\n"
                                                      "MIDI notes=time estimated duration=1500.000 estimated=1\n"
                                                      "audio estimated=1 duration=1500.000 bytes=24000 codec=MIDI profile=SMF 1");

    const Data notes = ByteBuilder().append(bytes_of_hex("01 903C40")).fill(18'000'000).bytes;
    EXPECT_EQ(dispatched(102, join({header(1, 1, 1), track(notes)}))->text(),
        "A [SMF 1] 1 tracks 1 ticks\n"
        "X time estimated\n"
        "0.500\n"
        "MIDI notes=time estimated\n"
        "work limit duration=0.500 estimated=1\n"
        "audio estimated=1 duration=0.500 bytes=18000004 codec=MIDI profile=SMF 1");
}

TEST(MidiFile, is_sound_at_every_length) {
    expect_sound_when_cut(
        102, join({header(1, 2, 1), track("00 FF0304 536F6E67 00 F003 7E7FF7 01 FF5103 0F4240"), track(end_of_track)}));
    expect_sound_when_cut(103, riff_list("RIFF", "RMID", {riff_chunk("data", join({header(0, 1, 1), track(end_of_track)}))}));
}

} // namespace zat::test::midi_file_test
