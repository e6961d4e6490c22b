#include "support/dispatched.h"
#include "support/mpeg_audio_builder.h"
#include "support/riff_builder.h"

namespace zat::test::dispatch_test {

Data riff(std::string_view form) {
    return riff_list("RIFF", form, {riff_chunk("data", mpeg_frames(1).bytes)});
}

// A host may take the record of another file again.
TEST(Dispatch, writes_the_line_of_the_only_stream_over_others) {
    const struct {
        uint32_t type_code;
        Data bytes;
        int32_t video_lines; // afterwards
    } rows[] = {
        {FILETYPE_MP3, mpeg_frames(2).bytes, 3},
        {FILETYPE_RMP3, riff("RMP3"), 3},
        {FILETYPE_WAV, riff("WAVE"), 3},
        {FILETYPE_AC3, ByteBuilder().be64(0x0B77000014404000).pad_to(768).bytes, 3},
        {FILETYPE_DTS16BE, ByteBuilder().be64(0x7FFE8001FC3C3FF0).be64(0xB5E0013800000000).pad_to(1024).bytes, 3},
        {FILETYPE_FLV, ByteBuilder().text("FLV").raw({1, 5}).be32(9).be32(0).raw({8, 0, 0, 1}).fill(7).u8(0xAF).be32(12).bytes,
            1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type_code);
        const TempFile temporary(row.bytes);
        FileRecord file;
        ASSERT_EQ(FileOpen(&file, temporary.path.c_str()), 0);
        InfoRecord record{};
        record.type_code = row.type_code;
        record.video_count = 3;
        record.audio_count = 3;
        DispatchAnalyser(&file, {&record, nullptr});
        EXPECT_EQ(record.video_count, row.video_lines);
        EXPECT_EQ(record.audio_count, 1);
        EXPECT_STRNE(record.audio[0], "");
    }
}

} // namespace zat::test::dispatch_test
