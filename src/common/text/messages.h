// The library's own fixed texts, as Shift-JIS (code page 932) bytes with the reading beside each.
//
// Never edit them as text: some second bytes are '\\' or '|', and a hexadecimal escape swallows
// every hexadecimal digit behind it, hence the split literals. Those marked "format" hold
// conversions of format_text; none has a '%' as a second byte. The misspelt wordings stay as they
// are.
#pragma once

namespace zat::message {

// ファイル名(フルパス)が長すます(%d) %dまでです: format: path length, limit
inline constexpr char path_too_long[] =
    "\x83\x74\x83\x40\x83\x43\x83\x8B\x96\xBC(\x83\x74\x83\x8B\x83\x70\x83\x58)"
    "\x82\xAA\x92\xB7\x82\xB7\x82\xDC\x82\xB7(%d) %d\x82\xDC\x82\xC5\x82\xC5\x82\xB7";
// ファイルをオープンできません: the file could not be opened
inline constexpr char open_failed[] = "\x83\x74\x83\x40\x83\x43\x83\x8B\x82\xF0\x83\x49\x81\x5B\x83"
                                      "\x76\x83\x93\x82\xC5\x82\xAB\x82\xDC\x82\xB9\x82\xF1";
// バッファ確保エラー: no memory for the buffer
inline constexpr char buffer_failed[] =
    "\x83\x6F\x83\x62\x83\x74\x83\x40\x8A\x6D\x95\xDB\x83\x47\x83\x89\x81\x5B";
// バッファリードエラー: nothing could be read
inline constexpr char read_failed[] =
    "\x83\x6F\x83\x62\x83\x74\x83\x40\x83\x8A\x81\x5B\x83\x68\x83\x47\x83\x89\x81\x5B";
// 解析不可(ファイルサイズ=0): the file is empty
inline constexpr char empty_file[] =
    "\x89\xF0\x90\xCD\x95\x73\x89\xC2(\x83\x74\x83\x40\x83\x43\x83\x8B\x83\x54\x83\x43\x83\x59=0)";
// 解析不可(テキストファイル=0): a text file
inline constexpr char text_file[] =
    "\x89\xF0\x90\xCD\x95\x73\x89\xC2("
    "\x83\x65\x83\x4C\x83\x58\x83\x67\x83\x74\x83\x40\x83\x43\x83\x8B=0)";
// 解析不可(EXEファイル): an executable
inline constexpr char exe_file[] =
    "\x89\xF0\x90\xCD\x95\x73\x89\xC2(EXE\x83\x74\x83\x40\x83\x43\x83\x8B)";
// 解析不可(ZIPファイル): an archive
inline constexpr char zip_file[] =
    "\x89\xF0\x90\xCD\x95\x73\x89\xC2(ZIP\x83\x74\x83\x40\x83\x43\x83\x8B)";
// 解析不可(ID3V2以降dummyデータover): nothing but zeros behind the tag
inline constexpr char dummy_data[] = "\x89\xF0\x90\xCD\x95\x73\x89\xC2(ID3V2\x88\xC8\x8D\x7E"
                                     "dummy\x83\x66\x81\x5B\x83\x5Eover)";
// 未対応の形式: unsupported format
inline constexpr char unsupported[] = "\x96\xA2\x91\xCE\x89\x9E\x82\xCC\x8C\x60\x8E\xAE";
// %d error あり: format: number of errors
inline constexpr char errors_found[] = "%d error \x82\xA0\x82\xE8";
// 他のtag(%dByte): format: bytes before the audio
inline constexpr char other_tag[] = "\x91\xBC\x82\xCCtag(%dByte)";
// 該当無し%s: format: key without an entry in the catalogue
inline constexpr char not_listed[] = "\x8A\x59\x93\x96\x96\xB3\x82\xB5%s";
// C無%s: format: key looked up without a catalogue
inline constexpr char no_catalogue[] = "C\x96\xB3%s";
// 2GB超規格外wav: a WAV file beyond what its sizes can say
inline constexpr char beyond_2gb[] = "2GB\x92\xB4\x8B\x4B\x8A\x69\x8A\x4Fwav";
// 概算再生時間[: opens the estimated play time; closed with "]"
inline constexpr char estimated_time[] = " \x8A\x54\x8E\x5A\x8D\xC4\x90\xB6\x8E\x9E\x8A\xD4[";
// nAvgBytesPerSecが0なので、再生時間は慨算です: the play time is an estimate, as the byte rate is 0
inline constexpr char zero_byte_rate[] = "nAvgBytesPerSec\x82\xAA"
                                         "0\x82\xC8\x82\xCC\x82\xC5\x81\x41\x8D\xC4\x90\xB6\x8E\x9E"
                                         "\x8A\xD4\x82\xCD\x8A\x53\x8E\x5A\x82\xC5\x82\xB7";
// ヘッダ圧縮がかかっているので解析できません: the movie header is compressed
inline constexpr char compressed_header[] =
    "\x83\x77\x83\x62\x83\x5F\x88\xB3\x8F\x6B\x82\xAA\x82\xA9\x82\xA9\x82\xC1\x82\xC4\x82\xA2\x82"
    "\xE9\x82\xCC\x82\xC5\x89\xF0\x90\xCD\x82\xC5\x82\xAB\x82\xDC\x82\xB9\x82\xF1";
// チャプター(%d): format: number of chapters
inline constexpr char chapters[] = "\x83\x60\x83\x83\x83\x76\x83\x5E\x81\x5B(%d)";
// SPS解析でcpb_cnt_minus1に異常あり: cpb_cnt_minus1 is out of range
inline constexpr char cpb_anomaly[] = "SPS\x89\xF0\x90\xCD\x82\xC5"
                                      "cpb_cnt_minus1\x82\xC9\x88\xD9\x8F\xED\x82\xA0\x82\xE8";
// SCRIPTDATAOBJECTに問題があります: a metadata size is missing
inline constexpr char script_object[] =
    "SCRIPTDATAOBJECT\x82\xC9\x96\xE2\x91\xE8\x82\xAA\x82\xA0\x82\xE8\x82\xDC\x82\xB7";

} // namespace zat::message
