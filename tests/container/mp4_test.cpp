#include "container/mp4.h"

#include "common/catalogue/catalogue_directory.h"
#include "common/text/messages.h"
#include "support/analysed.h"
#include "support/atom_builder.h"
#include "support/record_text.h"
#include "support/temp_file.h"

#include <fstream>
#include <gtest/gtest.h>

namespace zat::test::mp4_test {

#define NOT_LISTED "\x8A\x59\x93\x96\x96\xB3\x82\xB5"

constexpr char catalogue[] = "[AVI-Audio]\n0055\tMP3 by tag\n"
                             "[QT-BRAND]\nISOM\tBase Media\n"
                             "[QT-AUDIO]\nalac\tALAC\nfLaC\tFLAC\nec-3\tE-AC-3\nlpcm\tLPCM\n"
                             "mp4a\tMPEG-4 Audio\nac-3\tAC-3\nin24\tPCM 24\nmlpa\tTrueHD\n"
                             "[QT-VIDEO]\nhvc1\tHEVC\nmp4v\tMPEG4\nmp2v\tMPEG-2\n[END]\n";

struct Mp4 : testing::Test {
    Mp4() {
        std::ofstream(temp_directory() + "zat-codec.ini", std::ios::binary) << catalogue;
        set_catalogue_directory(temp_directory().c_str());
    }
    ~Mp4() override { set_catalogue_directory(""); }
};

std::unique_ptr<InfoRecord> analyse(const Data& bytes) {
    return analysed(AnalyzeMp4File, bytes);
}

struct Row {
    const char* name;
    Data bytes;
    std::string expected;
};

void expect_rows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto record = analyse(row.bytes);
        expect_sound(*record);
        EXPECT_EQ(record_text(*record), row.expected);
    }
}

// Baseline, level 3, 320 x 240 (ITU-T H.264, 7.3.2.1.1).
const Data sequence_parameter_set = {0x67, 0x42, 0, 0x1E, 0xDA, 0x05, 0x07, 0xE4};

Data avc_configuration(const Data& sps, int count = 1, int64_t length = own_size) {
    const uint64_t told = length == own_size ? sps.size() : static_cast<uint64_t>(length);
    return atom("avcC", ByteBuilder().raw({1, 66, 0, 30, 0xFF, 0xE0 | count}).be16(told).append(sps).bytes);
}

Data pixel_aspect(uint64_t h, uint64_t v) {
    return atom("pasp", ByteBuilder().be32(h).be32(v).bytes);
}

const Data aac_lc_stereo = {0x12, 0x10}; // 44100 Hz

Data video_track(std::initializer_list<Data> children, const Data& table = sizes({1000, 500})) {
    return track(1, "vide", {descriptions({video_entry("avc1", children)}), table});
}

Data audio_track(const Data& entry, const Data& table = sizes({100, 100})) {
    return track(2, "soun", {descriptions({entry}), table});
}

// A movie of two seconds.
Data movie(std::initializer_list<Data> children) {
    return atom("moov", {movie_header(1000, 2000), join(children)});
}

const char avc_line[] = "V 320x240 [AVC/H264 Baseline@3 Unspecified] 24Bit 1.000fps 6.000kbps 2f Progressive\n";

TEST_F(Mp4, describes_tracks_wherever_the_movie_stands) {
    const Data sound = audio_entry("mp4a", {es_descriptor(0x40, aac_lc_stereo, 96000)});
    const Data content = movie({video_track({avc_configuration(sequence_parameter_set)}), audio_track(sound)});
    const std::string streams =
        avc_line + std::string("A [AAC 44100Hz stereo(L,R) 96kbps] 44100Hz 2ch 16Bit 0.800kbps\nX [Base Media]\n");
    const Data media(2000);
    expect_rows({
        {"movie first", join({file_type("isom"), content, atom("mdat", media)}), streams + "X moov chunk 16\n2.000"},
        {"64-bit data", join({file_type("isom"), large_atom("mdat", media), content}), streams + "X moov chunk 2,032\n2.000"},
    });
    EXPECT_STREQ(analyse(join({content, large_atom("mdat", media)}))->label, "[Quick Time(64BitAtom)]");
    EXPECT_STREQ(analyse(join({content, atom("mdat", media)}))->label, "[Quick Time]");
    expect_sound_at_every_length(join({file_type("isom"), content}));
}

TEST_F(Mp4, names_video) {
    const Data sps = sequence_parameter_set;
    const Data cut(sps.begin(), sps.begin() + 5);
    const Data visual = ByteBuilder().raw({0, 0, 1, 0xB0, 1}).raw({0, 0, 1, 0x20, 0, 0x84, 0}).bytes;
    const auto video = [](const Data& entry) { return movie({track(1, "vide", {descriptions({entry}), sizes({1500, 0})})}); };
    const auto line = [](const std::string& codec, const char* scan = "interlace") {
        return "V 320x240 [" + codec + "] 24Bit 1.000fps 6.000kbps 2f " + scan + "\n2.000";
    };
    expect_rows({
        {"pixel aspect wins", video(video_entry("avc1", {avc_configuration(sps), pixel_aspect(12, 11)})),
            line("AVC/H264 Baseline@3 12:11", "Progressive")},
        {"MPEG-4 without configuration", video(video_entry("mp4v", {es_descriptor(0x20, {}, 0)})),
            line("MPEG4 UnknownProfile(0) unknown(0)")},
        {"no parameter set", video(video_entry("avc1", {avc_configuration({}, 0)})), line("AVC/H264 Baseline@3 ")},
        {"parameter set longer than its atom", video(video_entry("avc1", {avc_configuration(sps, 1, 65535)})),
            line("AVC/H264 Baseline@3 Unspecified", "Progressive")},
        {"MPEG-4 Visual", video(video_entry("mp4v", {es_descriptor(0x20, visual, 0)})), line("MPEG4 Simple@L1 1:1")},
        {"not listed", video(video_entry("zzzz")), line(NOT_LISTED "zzzz")},
        {"the last entry stands",
            movie({track(1, "vide", {descriptions({video_entry("mp4v"), video_entry("hvc1")}), sizes({1500, 0})})}),
            line("HEVC")},
    });
    // Told once, by the first track that has something to tell.
    const Data bad = movie({video_track({avc_configuration(sps)}), video_track({avc_configuration(cut)}),
        video_track({avc_configuration(sps, 1, 6)})});
    EXPECT_STREQ(analyse(join({file_type("isom"), bad}))->extra[1], "SPS 41/40");
}

TEST_F(Mp4, names_audio) {
    const auto sound = [](const Data& entry, const Data& table = sizes({500, 500})) {
        return movie({audio_track(entry, table)});
    };
    const auto fixed = [](int version) {
        ByteBuilder entry;
        entry.be32(0).be32(1).be16(static_cast<uint64_t>(version)).fill(6);
        return entry.be16(3).be16(16).be32(0).be16(1).be16(0);
    };
    // 96000.0 as a floating-point number.
    const Data version_2 = fixed(2).be32(72).be64(0x40F7700000000000).be32(6).be32(0x7F000000).be32(24).fill(12).bytes;
    const Data cookie =
        ByteBuilder().be32(0).be32(4096).raw({0, 24, 40, 10, 14, 1}).be16(255).be32(0).be32(700000).be32(96000).bytes;
    // 448 kbit/s, 48000 Hz, 3/2 with LFE, and a dependent substream with Lrs and Rrs.
    const Data eac3 = BitBuilder().bits(448, 13).bits(16, 10).bits(0xF, 9).bits(1, 7).bits(2, 9).bytes;
    // Cut within the locations of the dependent substream's channels.
    const Data cut_eac3 = BitBuilder().bits(448, 13).bits(16, 10).bits(0xF, 9).bits(1, 7).bits(1, 1).bytes;
    const Data aac = es_descriptor(0x40, aac_lc_stereo, 0);
    const Data in_wave = join({fixed(1).fill(16).bytes, atom("wave", {atom("frma", ByteBuilder().text("mp4a").bytes), aac})});
    expect_rows({
        {"ALAC by its cookie", sound(audio_entry("alac", {atom("alac", cookie)})),
            "A [ALAC] 96000Hz 1ch 24Bit 700.000kbps\n2.000"},
        {"ALAC's cookie in an entry of another codec", sound(audio_entry("in24", {atom("alac", cookie)})),
            "A [PCM 24] 44100Hz 2ch 16Bit 4.000kbps\n2.000"},
        {"E-AC-3, frames of one size", sound(audio_entry("ec-3", {atom("dec3", eac3)}), constant_sizes(1792, 100)),
            "A [E-AC-3] 48000Hz 8ch 16Bit 448.000kbps\n2.000"},
        {"E-AC-3, locations cut off", sound(audio_entry("ec-3", {atom("dec3", cut_eac3)})),
            "A [E-AC-3] 48000Hz 6ch 16Bit 448.000kbps\n2.000"},
        {"an entry that ends within its rate",
            sound(atom("in24", ByteBuilder().be64(1).fill(8).be16(2).be16(16).be32(0).raw({0xAC}).bytes)),
            "A [PCM 24] 0Hz 2ch 16Bit 4.000kbps\n2.000"},
        {"AAC, maximum rate, in QuickTime's version 1", sound(atom("mp4a", in_wave)),
            "A [AAC 44100Hz stereo(L,R) 128kbps] 1Hz 3ch 16Bit 4.000kbps\n2.000"},
        {"QuickTime's version 2", sound(atom("lpcm", version_2)), "A [LPCM] 96000Hz 6ch 24Bit 4.000kbps\n2.000"},
        {"unlisted WAVE format tag", sound(audio_entry({"ms\0\xAB", 4})),
            "A [" NOT_LISTED "6d7300ab] 44100Hz 2ch 16Bit 4.000kbps\n2.000"},
        {"its digits as characters", sound(audio_entry("6d73")), "A [" NOT_LISTED "6d73] 44100Hz 2ch 16Bit 4.000kbps\n2.000"},
        {"FLAC by its stream information",
            sound(audio_entry(
                "fLaC", {atom("dfLa", ByteBuilder().be32(0).be32(0x80000022).fill(10).be64(0x177002F000000000).fill(16).bytes)})),
            "A [FLAC] 96000Hz 2ch 16Bit 4.000kbps\n2.000"},
        {"a rate of 32 bits", sound(audio_entry("ipcm", {atom("srat", ByteBuilder().be32(0).be32(192000).bytes)})),
            "A [" NOT_LISTED "ipcm] 192000Hz 2ch 16Bit 4.000kbps\n2.000"},
        {"TrueHD's rate of 32 bits",
            sound(atom("mlpa", ByteBuilder().be64(1).fill(8).be16(8).be16(16).be32(0).be32(96000).bytes)),
            "A [TrueHD] 96000Hz 8ch 16Bit 4.000kbps\n2.000"},
        {"TrueHD's channels by its format_info",
            sound(audio_entry("mlpa", {atom("dmlp", {0x00, 0x97, 0xC0, 0x0F, 0x18, 0xFE, 0, 0, 0, 0})})),
            "A [TrueHD] 48000Hz 6ch 16Bit 4.000kbps\n2.000"},
        {"one size: knowingly the count of samples", sound(audio_entry("in24"), constant_sizes(6, 1000)),
            "A [PCM 24] 44100Hz 2ch 16Bit 4.000kbps\n2.000"},
    });
}

TEST_F(Mp4, names_audio_by_its_first_frame) {
    const Data ac3 = {0x0B, 0x77, 0, 0, 0x1E, 0x40, 0xE1, 0};
    const Data dts = {0x7F, 0xFE, 0x80, 0x01, 0xFC, 0x3C, 0x3F, 0xF2, 0x77, 0, 0x3C, 0, 0, 0, 0, 0};
    const Data mp3 = {0xFF, 0xFB, 0x90, 0x00};
    const auto sound = [](const Data& frame, const Data& entry) {
        return join(
            {atom("mdat", frame), movie({track(1, "soun", {descriptions({entry}), constant_sizes(1, 1000), first_chunk(8)})})});
    };
    const auto line = [](const std::string& codec, size_t offset) {
        return "A [" + codec + "] 44100Hz 2ch 16Bit 4.000kbps\nX moov chunk " + std::to_string(offset) + "\n2.000";
    };
    const char mp3_text[] = "MPEG1-LayerIII 44100Hz [CBR Stereo] 128.00kbps [417bpf] ";
    expect_rows({
        {"ac-3", sound(ac3, audio_entry("ac-3")), line("AC3 48000Hz [5.1Ch(3/2) L+C+R+SL+SR CM] 448kbps", 16)},
        {"dtsc", sound(dts, audio_entry("dtsc")), line("DTS(16BitBE) 48000Hz 5.1Ch C+L+R+SL+SR+LFE 1536.000kbps 16Bit", 24)},
        {"MPEG-1 audio as object type", sound(mp3, audio_entry("mp4a", {es_descriptor(0x6B, {}, 0)})), line(mp3_text, 12)},
        {"no frame there", sound(mp3, audio_entry("ac-3")), line("AC-3", 12)},
        {"64-bit offset",
            join({atom("mdat", mp3), movie({track(1, "soun",
                                         {descriptions({audio_entry(".mp3")}), constant_sizes(1, 1000),
                                             atom("co64", ByteBuilder().be32(0).be32(1).be64(8).bytes)})})}),
            line(mp3_text, 12)},
    });
}

TEST_F(Mp4, sums_sample_tables) {
    const auto video = [](const Data& table) { return movie({track(1, "vide", {descriptions({video_entry("hvc1")}), table})}); };
    const auto line = [](const std::string& numbers) { return "V 320x240 [HEVC] 24Bit " + numbers + " interlace\n2.000"; };
    const std::vector<uint64_t> many(20000, 0x80FF);
    const auto compact = [](int bits, uint64_t count, std::initializer_list<int> table) {
        return atom("stz2", ByteBuilder().be32(0).be32(static_cast<uint64_t>(bits)).be32(count).raw(table).bytes);
    };
    expect_rows({
        {"more than a block", video(sizes(many)), line("10000.000fps 2641840.000kbps 20000f")},
        {"a count of 2^32 - 1", video(sizes({1000, 250}, 0xFFFFFFFF)), line("2147483647.500fps 5.000kbps -1f")},
        {"4-bit sizes, padded", video(compact(4, 3, {0x12, 0x3F})), line("1.500fps 0.024kbps 3f")},
        {"8-bit sizes", video(compact(8, 3, {1, 2, 3})), line("1.500fps 0.024kbps 3f")},
        {"16-bit sizes", video(compact(16, 2, {1, 0, 1, 0})), line("1.000fps 2.048kbps 2f")},
    });
}

// A fragment of track 1: the header's flags and fields, then runs.
Data fragment(uint64_t header_flags, const Data& fields, std::initializer_list<Data> runs) {
    const Data header = ByteBuilder().be32(header_flags).be32(1).append(fields).bytes;
    return atom("moof", {atom("traf", {atom("tfhd", header), join(runs)})});
}

Data run(uint64_t flags, uint64_t count, const Data& samples) {
    return atom("trun", ByteBuilder().be32(flags).be32(count).append(samples).bytes);
}

TEST_F(Mp4, adds_fragments) {
    const auto announced = [](uint64_t movie_duration, const Data& extension) {
        return join({file_type("isom"), atom("moov", {movie_header(1000, movie_duration), atom("mvex", extension),
                                                         track(1, "vide", {descriptions({video_entry("hvc1")}), sizes({})})})});
    };
    const Data whole = atom("mehd", ByteBuilder().be32(0).be32(4000).bytes);
    const Data defaults = atom("trex", ByteBuilder().be32(0).be32(1).be32(1).be32(500).be32(250).be32(0).bytes);
    const Data plain = fragment(0, {}, {run(0, 4, {})});
    const auto line = [](const std::string& numbers) {
        return "V 320x240 [HEVC] 24Bit " + numbers + " interlace\nX [Base Media]\nX MovieFragment(1)\nX moov chunk 16\n";
    };
    expect_rows({
        {"track defaults", join({announced(0, defaults), plain}), line("2.000fps 4.000kbps 4f") + "2.000"},
        {"the announced duration wins", join({announced(0, join({whole, defaults})), plain}),
            line("1.000fps 2.000kbps 4f") + "4.000"},
        {"an announced duration without a movie header has no scale",
            join({atom("moov", {atom("mvex", join({whole, defaults})),
                                   track(1, "vide", {descriptions({video_entry("hvc1")}), sizes({})})}),
                plain}),
            "V 320x240 [HEVC] 24Bit 2.000fps 4.000kbps 4f interlace\n2.000"},
        {"the fragment's own defaults",
            join({announced(0, defaults),
                fragment(0x1B, ByteBuilder().be64(0).be32(1).be32(1000).be32(125).bytes, {run(0, 4, {})})}),
            line("1.000fps 1.000kbps 4f") + "4.000"},
        {"samples, two runs, a table cut short",
            join({announced(0, {}), fragment(0, {},
                                        {run(0x305, 1, ByteBuilder().be64(0).be32(1000).be32(250).bytes),
                                            run(0xF00, 9, ByteBuilder().be32(1000).be32(250).be64(0).be32(7).bytes)})}),
            line("5.000fps 2.000kbps 10f") + "2.000"},
    });
}

TEST_F(Mp4, tells_chapters_and_what_is_missing) {
    const auto chapters = [](std::initializer_list<int> payload) {
        return join({file_type("abcd"),
            movie({atom("trak", Data{}), atom("udta", {atom("chpl", ByteBuilder().raw(payload).bytes), Data(4)})})});
    };
    const char told[] = "X [" NOT_LISTED "ABCD]\nX \x83\x60\x83\x83\x83\x76\x83\x5E\x81\x5B(3)\nX moov chunk 16\n2.000";
    expect_rows({
        {"chapters, version 1", chapters({1, 0, 0, 0, 9, 9, 9, 9, 3}), told},
        {"chapters, version 0", chapters({0, 0, 0, 0, 3}), told},
        {"no track", movie({}), "G trak\n2.000"},
        {"compressed movie", movie({atom("cmov", Data{})}), std::string("G ") + message::compressed_header + "\n2.000"},
        {"time scale 0", atom("moov", {movie_header(0, 2000), video_track({})}),
            "V 320x240 [" NOT_LISTED "avc1] 24Bit 0.000fps 0.000kbps 2f interlace\ninf"},
    });
    ByteBuilder tracks;
    for (int i = 0; i < 12; ++i) {
        tracks.append(video_track({})).append(audio_track(audio_entry("ac-3")));
    }
    // The longest track counts also beyond the ten.
    const Data run_of_9 = atom("trun", ByteBuilder().be32(0x100).be32(1).be32(9000).bytes);
    const Data late = atom("moof", {atom("traf", {atom("tfhd", ByteBuilder().be32(0).be32(77).bytes), run_of_9})});
    const auto record = analyse(join({atom("moov", {movie_header(1000, 0), tracks.bytes, track(77, "soun", {})}), late}));
    EXPECT_EQ(record->play_time, 9);
    expect_sound(*record);
    EXPECT_EQ(record->video_count, 10);
    EXPECT_EQ(record->audio_count, 10);
}

TEST_F(Mp4, walks_past_sizes_that_lie) {
    const Data sound = audio_track(audio_entry("in24"));
    const std::string line = "A [PCM 24] 44100Hz 2ch 16Bit 0.800kbps\n2.000";
    ByteBuilder nested;
    for (uint64_t left = 10000; left != 0; --left) {
        nested.be32(left * 8).text("trak");
    }
    ByteBuilder empties;
    for (int i = 0; i < 200000; ++i) {
        empties.append(atom("trak", Data{}));
    }
    std::vector<Row> rows = {
        {"user data with a zero behind an entry", movie({atom("udta", {atom("abcd", Data{}), Data(4)}), sound}), line},
        {"a child beyond its parent", movie({atom("udta", atom("abcd", Data{}, 0x7FFFFFFF)), sound}), line},
        {"a 64-bit size of 2^63", movie({atom("udta", large_atom("abcd", {}, INT64_MIN)), sound}), line},
        {"a 64-bit size below its header", movie({atom("udta", large_atom("abcd", {}, 15)), sound}), line},
        {"a movie beyond the file",
            ByteBuilder().be32(0x7FFFFFFF).text("moov").append(movie_header(1000, 2000)).append(sound).bytes, line},
        {"nested too deep", movie({atom("udta", nested.bytes), sound}), line},
        {"nothing but containers", movie({empties.bytes, sound}), line},
    };
    for (int size = 0; size < 8; ++size) {
        if (size != 1) {
            rows.push_back({"a size below its header", movie({atom("udta", atom("abcd", Data(40), size)), sound}), line});
            rows.push_back({"such a movie", atom("moov", sound, size), "G trak\n0.000"});
        }
    }
    expect_rows(rows);
}

} // namespace zat::test::mp4_test
