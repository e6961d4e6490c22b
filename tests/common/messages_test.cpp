#include "common/text/messages.h"

#include "encoding.h"

#include <gtest/gtest.h>

namespace zat::test::messages_test {

// The messages are written as bytes, which nobody can proofread.
TEST(Messages, read_as_they_should) {
    const struct {
        const char* shift_jis;
        const char* text;
    } rows[] = {
        {message::path_too_long, "ファイル名(フルパス)が長すます(%d) %dまでです"},
        {message::open_failed, "ファイルをオープンできません"},
        {message::buffer_failed, "バッファ確保エラー"},
        {message::read_failed, "バッファリードエラー"},
        {message::empty_file, "解析不可(ファイルサイズ=0)"},
        {message::text_file, "解析不可(テキストファイル=0)"},
        {message::exe_file, "解析不可(EXEファイル)"},
        {message::zip_file, "解析不可(ZIPファイル)"},
        {message::dummy_data, "解析不可(ID3V2以降dummyデータover)"},
        {message::unsupported, "未対応の形式"},
        {message::errors_found, "%d error あり"},
        {message::other_tag, "他のtag(%dByte)"},
        {message::not_listed, "該当無し%s"},
        {message::no_catalogue, "C無%s"},
        {message::beyond_2gb, "2GB超規格外wav"},
        {message::estimated_time, " 概算再生時間["},
        {message::zero_byte_rate, "nAvgBytesPerSecが0なので、再生時間は慨算です"},
        {message::compressed_header, "ヘッダ圧縮がかかっているので解析できません"},
        {message::chapters, "チャプター(%d)"},
        {message::cpb_anomaly, "SPS解析でcpb_cnt_minus1に異常あり"},
        {message::script_object, "SCRIPTDATAOBJECTに問題があります"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(host::utf8_of_shift_jis(row.shift_jis), row.text);
    }
}

TEST(Encoding, keeps_what_is_no_shift_jis_out) {
    EXPECT_EQ(host::utf8_of_shift_jis("a\x83\x5C\xB1\x81"), "aソｱ\uFFFD");
    EXPECT_EQ(host::utf8_of_shift_jis("\x80\xA0\xFD\xFF\x82z\xFC\xFCz"), "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDz\uFFFD\uFFFDz");
    EXPECT_TRUE(host::is_utf8("\xF0\x9F\x8E\xB5"));
    for (const char* wrong : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE3\x81", "\xFF"}) {
        EXPECT_FALSE(host::is_utf8(wrong));
        EXPECT_TRUE(host::is_utf8(host::repaired_utf8(wrong)));
    }
}

} // namespace zat::test::messages_test
