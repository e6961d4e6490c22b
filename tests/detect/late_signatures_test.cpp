#include "common/text/messages.h"
#include "support/audio_builder.h"
#include "support/mpeg_audio_builder.h"
#include "support/record_text.h"
#include "support/riff_builder.h"
#include "support/temp_file.h"
#include "support/video_builder.h"
#include "zat/zat.h"

#include <cstring>
#include <gtest/gtest.h>

namespace zat::test::late_signatures_test {

using Contents = std::vector<uint8_t>;

struct Row {
    const char* name;
    Contents file;
    uint32_t type_code;
    const char* line; // empty for a type that was decided
};

Contents zeros_before(size_t count, const Contents& rest) {
    return ByteBuilder().fill(count).append(rest).bytes;
}

Contents adts_frames(int count, uint32_t size = 16) {
    return repeated(count, adts_frame(size));
}

Contents loas_frames(int count, uint32_t size = 16) {
    return repeated(count, loas_frame({}, size));
}

Contents chunk_of(std::string_view id, std::string_view form) {
    return ByteBuilder().text(id).fill(4).text(form).fill(20).bytes;
}

Contents box_of(std::string_view type) {
    return ByteBuilder().be32(24).text(type).fill(16).bytes;
}

Contents bytes_of(std::initializer_list<int> bytes) {
    return ByteBuilder().raw(bytes).fill(20).bytes;
}

// BITMAPINFOHEADER; of 1 plane and 24 bits in the usual case.
Contents bitmap(uint32_t width, uint32_t planes, uint32_t depth, uint32_t header = 40, uint32_t pixels_at = 54) {
    return ByteBuilder()
        .text("BM")
        .fill(8)
        .le32(pixels_at)
        .le32(header)
        .le32(width)
        .le32(8)
        .le16(planes)
        .le16(depth)
        .fill(24)
        .bytes;
}

Contents core_bitmap() {
    return ByteBuilder().text("BM").fill(8).le32(26).le32(12).le16(4).le16(4).le16(1).le16(24).fill(9).bytes;
}

// What an encoder of each kind writes first; the start code begins with a third zero.
const Contents avc = bytes_of_hex("00000001 67f4000a919b288f6022000003000200000300281e244b2c 00000001 68ebe3c44844 000001 0605");
const Contents avc_without_pps = bytes_of_hex("00000001 67f4000a919b288f6022000003000200000300281e244b2c 000001 6588 000001");
const Contents hevc = bytes_of_hex("00000001 40010c01ffff0408000003009e0800000300001e959809"
                                   "00000001 4201010408000003009e0800000300001e90041062cb2b35c995e02dc0808001000003000100000300"
                                   "0a08 00000001 4401");
const Contents mpeg4 = bytes_of_hex("00 000001b001 000001b58913 00000100 00000120 00c48d8800550204061443 000001b24c 000001b610");
// Advanced profile, level 3, 720x480; then an entry point header.
const Contents vc1 = BitBuilder()
                         .bits(0x10F, 40)
                         .bits(0x6D, 7)
                         .bits(0, 9)
                         .bits(359, 12)
                         .bits(239, 12)
                         .bits(0, 8)
                         .bits(0x10E, 32)
                         .bits(0, 32)
                         .bytes;
const Contents slices = bytes_of_hex("00000001 6588 00000001 419a 00000001 0910");

// Signatures that count when nothing else knew the file's start.
std::vector<Row> late_rows() {
    using namespace message;
    const Contents flac = ByteBuilder().text("fLaC").fill(9).bytes;
    const Contents footer = ByteBuilder().text("3DI").fill(7).bytes;
    // 32 kbit/s at 48 kHz.
    const Contents ac3_frame = ByteBuilder().be32(0x0B770000).fill(124).bytes;
    const Contents tag = id3v2_tag(300).bytes;
    return {
        {"rf64", chunk_of("RF64", "WAVE"), 101, ""},
        {"rf64 of something else", chunk_of("RF64", "AVI "), 1, unsupported},
        {"bw64", chunk_of("BW64", "WAVE"), 101, ""},
        {"wave64", ByteBuilder().text("riff").be32(0x2E91CF11).be64(0xA5D628DB04C10000).fill(9).bytes, 101, ""},
        {"wave64, last byte", ByteBuilder().text("riff").be32(0x2E91CF11).be64(0xA5D628DB04C10001).fill(9).bytes, 1, unsupported},
        {"aiff", chunk_of("FORM", "AIFF"), 105, ""},
        {"aiff-c", chunk_of("FORM", "AIFC"), 105, ""},
        {"another form", chunk_of("FORM", "8SVX"), 1, unsupported},
        {"au", chunk_of(".snd", ""), 104, ""},
        {"midi", chunk_of("MThd", ""), 102, ""},
        {"midi in riff", chunk_of("RIFF", "RMID"), 103, ""},
        {"cd track", chunk_of("RIFF", "CDDA"), 107, ""},
        {"realaudio", bytes_of({'.', 'r', 'a', 0xFD, 0, 4}), 119, ""},
        {"segment type", box_of("styp"), 24, ""},
        {"fragment", box_of("moof"), 24, ""},
        {"segment index", box_of("sidx"), 24, ""},
        {"event message", box_of("emsg"), 24, ""},
        {"another box", box_of("mfra"), 1, unsupported},
        {"adif", chunk_of("ADIF", ""), 118, ""},
        {"adts", join({adts_frames(3), {0}}), 118, ""},
        {"adts, long frames", join({adts_frames(3, 8191), {0}}), 118, ""},
        {"adts, two frames", join({adts_frames(2), Contents(20)}), 1, unsupported},
        {"adts, another stream's frame", join({adts_frames(2), ByteBuilder{adts_frames(1)}.put(2, "\x54").fill(4).bytes}), 1,
            unsupported},
        {"adts, reserved rate", join({ByteBuilder{adts_frames(1)}.put(2, "\x74").bytes, adts_frames(3)}), 1, unsupported},
        {"adts, empty frames", bytes_of({0xFF, 0xF1, 0x50, 0x80, 0, 0xFF, 0xFC}), 1, unsupported},
        {"adts behind a tag", join({tag, join({adts_frames(3), {0}})}), 118, ""},
        {"adts with a tag between frames", join({adts_frames(1), join({tag, adts_frames(2)})}), 118, ""},
        {"adts behind a tag and its footer", join({tag, join({footer, adts_frames(3)})}), 118, ""},
        {"latm", join({loas_frames(2), loas_frames(1, 8194)}), 118, ""},
        {"latm, two frames", join({loas_frames(2), Contents(9)}), 1, unsupported},
        {"dts, 14 bits", bytes_of({0x1F, 0xFF, 0xE8, 0x00, 0x07, 0xF5}), 122, ""},
        {"dts, 14 bits, bytes swapped", bytes_of({0xFF, 0x1F, 0x00, 0xE8, 0xF5, 0x07}), 121, ""},
        {"dts, 14 bits, a termination frame", bytes_of({0x1F, 0xFF, 0xE8, 0x00, 0x06, 0xF5}), 1, unsupported},
        {"jpeg", bytes_of({0xFF, 0xD8, 0xFF, 0xE0}), 52, ""},
        {"gif", chunk_of("GIF8", "9a"), 53, ""},
        {"bmp", bitmap(4, 1, 24), 51, ""},
        {"bmp of the first form", core_bitmap(), 51, ""},
        {"bmp, two planes", bitmap(4, 2, 24), 1, unsupported},
        {"bmp, no pixels", bitmap(0, 1, 24), 1, unsupported},
        {"bmp, odd depth", bitmap(4, 1, 23), 1, unsupported},
        {"bmp, odd header", bitmap(4, 1, 24, 41), 1, unsupported},
        {"bmp, pixels in the header", bitmap(4, 1, 24, 40, 53), 1, unsupported},
        {"bmp, cut", Contents{'B', 'M', 0, 0}, 1, unsupported},
        {"truehd", bytes_of({0x81, 0x08, 0x12, 0x34, 0xF8, 0x72, 0x6F, 0xBA}), 114, ""},
        {"mlp", bytes_of({0x81, 0x08, 0x12, 0x34, 0xF8, 0x72, 0x6F, 0xBB}), 114, ""},
        {"mlp, another word", bytes_of({0x81, 0x08, 0x12, 0x34, 0xF8, 0x72, 0x6F, 0xBC}), 1, unsupported},
        {"h.264", avc, 27, ""},
        {"h.264 without picture parameters", avc_without_pps, 1, unsupported},
        {"hevc", hevc, 27, ""},
        {"mpeg-4 visual", mpeg4, 27, ""},
        {"vc-1", vc1, 27, ""},
        {"mpeg-2 video", zeros_before(1, sequence_header({})), 27, ""},
        {"start codes of nothing", slices, 1, unsupported},
        {"pack behind a zero", zeros_before(1, ByteBuilder().be32(0x1BA).raw({0x44, 1}).bytes), 17, ""},
        {"flac behind zeros", zeros_before(2048, flac), 117, ""},
        {"flac behind more zeros", zeros_before(2049, flac), 1, dummy_data},
        {"flac behind a footer", join({tag, join({footer, flac})}), 117, ""},
        {"flac behind a footer and zeros", join({tag, join({footer, zeros_before(99, flac)})}), 117, ""},
        {"flac behind letters", join({{'3', 'D', 'i', 0, 0, 0, 0, 0, 0, 0}, flac}), 1, unsupported},
        {"ac3 behind zeros", zeros_before(9, join({ac3_frame, ac3_frame})), 114, ""},
        {"an ac3 sync word behind zeros", zeros_before(9, ac3_frame), 1, unsupported},
    };
}

TEST(LateSignatures, count_where_nothing_else_knew_the_start) {
    for (const Row& row : late_rows()) {
        SCOPED_TRACE(row.name);
        const TempFile file(row.file);
        InfoRecord record{};
        std::memcpy(record.path, file.path.c_str(), file.path.size());
        GetFileFormat(&record);
        EXPECT_EQ(record.type_code, row.type_code);
        EXPECT_STREQ(record.general[0], row.line);
        expect_sound(record);
    }
}

std::string described(const Contents& contents) {
    const TempFile file(contents);
    InfoRecord record{};
    std::memcpy(record.path, file.path.c_str(), file.path.size());
    GetInfo(&record);
    expect_sound(record);
    return record_text(record);
}

// What stands before the stream changes nothing of what is told about it; of WavPack it is counted.
TEST(LateSignatures, leave_out_padding) {
    const Contents format = ByteBuilder().le16(1).le16(2).le32(44100).le32(176400).le16(4).le16(16).bytes;
    const Contents wave = riff_list("RIFF", "WAVE", {riff_chunk("fmt ", format), riff_chunk("data", Contents(17640))});
    // A tag of Sorenson H.263, 352x288, at 2 seconds.
    const Contents flash = ByteBuilder()
                               .text("FLV")
                               .raw({1, 1, 0, 0, 0, 9, 0, 0, 0, 0})
                               .raw({9, 0, 0, 12, 0, 7, 0xD0, 0, 0, 0, 0, 0x12, 0, 0, 0x84, 1, 0})
                               .fill(20)
                               .bytes;
    const Contents footer = ByteBuilder().text("3DI").fill(7).bytes;
    EXPECT_NE(described(wave).find("0001] 44100Hz 2ch 1411.20kbps 16Bit"), std::string::npos);
    EXPECT_EQ(described(flash).substr(0, 9), "V 352x288");
    EXPECT_EQ(described(zeros_before(700, wave)), described(wave));
    EXPECT_EQ(described(zeros_before(1, flash)), described(flash));
    EXPECT_EQ(described(join({id3v2_tag(300).bytes, footer, flash})), described(flash));
    EXPECT_EQ(described(join({id3v2_tag(300).bytes, flash})), described(flash));
    const Contents wavpack = ByteBuilder()
                                 .text("wvpk")
                                 .le32(24)
                                 .le32(0x410)
                                 .le32(44100)
                                 .le32(0)
                                 .le32(44100)
                                 .le32(9 << 23 | 0x1801) // 44,100 Hz, first and last block
                                 .le32(0)
                                 .bytes;
    EXPECT_EQ(described(wavpack).find("tag("), std::string::npos);
    EXPECT_NE(described(zeros_before(8, wavpack)).find("\nX \x91\xBC\x82\xCCtag(8Byte)"), std::string::npos);
}

} // namespace zat::test::late_signatures_test
