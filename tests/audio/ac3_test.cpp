#include "audio/ac3.h"

#include "audio/framed/ac3_file.h"
#include "support/analysed.h"
#include "support/byte_builder.h"
#include "support/record_text.h"

namespace zat::test::ac3_test {

namespace {

struct Frame {
    uint32_t fscod = 0, frmsizecod = 20, bsid = 8, bsmod = 0, acmod = 2, dsurmod = 0, lfeon = 0;
    bool optional = false; // every optional field is there
    uint32_t dsurexmod = 0;
};

// dialnorm up to roomtyp, the optional fields full of set bits.
void programme(BitBuilder* out, bool optional) {
    out->bits(0x1F, 5);
    for (const int width : {8, 8, 7}) {
        out->bits(optional ? 1 : 0, 1);
        out->bits(UINT32_MAX, optional ? width : 0);
    }
}

std::vector<uint8_t> header(const Frame& frame) {
    BitBuilder out;
    out.bits(0x0B77, 16).bits(0xFFFF, 16).bits(frame.fscod, 2).bits(frame.frmsizecod, 6);
    out.bits(frame.bsid, 5).bits(frame.bsmod, 3).bits(frame.acmod, 3);
    out.bits(3, frame.acmod == 3 || frame.acmod == 5 || frame.acmod == 7 ? 2 : 0); // cmixlev
    out.bits(3, frame.acmod >= 4 ? 2 : 0);                                         // surmixlev
    out.bits(frame.dsurmod, frame.acmod == 2 ? 2 : 0).bits(frame.lfeon, 1);
    programme(&out, frame.optional);
    if (frame.acmod == 0) {
        programme(&out, frame.optional);
    }
    out.bits(0, 2);                                                 // copyrightb, origbs
    out.bits(frame.optional ? 0x7FFF : 0, frame.optional ? 15 : 1); // xbsi1e and its fields
    out.bits(1, 1).bits(frame.dsurexmod, 2);                        // xbsi2e
    out.bytes.resize(ac3_header_size);
    return out.bytes;
}

std::string line_of(const std::vector<uint8_t>& bytes, void (*format)(const Ac3Info*, char (&)[line_size]) = ac3_line) {
    Ac3Info info;
    if (ac3_info(bytes, &info) != 0) {
        return "refused";
    }
    char line[line_size];
    format(&info, line);
    return line;
}

TEST(Ac3, describes_frames_by_their_bit_stream_information) {
    struct Row {
        const char* name;
        Frame frame;
        const char* line;
    };
    const Row rows[] = {
        {"one surround channel counts as two", {.acmod = 4, .lfeon = 1}, "AC3 48000Hz [4.1Ch(2/1) L+R+S CM] 192kbps"},
        {"Surround EX behind every optional field", {.bsid = 6, .acmod = 7, .lfeon = 1, .optional = true, .dsurexmod = 2},
            "AC3 48000Hz [5.1Ch(3/2) L+C+R+SL+SR CM Dolby Surround EX] 192kbps"},
        {"Surround EX behind two programmes", {.bsid = 6, .bsmod = 7, .acmod = 0, .optional = true, .dsurexmod = 2},
            "AC3 48000Hz [2Ch(1+1) Ch1+Ch2  Dolby Surround EX] 192kbps"},
        {"Surround EX needs the alternate syntax", {.acmod = 7, .dsurexmod = 2}, "AC3 48000Hz [5Ch(3/2) L+C+R+SL+SR CM] 192kbps"},
        {"voice over", {.fscod = 1, .frmsizecod = 37, .bsmod = 7, .acmod = 1}, "AC3 44100Hz [1Ch(1/0) C VO] 640kbps"},
        {"reserved sample rate", {.fscod = 3}, "refused"},
        {"reserved frame size", {.frmsizecod = 38}, "refused"},
        {"bsid of another syntax", {.bsid = 9}, "refused"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(line_of(header(row.frame)), row.line) << row.name;
    }
    EXPECT_EQ(line_of(std::vector<uint8_t>(ac3_header_size, 0x0B)), "refused");
    EXPECT_EQ(line_of(header({}), truehd_line), "Dolby TrueHD 48000Hz [2Ch(2/0) L+R CM] 192kbps");
}

// The table holds two sizes for each rate: they differ at 44.1 kHz only, where a frame of 1536
// samples takes no whole number of words.
TEST(Ac3, knows_the_frame_sizes_of_every_rate) {
    const int kbps[] = {32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 448, 512, 576, 640};
    for (int code = 0; code < 38; ++code) {
        const int words_per_second = kbps[code / 2] * 1000 / 16;
        EXPECT_EQ(ac3_framesize(code, 0), words_per_second * 1536 / 48000 * 2) << code;
        EXPECT_EQ(ac3_framesize(code, 1), (words_per_second * 1536 / 44100 + code % 2) * 2) << code;
        EXPECT_EQ(ac3_framesize(code, 2), words_per_second * 1536 / 32000 * 2) << code;
    }
    EXPECT_EQ(ac3_framesize(38, 0) + ac3_framesize(0, 3) + ac3_framesize(-1, -1), 0);
}

std::string file_text(const std::vector<uint8_t>& bytes) {
    return record_text(*analysed(ac3_file, bytes));
}

TEST(Ac3File, takes_the_first_sync_word_of_2048_bytes) {
    const std::vector<uint8_t> frame = header({.acmod = 7, .lfeon = 1});
    const std::string line = "A AC3 48000Hz [5.1Ch(3/2) L+C+R+SL+SR CM] 192kbps\n";
    const auto at = [](size_t position, const std::vector<uint8_t>& bytes) {
        return ByteBuilder().fill(position, 1).append(bytes).pad_to(24000).bytes;
    };
    EXPECT_EQ(file_text(at(2046, frame)), line + "1.000");
    // None found: the bytes behind the searched ones are taken for a frame ...
    EXPECT_EQ(file_text(at(2048, frame)), line + "1.000");
    EXPECT_EQ(file_text(at(2049, frame)), "0.000");
    // ... which they are not when the word is cut by the search's end.
    EXPECT_EQ(file_text(at(2047, frame)), "0.000");
    // The first word counts, whatever stands behind it.
    EXPECT_EQ(file_text(at(0, ByteBuilder().be32(0x0B770000).be32(0xFF000000).append(frame).bytes)), "0.000");
    // The mark lies behind the bytes that are read.
    const Frame ex = {.bsid = 6, .acmod = 7, .lfeon = 1, .optional = true, .dsurexmod = 2};
    EXPECT_EQ(file_text(at(0, header(ex))), line + "1.000");
}

TEST(Ac3File, counts_the_padding_before_the_stream) {
    constexpr size_t padding = 300;
    const Data bytes = ByteBuilder().fill(padding).append(header({.acmod = 1})).pad_to(24000).bytes;
    EXPECT_EQ(record_text(*analysed_behind(padding, ac3_file, bytes)), "A AC3 48000Hz [1Ch(1/0) C CM] 192kbps\n1.000");
}

TEST(Ac3File, goes_on_with_zeros_behind_a_cut_header) {
    const std::vector<uint8_t> frame = header({.acmod = 7, .lfeon = 1});
    for (size_t length = 0; length <= frame.size(); ++length) {
        const std::string text = file_text({frame.begin(), frame.begin() + static_cast<long>(length)});
        // Without the byte of fscod and frmsizecod these are 48 kHz and 32 kbit/s.
        const char* begin = length < 2   ? "0.000"
                            : length < 5 ? "A AC3 48000Hz [2Ch(1+1) Ch1+Ch2 CM] 32kbps\n"
                            : length < 7 ? "A AC3 48000Hz [2Ch(1+1) Ch1+Ch2 CM] 192kbps\n"
                                         : "A AC3 48000Hz [5.1Ch(3/2) L+C+R+SL+SR CM] 192kbps\n";
        EXPECT_EQ(text.rfind(begin, 0), 0U) << length << ": " << text;
    }
}

} // namespace

} // namespace zat::test::ac3_test
