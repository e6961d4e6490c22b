#include "common/text/messages.h"
#include "support/audio_builder.h"
#include "support/byte_builder.h"
#include "support/mpeg_audio_builder.h"
#include "support/temp_file.h"
#include "zat/zat.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace zat::test::file_format_test {

using Contents = std::vector<uint8_t>;

std::unique_ptr<InfoRecord> format_of_path(std::string_view path) {
    auto record = std::make_unique<InfoRecord>();
    std::memcpy(record.get(), path.data(), std::min(path.size(), sizeof(InfoRecord)));
    GetFileFormat(record.get());
    return record;
}

Contents frames(int count, uint64_t header, size_t size) {
    ByteBuilder builder;
    for (int i = 0; i < count; ++i) {
        builder.be32(header).fill(size - 4);
    }
    return builder.bytes;
}

// MPEG-1 Layer III, 128 kbit/s, 44.1 kHz.
Contents mp3_frames(int count) {
    return frames(count, 0xFFFB9000, 417);
}

Contents ogg(std::string_view packet) {
    return ByteBuilder().text("OggS").fill(24).text(packet).fill(20).bytes;
}

Contents box(std::string_view type_and_brand) {
    return ByteBuilder().be32(32).text(type_and_brand).pad_to(40, 1).bytes;
}

// Puts bytes of no format before others, a zero byte among them so that they are no text.
Contents ahead(size_t count, const Contents& rest) {
    return ByteBuilder().text("x").u8(0).pad_to(count, 'x').append(rest).fill(8).bytes;
}

Contents zeros_before(size_t count, const Contents& rest) {
    return ByteBuilder().fill(count).append(rest).bytes;
}

Contents ts_packets(size_t size, size_t first, size_t length) {
    ByteBuilder builder;
    builder.fill(length, 'x');
    builder.bytes[1] = 0;
    for (size_t at = first; at < length; at += size) {
        builder.bytes[at] = 'G';
    }
    return builder.bytes;
}

// Sequence headers behind each other, with the next start code where a matrix has ended.
Contents sequence_header() {
    return ByteBuilder().be32(0x000001B3).fill(72, 'x').be24(0x000001).fill(40, 'x').bytes;
}

// The same without a marker bit, so that only the start codes speak for it.
Contents impossible_sequence_header() {
    return ByteBuilder{sequence_header()}.put(10, {"\0", 1}).bytes;
}

// 32 kbit/s at 48 kHz.
const Contents two_ac3_frames = frames(2, 0x0B770000, 128);

struct Row {
    const char* name;
    Contents file;
    uint32_t type_code;
    const char* line; // empty for a type that was decided
};

constexpr uint32_t mebibyte = 1048576;
constexpr uint32_t view = 5242880;

std::vector<Row> rows() {
    using namespace message;
    return {
        {"mpeg2 pack", ByteBuilder().be32(0x1BA).raw({0x44, 1}).bytes, 17, ""},
        {"pack of neither", ByteBuilder().be32(0x1BA).raw({0x31, 1}).bytes, 27, ""},
        {"wrapped mp3", ByteBuilder().be32(0x1FF).fill(0x1FF).append(mp3_frames(1)).bytes, 128, ""},
        {"wrapped pack", ByteBuilder().be32(0x1BA).fill(0x1BA).append(mp3_frames(1)).bytes, 27, ""},
        {"time stamps like start codes", ByteBuilder().append(ts_packets(192, 4, 600)).put(0, {"\0\0\1\xBA", 4}).bytes, 19, ""},
        {"video cd", ByteBuilder().text("RIFF").fill(4).text("CDXAfmt ").bytes, 14, ""},
        {"big-endian wave", ByteBuilder().text("RIFX").fill(4).text("WAVE").bytes, 1, unsupported},
        {"dts, bytes swapped", ByteBuilder().be32(0xFE7F0180).fill(9).bytes, 123, ""},
        {"ogg, five letters compared", ogg("\x01vorbiX"), 109, ""},
        {"ogg of another kind", ogg("\x80theora"), 16, ""},
        {"flac in ogg",
            ogg("\x7F"
                "FLAC"),
            111, ""},
        {"musepack of another version", ByteBuilder().text("MPCKSH").fill(9).bytes, 116, ""},
        {"transport packets behind ogg's letters", ByteBuilder().append(ts_packets(188, 5, 1200)).put(0, {"OggS\0", 5}).bytes, 18,
            ""},
        {"asf cut in its guid", ByteBuilder().be64(0x3026B2758E66CF11).be32(0xA6D900AA).bytes, 1, unsupported},
        {"brand with a blank", box("ftypM4A "), 15, ""},
        {"brand with a zero", box({"ftypM4A\0", 8}), 118, ""},
        {"part of a box name", box({"f\0\0\0isom", 8}), 1, unsupported},
        {"zero byte behind the first mebibyte", ByteBuilder().text("fLaC").pad_to(mebibyte, 'x').u8(0).bytes, 1, text_file},
        {"zero byte at its end", ByteBuilder().text("fLaC").pad_to(mebibyte - 1, 'x').u8(0).bytes, 117, ""},
        {"executable", ByteBuilder().text("MZ").fill(9).append(mp3_frames(3)).bytes, 1, exe_file},
        {"text before archive", ByteBuilder().text("PK").bytes, 1, text_file},
        {"empty", {}, 1, empty_file},
        {"second tag counted with the first one's size",
            ByteBuilder().append(id3v2_tag(1000).bytes).append(id3v2_tag(500).bytes).pad_to(2000).text("fLaC").bytes, 117, ""},
        {"more large tags than reads are allowed", ByteBuilder().append(repeated(100, id3v2_tag(4096).bytes)).text("fLaC").bytes,
            117, ""},
        {"tag past the end", ByteBuilder().text("ID3").raw({4, 0, 0, 255, 255, 255, 255}).bytes, 0, read_failed},
        {"tag to the very end", id3v2_tag(300).bytes, 0, read_failed},
        {"a single frame", mp3_frames(1), 1, unsupported},
        {"mp3 behind 2,048 zeros", zeros_before(2048, mp3_frames(2)), 106, ""},
        {"mp3 behind 2,049 zeros", zeros_before(2049, mp3_frames(2)), 1, dummy_data},
        {"nothing but 2,049 zeros", Contents(2049), 1, dummy_data},
        {"mp3 at 5,116", ahead(5116, mp3_frames(2)), 106, ""},
        {"mp3 at 5,117", ahead(5117, mp3_frames(2)), 1, unsupported},
        {"packets late in the file", ahead(700000, ts_packets(188, 0, 600)), 18, ""},
        {"a sync byte at 4", ts_packets(999, 4, 600), 19, ""},
        {"sequence header late in the file", ahead(3000000, sequence_header()), 27, ""},
        {"sequence header behind a zero", zeros_before(1, impossible_sequence_header()), 1, unsupported},
        {"ac3 up to the view's end", ahead(view - 130, two_ac3_frames), 114, ""},
        {"ac3 across it", ahead(view - 129, two_ac3_frames), 1, unsupported},
        {"junk", ahead(9000, {}), 1, unsupported},
    };
}

TEST(GetFileFormat, decides_by_the_bytes) {
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.name);
        const auto record = format_of_path(TempFile(row.file).path);
        EXPECT_EQ(record->type_code, row.type_code);
        EXPECT_STREQ(record->general[0], row.line);
        EXPECT_EQ(record->general_count, *row.line == '\0' ? 0 : 1);
        EXPECT_EQ(record->file_size, row.file.size());
        expect_sound(*record);
    }
}

TEST(GetFileFormat, refuses_paths_that_do_not_fit) {
    const struct {
        size_t length;
        uint32_t type_code;
        const char* line_end;
    } paths[] = {{512, 2, message::open_failed}, {513, 3, "(513) 512"}, {sizeof(InfoRecord), 3, "(17624) 512"}};
    // The last one fills the record without a terminator.
    for (const auto& row : paths) {
        const auto record = format_of_path(std::string(row.length, 'a'));
        EXPECT_EQ(record->type_code, row.type_code);
        EXPECT_EQ(record->general_count, 1);
        EXPECT_EQ(record->file_size, 0U);
        EXPECT_NE(std::strstr(record->general[0], row.line_end), nullptr) << record->general[0];
    }
}

TEST(GetFileFormat, opens_regular_files_only) {
    std::vector<std::string> paths = {"", temp_directory(), temp_directory() + "missing"};
#ifndef _WIN32
    const std::string pipe = temp_directory() + "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    paths.insert(paths.end(), {pipe, "/dev/zero"});
#endif
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        const auto record = format_of_path(path);
        EXPECT_EQ(record->type_code, 2U);
        EXPECT_STREQ(record->general[0], message::open_failed);
        EXPECT_EQ(record->file_size, 0U);
    }
}

#ifndef _WIN32
TEST(GetFileFormat, opens_a_path_of_511_bytes) {
    const TempFile file(ByteBuilder().text("fLaC").fill(4).bytes);
    const size_t name = file.path.rfind('/') + 1;
    std::string path = file.path;
    path.insert(name, 511 - path.size(), '/');
    EXPECT_EQ(format_of_path(path)->type_code, 117U);
}
#endif

// A host may keep its own data in the areas that no step writes.
TEST(GetFileFormat, writes_its_own_fields_only) {
    const TempFile file(Contents(2049));
    auto record = std::make_unique<InfoRecord>();
    std::memset(record.get(), 0xA5, sizeof *record);
    std::memcpy(record->path, file.path.c_str(), file.path.size() + 1);
    auto expected = std::make_unique<InfoRecord>(*record);
    expected->type_code = 1;
    expected->general_count = 1;
    expected->file_size = 2049;
    std::memcpy(expected->general[0], message::dummy_data, sizeof message::dummy_data);
    GetFileFormat(record.get());
    EXPECT_EQ(std::memcmp(record.get(), expected.get(), sizeof *record), 0);
}

} // namespace zat::test::file_format_test
