#include "common/file/file_window.h"
#include "detect/ac3_probe.h"
#include "detect/file_type.h"
#include "detect/mpeg_probes.h"
#include "detect/text_check.h"
#include "detect/ts_probes.h"
#include "support/byte_builder.h"
#include "support/temp_file.h"

#include <gtest/gtest.h>

namespace zat::test::probes_test {

std::vector<uint8_t> with_bytes(size_t length, std::initializer_list<size_t> places, std::string_view bytes = "G") {
    ByteBuilder builder;
    builder.fill(length, 'x');
    for (const size_t place : places) {
        builder.put(place, bytes);
    }
    return builder.bytes;
}

TEST(TsFullCheck, tries_five_sync_bytes) {
    const struct {
        std::vector<uint8_t> bytes;
        int64_t position;
        uint32_t packet_size;
    } rows[] = {
        {with_bytes(400, {4, 192, 196}), 4, 188}, // both fit
        {with_bytes(400, {1, 2, 3, 5, 10, 198}), 10, 188},
        {with_bytes(400, {1, 2, 3, 5, 7, 12, 200}), -1, 0},
        {with_bytes(192, {0, 188}), ts_wants_more, 0}, // no place has a packet behind it
        {{}, ts_wants_more, 0},
    };
    for (const auto& row : rows) {
        uint32_t packet_size = 0;
        EXPECT_EQ(TsFullCheck(row.bytes, &packet_size), row.position);
        EXPECT_EQ(packet_size, row.packet_size);
    }
}

TEST(MpegSequenceCheck, finds_the_last_candidate_at_any_place) {
    constexpr size_t length = 400;
    constexpr std::string_view header("\0\0\1\xB3", 4);
    constexpr std::string_view prefix("\0\0\1", 3);
    for (size_t at = 0; at + 79 <= length; ++at) {
        auto bytes = with_bytes(length, {at}, header);
        EXPECT_EQ(MpegSequenceCheck(bytes), -1);
        bytes = ByteBuilder{bytes}.put(at + 76, prefix).bytes;
        EXPECT_EQ(MpegSequenceCheck(bytes), static_cast<int64_t>(at));
        EXPECT_EQ(MpegSequenceCheck(Bytes(bytes).first(at + 78)), -1);
    }
    const auto two = ByteBuilder{with_bytes(length, {10, 120}, header)}.put(86, prefix).put(196, prefix).bytes;
    EXPECT_EQ(MpegSequenceCheck(two), 120);
}

TEST(Ac3SyncCheck, follows_one_frame_length) {
    // 0x00: 48 kHz, 128 bytes; 0x25: 48 kHz, 2,560 bytes.
    const auto sync = [](int codes) { return std::string{0x0B, 0x77, 0, 0, static_cast<char>(codes)}; };
    const auto chain = with_bytes(400, {100, 228}, sync(0));
    EXPECT_EQ(Ac3SyncCheck(chain), 100);
    EXPECT_EQ(Ac3SyncCheck(Bytes(chain).first(230)), 100);
    EXPECT_EQ(Ac3SyncCheck(Bytes(chain).first(229)), -1);
    // Reserved codes are passed over, frames that nothing follows too.
    for (const int codes : {0xC0, 0x26, 0x3F, 0x02}) {
        EXPECT_EQ(Ac3SyncCheck(ByteBuilder{chain}.put(50, sync(codes)).bytes), 100);
    }
    // A frame longer than everything ends the search.
    EXPECT_EQ(Ac3SyncCheck(ByteBuilder{chain}.put(50, sync(0x25)).bytes), -1);
    EXPECT_EQ(Ac3SyncCheck(Bytes(chain).subspan(100, 5)), -1);
}

TEST(MpegAudioCheck, wants_two_headers_a_frame_apart) {
    // 417 bytes a frame; 0x94 is a reserved sample rate, 0xF0 a reserved and 0x00 a free bit rate.
    constexpr std::string_view header("\xFF\xFB\x90\0", 4);
    const auto pair = with_bytes(1000, {100, 517}, header);
    EXPECT_EQ(MpegAudioCheck(pair, MpegAudioMode::search), 100);
    EXPECT_EQ(MpegAudioCheck(pair, MpegAudioMode::at_start), -1);
    EXPECT_EQ(MpegAudioCheck(Bytes(pair).subspan(100), MpegAudioMode::at_start), 0);
    EXPECT_EQ(MpegAudioCheck(Bytes(pair).first(518), MpegAudioMode::search), -1);
    const std::string_view unusable[] = {"\xFF\xFB\x9C", "\xFF\xFB\xF0", {"\xFF\xFB\0", 3}};
    for (const std::string_view replaced : unusable) {
        EXPECT_EQ(MpegAudioCheck(ByteBuilder{pair}.put(100, replaced).bytes, MpegAudioMode::search), -1);
    }
}

// A file that shrinks: the bytes it had promised count as zeros, so it is no text.
TEST(TextFileCheck, takes_missing_bytes_for_zeros) {
    const TempFile text(std::vector<uint8_t>(20000, 'x'));
    FileRecord file;
    ASSERT_EQ(FileOpen(&file, text.path.c_str()), 0);
    for (const int64_t missing : {0, 1, 5000000}) {
        FileWindow window;
        window_open(&window, &file, 0, 5242880);
        EXPECT_EQ(TextFileCheck(&window, file.size + missing), missing == 0 ? 0 : -1);
        window_close(&window);
    }
    FileClose(&file);
}

TEST(FileTypeName, leaves_the_buffer_for_codes_without_a_name) {
    char name[file_type_name_size] = "";
    FileTypeName(128, name);
    EXPECT_STREQ(name, "FILETYPE_SHOCKWAVEMP3(127)");
    for (const uint32_t code : {3U, 129U, 0xFFFFFFFFU}) {
        FileTypeName(code, name);
        EXPECT_STREQ(name, "FILETYPE_SHOCKWAVEMP3(127)");
    }
}

} // namespace zat::test::probes_test
