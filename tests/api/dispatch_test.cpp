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

// Its sync byte is a letter, and two of them one packet apart are enough for the code.
TEST(Dispatch, describes_what_was_taken_for_a_transport_stream) {
    const auto with_letters = [](ByteBuilder bytes, size_t at) {
        return bytes.pad_to(1000).put(at, "G").put(at + 188, "G").bytes;
    };
    const struct {
        const char* name;
        Data bytes;
        const char* label;
        std::string expected;
    } rows[] = {
        {"AU", with_letters(ByteBuilder().text(".snd").be32(24).be32(976).be32(2).be32(8000).be32(1), 30), "[AU]",
            "A [C\x96\xB3"
            "0001] 8000Hz 1ch 64.00kbps 8Bit\n0.122"},
        {"MP3 behind noise", with_letters(ByteBuilder().fill(40, 1).append(mpeg_frames(4).bytes), 2), "",
            "A MPEG1-LayerIII 44100Hz [CBR Stereo] 128.00kbps [417bpf] \nX \x91\xBC\x82\xCCtag(40Byte)\n0.107"},
        {"nothing that is known", with_letters(ByteBuilder().raw({1, 2, 3, 0}), 30), "", "0.000"},
    };
    for (const auto& row : rows) {
        const auto record = info_of(row.bytes);
        EXPECT_EQ(record->type_code, static_cast<uint32_t>(FILETYPE_MPEG2_TS)) << row.name;
        EXPECT_STREQ(record->label, row.label) << row.name;
        EXPECT_EQ(record_text(*record), row.expected) << row.name;
    }
}

} // namespace zat::test::dispatch_test
