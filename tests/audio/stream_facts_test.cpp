#include "audio/stream_facts.h"

#include "audio/dts_hd.h"
#include "audio/first_frame.h"
#include "support/audio_builder.h"
#include "support/details_text.h"

#include <gtest/gtest.h>

namespace zat::test::stream_facts_test {

namespace {

std::string described(FrameDescriber describe, const Data& bytes) {
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    char line[line_size];
    return describe(bytes, &stream, line) ? std::string(line) + " | " + stream_text(stream) : "refused";
}

TEST(StreamFacts, tells_eac3_by_substreams) {
    const Data core = eac3_frame(0, 0, 800, 7, 1);
    const Data rear = eac3_frame(1, 0, 400, 6, 0, 0x1A00); // Ls, Rs once more, and Lrs/Rrs
    EXPECT_EQ(described(describe_eac3_frame, join({core, rear, core, rear, core})),
        "[E-AC-3 3/2.1] 48000Hz 8ch 300.000kbps | audio estimated=2 bit_rate=300000 sample_rate=48000 channels=8 codec=E-AC-3 "
        "layout=L R C LFE Lb Rb Ls Rs");
    // Another programme is none of its channels, but of its bytes.
    EXPECT_EQ(described(describe_eac3_frame, join({eac3_frame(0, 0, 400, 0, 0, -1, 0), eac3_frame(0, 1, 400, 7, 1)})),
        "[E-AC-3 1+1] 48000Hz 2ch 1200.000kbps | audio estimated=2 bit_rate=1200000 sample_rate=48000 channels=2 codec=E-AC-3");
    EXPECT_EQ(described(describe_eac3_frame, {core.begin(), core.begin() + 20}).substr(0, 42),
        "[E-AC-3 3/2.1] 48000Hz 6ch 200.000kbps | a");
    EXPECT_EQ(described(describe_eac3_frame, rear), "refused");
    EXPECT_EQ(
        described(describe_eac3_frame, ByteBuilder().be32(0x0B770000).be32(0x14400000).pad_to(40).bytes), "refused"); // AC-3
}

std::string dts_hd_text(uint32_t coding_mode, uint32_t extensions) {
    const Data bytes = dts_extension(coding_mode, extensions);
    DtsHdInfo info;
    ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
    stream.bit_rate = 1536000; // the core's
    EXPECT_TRUE(dts_hd_info(bytes, &info));
    EXPECT_EQ(info.size, 140U);
    EXPECT_FALSE(dts_hd_info(Bytes(bytes).first(30), &info));
    dts_hd_facts(info, &stream);
    return dts_hd_name(info.kind) + (" | " + stream_text(stream));
}

TEST(StreamFacts, tells_dts_hd_by_its_extension_substream) {
    const std::string rest = " layout=L R C LFE Lb Rb Ls Rs";
    const std::string master = " | audio flags=128 mode=2 sample_rate=96000 channels=8 bit_depth=24 codec=DTS profile=HD MA";
    EXPECT_EQ(dts_hd_text(1, 0), "DTS-HD MA" + master + rest);
    EXPECT_EQ(dts_hd_text(0, 0x210), "DTS-HD MA" + master + rest);
    EXPECT_EQ(dts_hd_text(0, 0x020), "DTS-HD HRA | audio sample_rate=96000 channels=8 codec=DTS profile=HD HRA" + rest);
    EXPECT_EQ(dts_hd_text(2, 0), "DTS Express | audio sample_rate=96000 channels=8 codec=DTS profile=Express" + rest);
    EXPECT_EQ(dts_hd_text(3, 0), " | audio bit_rate=1536000 sample_rate=96000 channels=8 codec=DTS" + rest);
}

Data loas(const BitBuilder& element) {
    return loas_frame(element, 200);
}

TEST(StreamFacts, tells_loas_by_its_configuration) {
    BitBuilder without;
    without.bits(1, 1); // useSameStreamMux
    BitBuilder sbr;     // version 0, explicit SBR from 24 to 48 kHz, stereo
    sbr.bits(0, 1).bits(0, 1).bits(1, 1).bits(1, 6).bits(0, 7).bits(5, 5).bits(6, 4).bits(2, 4).bits(3, 4).bits(2, 5);
    EXPECT_EQ(described(describe_loas_frame, join({{0x56}, loas(without), loas(sbr), loas(without)})),
        "[AAC HE+SBR] 48000Hz stereo(L,R) 18.750kbps | audio estimated=2 bit_rate=18750 sample_rate=48000 channels=2 codec=AAC "
        "profile=HE-AAC layout=L R");
    BitBuilder sized; // version 1: LC at 44.1 kHz in 16 bits
    sized.bits(0, 1).bits(1, 1).bits(0, 1).bits(0, 10).bits(1, 1).bits(0, 13).bits(0, 2).bits(16, 8).bits(0x1210, 16);
    EXPECT_EQ(described(describe_loas_frame, loas(sized)).substr(0, 39), "[AAC LC] 44100Hz stereo(L,R) 68.906kbps");
    EXPECT_EQ(described(describe_loas_frame, join({loas(without), loas(without)})), "refused");
}

TEST(StreamFacts, tells_the_rate_of_adts_by_all_blocks_of_its_frame) {
    const Data frame = adts_frame(600, {.rate_index = 3, .channels = 2, .blocks = 1}); // one behind the first
    EXPECT_NE(described(describe_adts_frame, frame).find(" bit_rate=112500 "), std::string::npos);
}

TEST(StreamFacts, tells_aac_by_its_whole_configuration) {
    const auto facts = [](const Data& bytes) {
        AudioSpecificConfig config;
        read_audio_specific_config(bytes, &config);
        ZatStream stream = new_stream(ZAT_STREAM_AUDIO);
        aac_facts(config, &stream);
        return stream_text(stream);
    };
    BitBuilder elements; // LC, channels by a program_config_element: a pair, one side pair, LFE
    elements.bits(2, 5)
        .bits(3, 4)
        .bits(0, 4)
        .bits(0, 3)
        .bits(0, 4 + 2 + 4)
        .bits(1, 4)
        .bits(1, 4)
        .bits(0, 4)
        .bits(1, 2)
        .bits(0, 7);
    elements.bits(0, 3).bits(0x10, 5).bits(0x10, 5).bits(0, 4).bits(0, 5).bits(0, 8);
    BitBuilder usac; // object type 42 by escape, 48 kHz stereo
    usac.bits(31, 5).bits(10, 6).bits(3, 4).bits(0, 4).bits(3, 5).bits(1, 3).bits(2, 5);
    BitBuilder twinvq; // error resilient, which has no flags of resilience of its own; SBR behind it
    twinvq.bits(21, 5).bits(6, 4).bits(2, 4).bits(1, 3).bits(0, 3).bits(0x2B7, 11).bits(5, 5).bits(1, 1).bits(3, 4);
    BitBuilder eld; // object type 39 by escape, 24 kHz stereo, its SBR at twice that
    eld.bits(31, 5).bits(7, 6).bits(6, 4).bits(2, 4).bits(0, 1 + 3).bits(1, 1).bits(1, 1).bits(0, 1 + 2);
    const std::pair<Data, const char*> rows[] = {
        {{0x12, 0x10}, "audio sample_rate=44100 channels=2 codec=AAC profile=LC layout=L R"},
        {{0x13, 0x10, 0x56, 0xE5, 0x98}, "audio sample_rate=48000 channels=2 codec=AAC profile=HE-AAC layout=L R"},
        {{0x13, 0x88, 0x56, 0xE5, 0xA5, 0x48, 0x80}, "audio sample_rate=44100 channels=2 codec=AAC profile=HE-AACv2 layout=L R"},
        {{0xEB, 0x8A, 0x08, 0x00}, "audio sample_rate=44100 channels=2 codec=AAC profile=HE-AACv2 layout=L R"}, // object type 29
        {elements.bytes, "audio sample_rate=48000 channels=5 codec=AAC profile=LC"},
        {twinvq.bytes, "audio sample_rate=48000 channels=2 codec=TwinVQ layout=L R"},
        {usac.bytes, "audio sample_rate=48000 channels=2 codec=AAC profile=xHE-AAC layout=L R"},
        {eld.bytes, "audio sample_rate=48000 channels=2 codec=AAC profile=ELD layout=L R"},
        {{0x12}, "audio codec=AAC"}, // cut: nothing of it is known
    };
    for (const auto& [bytes, expected] : rows) {
        EXPECT_EQ(facts(bytes), expected);
    }
}

} // namespace

} // namespace zat::test::stream_facts_test
