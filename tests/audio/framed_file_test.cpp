// Files of bare audio frames: AAC, Enhanced AC-3, MLP, DTS.
#include "support/audio_builder.h"
#include "support/dispatched.h"
#include "support/mpeg_audio_builder.h"

namespace zat::test::framed_file_test {

namespace {

Data adif(bool copyright, bool variable, uint64_t rate) {
    BitBuilder out;
    out.bits(0x41444946, 32).bits(copyright ? 1 : 0, 1).bits(0, copyright ? 36 : 0).bits(0, copyright ? 36 : 0).bits(0, 2);
    out.bits(variable ? 1 : 0, 1).bits(rate, 23).bits(0, 4).bits(0, variable ? 0 : 20);
    return ByteBuilder().append(program_config(out, 3).bytes).pad_to(8000).bytes;
}

TEST(AacFile, counts_adts_frames) {
    const Data three = join({adts_frame(372), adts_frame(371), adts_frame(373)});
    const Data title = id3v2_tag(100, id3v2_text("TIT2", "Song")).bytes;
    const Data stamp = id3v2_tag(73).bytes;
    const AdtsFields custom = {.rate_index = 3, .channels = 0, .fullness = 0};
    const std::string lc = "A [MPEG4-AAC AAC_LC] 44100Hz stereo(L,R) 128.165kbps 372Byte\n";
    const std::string facts = " sample_rate=44100 channels=2 codec=AAC profile=LC layout=L R";
    expect_rows(FILETYPE_AAC, "[ADTS]",
        {
            {"between tags, one of them between frames", join({title, three, stamp, three, id3v1_tag("Old").bytes}),
                lc +
                    "X ID3v2(173Byte),ID3v1\nI Song\n0.139\nADTS title=Song\naudio mode=2 duration=0.139 bit_rate=128166 "
                    "bytes=2232 samples=6144" +
                    facts},
            {"cut, data between the frames", join({three, Data(999, 0xFF), three, {0xFF, 0xF1, 0x50, 0x80, 0x2E, 0x80, 0xFC, 0}}),
                lc +
                    "X truncated\n0.139\nADTS notes=truncated\naudio mode=2 duration=0.139 bit_rate=128166 bytes=2232 "
                    "samples=6144" +
                    facts},
            {"channels in the stream", join({adts_program_frame(100, custom), adts_frame(100, custom)}),
                "A [MPEG4-AAC AAC_LC] 48000Hz custom 37.500kbps 100Byte\n0.043\nADTS\naudio mode=1 duration=0.043 "
                "bit_rate=37500 bytes=200 samples=2048 sample_rate=48000 channels=4 codec=AAC profile=LC"},
            {"several blocks in a frame, the lowest rate",
                repeated(2, adts_frame(600, {.rate_index = 12, .channels = 1, .blocks = 2})),
                "A [MPEG4-AAC AAC_LC] 7350Hz mono(C) 11.484kbps 600Byte\n0.836\nADTS\naudio mode=2 duration=0.836 "
                "bit_rate=11484 bytes=1200 samples=6144 sample_rate=7350 channels=1 codec=AAC profile=LC layout=C"},
        });
}

TEST(AacFile, samples_large_streams) {
    const Data stream = repeated(3000, join({adts_frame(300), adts_frame(500)}));
    const std::string facts = " sample_rate=44100 channels=2 codec=AAC profile=LC layout=L R";
    EXPECT_EQ(dispatched(FILETYPE_AAC, stream)->text(),
        "A [MPEG4-AAC AAC_LC] 44100Hz stereo(L,R) ~137.702kbps ~399Byte\nX time estimated\n139.431\n"
        "ADTS notes=time estimated estimated=1\n"
        "audio estimated=19 mode=2 duration=139.431 bit_rate=137702 bytes=2400000 samples=6148911" +
            facts);
    EXPECT_EQ(dispatched(FILETYPE_AAC, stream, option_thorough)->text(),
        "A [MPEG4-AAC AAC_LC] 44100Hz stereo(L,R) 137.812kbps 400Byte\n139.320\nADTS\n"
        "audio mode=2 duration=139.320 bit_rate=137813 bytes=2400000 samples=6144000" +
            facts);
    // Where all frames have one size, a few of them tell the rest.
    EXPECT_EQ(dispatched(FILETYPE_AAC, repeated(3000, adts_frame(400)))->text(),
        "A [MPEG4-AAC AAC_LC] 44100Hz stereo(L,R) 137.812kbps 400Byte\n69.660\nADTS\n"
        "audio mode=2 duration=69.660 bit_rate=137813 bytes=1200000 samples=3072000" +
            facts);
}

TEST(AacFile, describes_latm_and_adif) {
    BitBuilder sbr; // two sub-frames, explicit SBR from 24 to 48 kHz, stereo
    sbr.bits(0, 1).bits(0, 1).bits(1, 1).bits(1, 6).bits(0, 7).bits(5, 5).bits(6, 4).bits(2, 4).bits(3, 4).bits(2, 5);
    BitBuilder lower; // the same with a core of 48 kHz and an extension of 24
    lower.bits(0, 1).bits(0, 1).bits(1, 1).bits(1, 6).bits(0, 7).bits(5, 5).bits(3, 4).bits(2, 4).bits(6, 4).bits(2, 5);
    const BitBuilder same = BitBuilder().bits(1, 1);
    expect_rows(FILETYPE_AAC, "[LATM]",
        {
            {"LATM", join({loas_frame(same, 200), loas_frame(sbr, 210), loas_frame(same, 190)}),
                "A [AAC HE+SBR] 48000Hz stereo(L,R) 18.750kbps\n0.256\nLATM\naudio duration=0.256 bit_rate=18750 bytes=600 "
                "samples=12288 sample_rate=48000 channels=2 codec=AAC profile=HE-AAC layout=L R"},
            {"an extension below the core's rate", repeated(3, loas_frame(lower, 200)),
                "A [AAC HE+SBR] 24000Hz stereo(L,R) 37.500kbps\n0.128\nLATM\naudio duration=0.128 bit_rate=37500 bytes=600 "
                "samples=3072 sample_rate=24000 channels=2 codec=AAC profile=HE-AAC layout=L R"},
            {"LATM without a configuration", repeated(3, loas_frame(same, 200)), "0.000\nLATM"},
        });
    expect_rows(FILETYPE_AAC, "[ADIF]",
        {
            {"constant", adif(true, false, 128000),
                "A [AAC LC] 48000Hz custom 128.000kbps\n0.500\nADIF\naudio mode=1 duration=0.500 bit_rate=128000 bytes=8000 "
                "sample_rate=48000 channels=4 codec=AAC profile=LC"},
            {"variable", adif(false, true, 160000),
                "A [AAC LC] 48000Hz custom ~160.000kbps\nX time estimated\n0.400\nADIF notes=time estimated estimated=1\n"
                "audio estimated=3 mode=2 duration=0.400 bit_rate=160000 bytes=8000 sample_rate=48000 channels=4 codec=AAC "
                "profile=LC"},
        });
}

TEST(Eac3File, counts_frames_of_the_first_programme) {
    const Data core = eac3_frame(0, 0, 800, 7, 1);
    const Data rear = eac3_frame(1, 0, 400, 6, 0, 0x1A00);
    const std::string facts = " sample_rate=48000 channels=6 codec=E-AC-3 layout=L R C LFE Ls Rs";
    const Data other = eac3_frame(0, 1, 400, 2, 0);
    expect_rows(FILETYPE_AC3, "",
        {
            {"7.1 and another programme", repeated(4, join({core, rear, other})),
                "A [E-AC-3 3/2.1] 48000Hz 8ch 400.000kbps\n0.128\nAC-3\naudio mode=1 duration=0.128 bit_rate=400000 bytes=6400 "
                "samples=6144 sample_rate=48000 channels=8 codec=E-AC-3 layout=L R C LFE Lb Rb Ls Rs"},
            {"behind a core of AC-3, whose rate tells the record's time",
                repeated(4, join({ByteBuilder().raw({0x0B, 0x77, 0, 0, 0x1E, 0x40, 0xE1}).pad_to(1792).bytes, rear})),
                "A AC3 48000Hz [5.1Ch(3/2) L+C+R+SL+SR CM] 448kbps\n0.157\nAC-3 duration=0.128\naudio mode=1 duration=0.128 "
                "bit_rate=548000 "
                "bytes=8768 samples=6144 sample_rate=48000 channels=8 codec=E-AC-3 layout=L R C LFE Lb Rb Ls Rs"},
            {"behind a tag", join({id3v2_tag(3000).bytes, repeated(3, core)}),
                "A [E-AC-3 3/2.1] 48000Hz 6ch 200.000kbps\nX ID3v2(3000Byte)\n0.096\nAC-3\naudio mode=1 duration=0.096 "
                "bit_rate=200000 bytes=2400 samples=4608" +
                    facts},
            {"behind other data", join({Data(700, 0x0B), repeated(2, core)}),
                "A [E-AC-3 3/2.1] 48000Hz 6ch 200.000kbps\n0.064\nAC-3\naudio mode=1 duration=0.064 bit_rate=200000 bytes=1600 "
                "samples=3072" +
                    facts},
        });
}

TEST(MlpFile, counts_access_units) {
    const uint64_t surround = 0x00F80000 | 0x0F << 15 | 0x4F; // 48 kHz, 5.1 and 7.1
    const Data core = ByteBuilder().be32(0x0B770000).be16(0).pad_to(128).bytes;
    expect_rows(FILETYPE_AC3, "",
        {
            {"TrueHD", join({mlp_unit(100, 0xBA, surround, 0x8960), mlp_unit(60, 0, 0), mlp_unit(80, 0, 0)}),
                "A Dolby_TrueHD 48000Hz [7.1ch VBR] 7200.000kbps\n0.003\nTrueHD\naudio flags=128 mode=2 duration=0.003 "
                "bit_rate=768000 bytes=240 samples=120 sample_rate=48000 channels=8 codec=TrueHD layout=L R C LFE Lb Rb Ls Rs"},
            {"TrueHD at 192 kHz with a core", join({mlp_unit(100, 0xBA, 0x20000003, 0x0960), core, mlp_unit(60, 0, 0)}),
                "A Dolby_TrueHD 192000Hz [2.1ch CBR] 28800.000kbps\n0.002\nTrueHD\naudio flags=128 mode=1 duration=0.002 "
                "bit_rate=1382400 bytes=288 samples=320 sample_rate=192000 channels=3 codec=TrueHD layout=L R C"},
            {"MLP", join({mlp_unit(100, 0xBB, 0x2F8F0014), mlp_unit(60, 0, 0)}),
                "A [MLP] 44100Hz 6ch(L+R+C+LFE+SL+SR) 24Bit 705.600kbps\n0.002\nMLP\naudio flags=128 mode=1 duration=0.002 "
                "bit_rate=705600 bytes=160 samples=80 sample_rate=44100 channels=6 bit_depth=24 codec=MLP layout=L R C LFE Ls "
                "Rs"},
            {"MLP with reserved fields", join({mlp_unit(100, 0xBB, 0xFFFF001F), mlp_unit(60, 0, 0)}),
                "A [MLP]\n0.000\nMLP\naudio flags=128 mode=1 codec=MLP"},
            {"cut in its header", {0x80, 0x30, 0, 0, 0xF8, 0x72, 0x6F, 0xBA, 0, 0}, "0.000\nTrueHD"},
        });
}

} // namespace

} // namespace zat::test::framed_file_test
