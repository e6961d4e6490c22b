#include "audio/mpeg_audio.h"
#include "common/text/text.h"
#include "support/mpeg_audio_builder.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace zat::test::mpeg_audio_test {

using test::ByteBuilder;
using test::xing_header;

TEST(MpegAudioHeader, decodes_and_consumes_the_header) {
    const struct {
        const char* name;
        uint32_t header;
        int result;
        uint32_t left;                 // of the four bytes
        std::array<int64_t, 5> fields; // version code, layer, bit rate, sample rate, frame size
    } rows[] = {
        {"MPEG-1 Layer III, padded", 0xFFFB9264, 0, 0, {10, 3, 128, 44100, 418}},
        {"Layer I is padded by one byte, not by a slot", 0xFFFFC600, 0, 0, {10, 1, 384, 48000, 385}},
        {"MPEG-2 Layer II has half the factor", 0xFFF584C0, 0, 0, {20, 2, 64, 24000, 192}},
        {"MPEG-2.5", 0xFFE318C4, 0, 0, {25, 3, 8, 8000, 72}},
        {"reserved version", 0xFFEB9000, 11, 0, {-1, 3, 0, UINT32_MAX, 0}},
        {"reserved sample rate keeps the bits behind it", 0xFFFB9F47, 14, 0xD1C00000, {10, 3, 0, UINT32_MAX, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ByteBuilder header = ByteBuilder().be32(row.header);
        EXPECT_TRUE(IsMpegAudioSync(header.bytes.data()));
        MpegAudioInfo info{};
        EXPECT_EQ(DecodeMpegAudioHeader(std::span<uint8_t, 4>(header.bytes), &info), row.result);
        EXPECT_EQ(ReadBE32(header.bytes.data()), row.left);
        const auto& [version, layer, bitrate, sample_rate, frame_size] = row.fields;
        EXPECT_TRUE(info.version_code == version && info.layer == layer && info.bitrate == bitrate) << info.bitrate;
        EXPECT_TRUE(info.sample_rate == sample_rate && info.frame_size == frame_size) << info.frame_size;
    }
}

// The line of a frame with something at an offset.
std::string line_of(uint32_t header, size_t offset, const ByteBuilder& content, int result) {
    ByteBuilder frame = ByteBuilder().be32(header);
    MpegAudioInfo info{};
    EXPECT_EQ(read_mpeg_audio_header(frame.bytes, &info), 0);
    frame.pad_to(offset).append(content.bytes).pad_to(info.frame_size);
    frame.bytes.resize(info.frame_size);
    EXPECT_EQ(ParseVbrHeader(frame.bytes, &info), result);
    char line[line_size];
    EXPECT_EQ(FormatMpegAudioLine(&info, line), 0);
    return line;
}

ByteBuilder vbri(uint32_t bytes, uint32_t frames) {
    return ByteBuilder().text("VBRI").pad_to(10).be32(bytes).be32(frames);
}

TEST(MpegAudioLine, tells_what_the_vbr_header_says) {
    constexpr uint32_t stereo = 0xFFFB9064;   // MPEG-1 Layer III, 128 kbit/s
    constexpr uint32_t mono = 0xFFFB90C0;     // the same
    constexpr uint32_t mpeg2 = 0xFFF380C4;    // 64 kbit/s, 22050 Hz, mono
    constexpr uint32_t layer1 = 0xFFFFC000;   // 384 kbit/s, 44100 Hz
    constexpr uint32_t smallest = 0xFFF314C4; // 24 bytes
    const struct {
        const char* name;
        uint32_t header;
        uint32_t offset;
        ByteBuilder content;
        int result;
        std::string line;
    } rows[] = {
        {"averages count 1151 samples, and one frame less", stereo, 36, xing_header("Xing", 3, 101, 52200, "LAME3.99r\x04"), 0,
            "MPEG1-LayerIII 44100Hz [VBR Xing Joint Stereo /MS] 160.00kbps "
            "[LAME3.99r VBR-NEW/MTRH] [417bpf/101f] "},
        {"Layer I counts 384 and stores one frame less", layer1, 36, xing_header("Xing", 3, 101, 52200), 0,
            "MPEG1-LayerI 44100Hz [VBR Xing Stereo] 479.59kbps [417bpf/100f] "},
        {"Info at its place hides VBRI", mono, 21, xing_header("Info", 0, 0, 0).put(15, "VBRI"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Single Channel(mono)] 128.00kbps [417bpf] "},
        {"another encoder stands twice", stereo, 36, xing_header("Info", 1, 7, 0, "Lavc58.91"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Joint Stereo /MS] 128.00kbps [Lavc58.91] [417bpf/7f] "
            "[Lavc58.91]"},
        {"GOGO overrides it; a space at the end is not its text", stereo, 36, xing_header("Info", 1, 7, 0, "enc \x01z", "GOGO"),
            0, "MPEG1-LayerIII 44100Hz [CBR Joint Stereo /MS] 128.00kbps [enc] [417bpf/7f] [GOGO]"},
        {"LAME's name in a silent frame", stereo, 36, ByteBuilder().text("LAME3.98.4"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Joint Stereo /MS] 128.00kbps [LAME3.98] [417bpf] "},
        {"LAME's name has eight bytes, whatever they are", stereo, 36, ByteBuilder().text("LAMEE\x07\xCA\x02"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Joint Stereo /MS] 128.00kbps [LAMEE\x07\xCA\x02] [417bpf] "},
        {"no frame count: the encoder is read, the rest not stored", stereo, 36, xing_header("Xing", 2, 101, 52200, "Lavc58.91"),
            1, "MPEG1-LayerIII 44100Hz [VBR Xing Joint Stereo /MS] 0.00kbps [Lavc58.91] [417bpf] "},
        {"a count of 0 ends before encoder and rate mode", stereo, 36, xing_header("Info", 3, 0, 52200, "Lavc58.91"), 1,
            "MPEG1-LayerIII 44100Hz [VBR Joint Stereo /MS] 0.00kbps [417bpf] "},
        {"a count that a signed number does not hold", mpeg2, 36, vbri(100, UINT32_MAX), 0,
            "MPEG2-LayerIII 22050Hz [VBR VBRI Single Channel(mono)] 0.00kbps [208bpf/-1f] "},
        {"fields behind the frame's end are zero", smallest, 13, xing_header("Xing", 3, 101, 52200), 1,
            "MPEG2-LayerIII 24000Hz [VBR Xing Single Channel(mono)] 0.00kbps [24bpf] "},
        {"an endless encoder name is bounded, and so is the line", 0xFFFBE000, 36,
            xing_header("Info", 1, 7, 0, std::string(800, 'Q')), 0,
            "MPEG1-LayerIII 44100Hz [CBR Stereo] 320.00kbps [" + std::string(255, 'Q') + "] [1044bpf/7f] [" +
                std::string(192, 'Q')},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(line_of(row.header, row.offset, row.content, row.result), row.line);
    }
}

} // namespace zat::test::mpeg_audio_test
