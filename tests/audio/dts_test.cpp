#include "audio/dts.h"

#include "audio/framed/dts_file.h"
#include "support/analysed.h"
#include "support/byte_builder.h"
#include "support/details_text.h"
#include "support/dispatched.h"
#include "support/record_text.h"

namespace zat::test::dts_test {

namespace {

struct Frame {
    uint32_t cpf = 0, amode = 9, sfreq = 13, rate = 24, ext_audio_id = 0, ext_audio = 0, lff = 2, pcmr = 6;
};

// Fields that are skipped are full of set bits.
std::vector<uint8_t> header(const Frame& frame) {
    BitBuilder out;
    out.bits(0x7FFE8001, 32).bits(1, 1).bits(31, 5).bits(frame.cpf, 1).bits(0x7F, 7);
    out.bits(0x3FFF, 14).bits(frame.amode, 6).bits(frame.sfreq, 4).bits(frame.rate, 5);
    out.bits(0x1F, 5).bits(frame.ext_audio_id, 3).bits(frame.ext_audio, 1).bits(1, 1);
    out.bits(frame.lff, 2).bits(1, 1).bits(0xFFFF, frame.cpf != 0 ? 16 : 0).bits(0x7F, 7);
    out.bits(frame.pcmr, 3);
    out.bytes.resize(64);
    return out.bytes;
}

std::string line_of(const std::vector<uint8_t>& bytes) {
    DtsInfo info;
    if (dts_info(bytes, &info) != 0) {
        return "refused";
    }
    char line[line_size];
    dts_line(&info, line);
    return line;
}

std::vector<uint8_t> swapped(std::vector<uint8_t> bytes) {
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
    return bytes;
}

// Words of 14 bits, sign-extended as samples.
std::vector<uint8_t> as_14bit(const std::vector<uint8_t>& bytes) {
    BitBuilder out;
    for (size_t at = 0; at < bytes.size() * 8; ++at) {
        out.bits((bytes[at / 8] >> (7 - at % 8) & 1U) * 7, at % 14 == 0 ? 3 : 1);
    }
    return out.bytes;
}

TEST(Dts, describes_core_headers) {
    const struct {
        const char* name;
        Frame frame;
        const char* line;
    } rows[] = {
        {"extensions behind a header check", {.cpf = 1, .ext_audio_id = 3, .ext_audio = 1, .pcmr = 5},
            "DTS(16BitBE)-ES(XCh,X96k) 48000Hz 5.1Ch C+L+R+SL+SR+LFE 1536.000kbps 24Bit"},
        {"the rate of code 22", {.amode = 2, .sfreq = 8, .rate = 22, .lff = 0, .pcmr = 0},
            "DTS(16BitBE) 44100Hz 2Ch L+R(stereo) 1411.020kbps 16Bit"},
        {"invalid codes", {.amode = 16, .sfreq = 0, .rate = 29, .lff = 1, .pcmr = 7},
            "DTS(16BitBE) -1Hz -1.1Ch User defined+LFE -0.001kbps -1Bit"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(line_of(header(row.frame)), row.line) << row.name;
    }
}

TEST(Dts, refuses_what_is_no_sync) {
    // In 14-bit words the third one belongs to the sync.
    std::vector<uint8_t> broken = as_14bit(header({}));
    broken[4] = 0x06;
    EXPECT_EQ(line_of(broken), "refused");
    EXPECT_EQ(line_of(swapped(broken)), "refused");
    EXPECT_EQ(line_of({0x7F, 0xFE, 0x80, 0x02}), "refused");
}

// Without a play time of its own the file keeps the one of 7 seconds.
std::string file_text(const std::vector<uint8_t>& bytes) {
    return record_text(*analysed(dts_file, bytes, 0, 7));
}

TEST(DtsFile, describes_a_file_that_begins_with_a_frame) {
    const auto file = [](const std::vector<uint8_t>& bytes) { return ByteBuilder().append(bytes).pad_to(19200).bytes; };
    const std::string rest = ") 48000Hz 5.1Ch C+L+R+SL+SR+LFE 1536.000kbps 24Bit\n0.100";
    EXPECT_EQ(file_text(file(header({}))), "A DTS(16BitBE" + rest);
    EXPECT_EQ(file_text(file(swapped(header({})))), "A DTS(16BitLE" + rest);
    EXPECT_EQ(file_text(file(as_14bit(header({})))), "A DTS(14BitBE" + rest);
    EXPECT_EQ(file_text(file(swapped(as_14bit(header({}))))), "A DTS(14BitLE" + rest);
    EXPECT_EQ(file_text(file(ByteBuilder().u8(0).append(header({})).bytes)), "7.000");
    // Without a rate the play time stays.
    EXPECT_EQ(file_text(file(header({.rate = 29}))), "A DTS(16BitBE) 48000Hz 5.1Ch C+L+R+SL+SR+LFE -0.001kbps 24Bit\n7.000");
}

TEST(DtsFile, has_a_format_without_an_analyser) {
    const auto result = dispatched(FILETYPE_DTS16LE, swapped(header({})));
    EXPECT_STREQ(result->details.format, "DTS");
    EXPECT_EQ(result->details.stream_count, 0U);
}

// Two frames of a core of 96 bytes with 512 samples and an extension substream of 64.
TEST(DtsFile, averages_the_rate_of_extended_frames) {
    BitBuilder core;
    core.bits(0x7FFE8001, 32).bits(0x3E, 7).bits(15, 7).bits(95, 14).bits(9, 6).bits(13, 4).bits(24, 5).bits(0, 10);
    core.bits(2, 2).bits(0, 8).bits(6, 3);
    BitBuilder extension; // 7.1 channels, lossless
    extension.bits(0x64582025, 32).bits(0, 11).bits(30, 8).bits(63, 16).bits(1, 1).bits(0, 12).bits(1, 1).bits(0, 8).bits(0, 1);
    extension.bits(63, 16).bits(0, 12).bits(0, 3).bits(23, 5).bits(12, 4).bits(7, 8).bits(0, 1).bits(0, 3).bits(0, 2).bits(1, 2);
    const auto frame = ByteBuilder().append(core.bytes).pad_to(96).append(extension.bytes).pad_to(160).bytes;
    const auto file = ByteBuilder().append(frame).append(frame).bytes;
    EXPECT_EQ(file_text(file), "A DTS(16BitBE) 48000Hz 5.1Ch C+L+R+SL+SR+LFE 1536.000kbps 24Bit\n0.002");
    EXPECT_EQ(details_text(*details_of(file)),
        "DTS duration=0.021 bit_rate=120000 estimated=3\n"
        "audio flags=128 estimated=1 mode=2 duration=0.021 bit_rate=120000 bytes=320 sample_rate=48000 channels=8 bit_depth=24 "
        "codec=DTS profile=HD MA");
}

// Words of 14 bits make 18,725 bytes of a frame of 16,384: the rate in its header says nothing of the file's length.
TEST(DtsFile, tells_the_time_of_packed_words_by_their_frames) {
    const auto file = ByteBuilder().append(as_14bit(header({}))).pad_to(37450).bytes;
    EXPECT_EQ(details_text(*details_of(file)),
        "DTS duration=0.171 bit_rate=1755429\n"
        "audio mode=1 duration=0.171 bit_rate=1536000 bytes=37450 sample_rate=48000 channels=6 codec=DTS layout=L R C LFE Ls Rs");
}

TEST(DtsFile, counts_the_padding_before_the_stream) {
    constexpr size_t padding = 300;
    const Data bytes = ByteBuilder().fill(padding).append(header({})).pad_to(192000).bytes;
    EXPECT_EQ(record_text(*analysed_behind(padding, dts_file, bytes)),
        "A DTS(16BitBE) 48000Hz 5.1Ch C+L+R+SL+SR+LFE 1536.000kbps 24Bit\n1.000");
}

TEST(DtsFile, goes_on_with_zeros_behind_a_cut_header) {
    const std::vector<uint8_t> frame = header({.cpf = 1});
    for (size_t length = 0; length < 20; ++length) {
        const std::string text = file_text({frame.begin(), frame.begin() + static_cast<long>(length)});
        const char* begin = length < 4    ? "7.000"
                            : length < 14 ? "A DTS(16BitBE) "
                                          : "A DTS(16BitBE) 48000Hz 5.1Ch C+L+R+SL+SR+LFE 1536.000";
        EXPECT_EQ(text.rfind(begin, 0), 0U) << length << ": " << text;
    }
}

} // namespace

} // namespace zat::test::dts_test
