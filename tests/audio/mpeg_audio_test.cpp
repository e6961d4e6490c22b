#include "audio/mpeg_audio.h"
#include "common/text.h"
#include "support/byte_builder.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace zat;
using test::ByteBuilder;

TEST(MpegAudioHeader, decodes_and_consumes_the_header) {
    const struct {
        const char* name;
        uint32_t header;
        int result;
        uint32_t left; // of the four bytes
        int version_code, layer, bitrate;
        uint32_t sample_rate, frame_size;
    } rows[] = {
        {"MPEG-1 Layer III, padded", 0xFFFB9264, 0, 0, 10, 3, 128, 44100, 418},
        {"Layer I is padded by one byte, not by a slot", 0xFFFFC600, 0, 0, 10, 1, 384, 48000, 385},
        {"MPEG-2 Layer II has half the factor", 0xFFF584C0, 0, 0, 20, 2, 64, 24000, 192},
        {"MPEG-2 Layer I too", 0xFFF714C0, 0, 0, 20, 1, 32, 24000, 32},
        {"MPEG-2.5", 0xFFE318C4, 0, 0, 25, 3, 8, 8000, 72},
        {"free format", 0xFFFB0000, 0, 0, 10, 3, -1, 44100, 97388},
        {"forbidden bit rate", 0xFFFBF000, 0, 0, 10, 3, -1, 44100, 97388},
        {"reserved version", 0xFFEB9000, 11, 0, -1, 3, 0, UINT32_MAX, 0},
        {"reserved layer", 0xFFF99003, 11, 0, 10, -1, 0, 44100, 0},
        {"reserved sample rate keeps the bits behind it", 0xFFFB9F47, 14, 0xD1C00000, 10, 3, 0, UINT32_MAX, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ByteBuilder header = ByteBuilder().be32(row.header);
        EXPECT_TRUE(IsMpegAudioSync(header.bytes.data()));
        MpegAudioInfo info{};
        EXPECT_EQ(DecodeMpegAudioHeader(header.bytes.data(), &info), row.result);
        EXPECT_EQ(ReadBE32(header.bytes.data()), row.left);
        EXPECT_EQ(info.version_code, row.version_code);
        EXPECT_EQ(info.layer, row.layer);
        EXPECT_EQ(info.bitrate, row.bitrate);
        EXPECT_EQ(info.sample_rate, row.sample_rate);
        EXPECT_EQ(info.frame_size, row.frame_size);
    }
}

// The line of a frame with something at an offset.
std::string line_of(uint32_t header, size_t offset, const ByteBuilder& content, int result) {
    ByteBuilder frame = ByteBuilder().be32(header);
    MpegAudioInfo info{};
    EXPECT_EQ(DecodeMpegAudioHeader(ByteBuilder(frame).bytes.data(), &info), 0);
    frame.pad_to(offset).append(content.bytes).pad_to(info.frame_size);
    frame.bytes.resize(info.frame_size);
    EXPECT_EQ(ParseVbrHeader(frame.bytes, &info), result);
    char line[line_size];
    EXPECT_EQ(FormatMpegAudioLine(&info, line), 0);
    return line;
}

ByteBuilder xing(const char* name, uint32_t flags, uint32_t frames, uint32_t bytes, std::string_view encoder = {},
    std::string_view gogo = {}) {
    ByteBuilder header;
    header.text(name).be32(flags).be32(frames).be32(bytes).pad_to(116).text(gogo).pad_to(120);
    return header.text(encoder);
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
        {"averages count 1151 samples, and one frame less", stereo, 36, xing("Xing", 3, 101, 52200, "LAME3.99r\x04"), 0,
            "MPEG1-LayerIII 44100Hz [VBR Xing Joint Stereo /MS] 160.00kbps "
            "[LAME3.99r VBR-NEW/MTRH] [417bpf/101f] "},
        {"MPEG-2 Layer III counts 576", mpeg2, 13, xing("Xing", 3, 101, 52200, "LAME3.99r\x0A"), 0,
            "MPEG2-LayerIII 22050Hz [VBR Xing Single Channel(mono)] 159.86kbps "
            "[LAME3.99r unknown(0x0a)] [208bpf/101f] "},
        {"Layer I counts 384 and stores one frame less", layer1, 36, xing("Xing", 3, 101, 52200), 0,
            "MPEG1-LayerI 44100Hz [VBR Xing Stereo] 479.59kbps [417bpf/100f] "},
        {"VBRI stands at 36 whatever the channels", mpeg2, 36, vbri(52200, 101), 0,
            "MPEG2-LayerIII 22050Hz [VBR VBRI Single Channel(mono)] 159.86kbps [208bpf/101f] "},
        {"Info at its place hides VBRI", mono, 21, xing("Info", 0, 0, 0).put(15, "VBRI"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Single Channel(mono)] 128.00kbps [417bpf] "},
        {"Xing at the stereo place is none in a mono frame", mono, 36, xing("Xing", 3, 101, 52200), 0,
            "MPEG1-LayerIII 44100Hz [CBR Single Channel(mono)] 128.00kbps [417bpf] "},
        {"another encoder stands twice", stereo, 36, xing("Info", 1, 7, 0, "Lavc58.91"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Joint Stereo /MS] 128.00kbps [Lavc58.91] [417bpf/7f] "
            "[Lavc58.91]"},
        {"GOGO overrides it; a space at the end is not its text", stereo, 36, xing("Info", 1, 7, 0, "enc \x01z", "GOGO"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Joint Stereo /MS] 128.00kbps [enc] [417bpf/7f] [GOGO]"},
        {"a printable method byte joins the name", stereo, 36, xing("Info", 1, 7, 0, "LAME3.99r4"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Joint Stereo /MS] 128.00kbps [LAME3.99r4 VBR-NEW/MTRH] "
            "[417bpf/7f] "},
        {"LAME's name in a silent frame", stereo, 36, ByteBuilder().text("LAME3.98.4"), 0,
            "MPEG1-LayerIII 44100Hz [CBR Joint Stereo /MS] 128.00kbps [LAME3.98] [417bpf] "},
        {"no frame count: the encoder is read, the rest not stored", stereo, 36, xing("Xing", 2, 101, 52200, "Lavc58.91"), 1,
            "MPEG1-LayerIII 44100Hz [VBR Xing Joint Stereo /MS] 0.00kbps [Lavc58.91] [417bpf] "},
        {"a count of 1", stereo, 36, xing("Xing", 3, 1, 52200, "Lavc58.91"), 1,
            "MPEG1-LayerIII 44100Hz [VBR Xing Joint Stereo /MS] 0.00kbps [Lavc58.91] [417bpf] "},
        {"a count of 0 ends before encoder and rate mode", stereo, 36, xing("Info", 3, 0, 52200, "Lavc58.91"), 1,
            "MPEG1-LayerIII 44100Hz [VBR Joint Stereo /MS] 0.00kbps [417bpf] "},
        {"a count that a signed number does not hold", mpeg2, 36, vbri(100, UINT32_MAX), 0,
            "MPEG2-LayerIII 22050Hz [VBR VBRI Single Channel(mono)] 0.00kbps [208bpf/-1f] "},
        {"fields behind the frame's end are zero", smallest, 13, xing("Xing", 3, 101, 52200), 1,
            "MPEG2-LayerIII 24000Hz [VBR Xing Single Channel(mono)] 0.00kbps [24bpf] "},
        {"an endless encoder name is bounded, and so is the line", 0xFFFBE000, 36, xing("Info", 1, 7, 0, std::string(800, 'Q')),
            0,
            "MPEG1-LayerIII 44100Hz [CBR Stereo] 320.00kbps [" + std::string(255, 'Q') + "] [1044bpf/7f] [" +
                std::string(192, 'Q')},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(line_of(row.header, row.offset, row.content, row.result), row.line);
    }
}

} // namespace
