#include "video/bitmap_info.h"

#include "common/catalogue/codec_catalogue.h"
#include "common/text/fourcc.h"
#include "common/text/text.h"

#include <cstring>

namespace zat {

namespace {

constexpr size_t compression_at = 16;
constexpr uint32_t grey_palette_bits = 32; // added to the depth of a grey palette

struct Family {
    char code[5]; // upper-case
    VideoFamily family;
};

constexpr Family families[] = {
    {"XVID", VideoFamily::mpeg4},
    {"XVIX", VideoFamily::mpeg4},
    {"DIVX", VideoFamily::mpeg4},
    {"DX50", VideoFamily::mpeg4},
    {"FMP4", VideoFamily::mpeg4},
    {"FFDS", VideoFamily::mpeg4},
    {"FVFW", VideoFamily::mpeg4},
    {"MP4V", VideoFamily::mpeg4},
    {"MP4S", VideoFamily::mpeg4},
    {"M4S2", VideoFamily::mpeg4},
    {"M4CC", VideoFamily::mpeg4},
    {"3IV0", VideoFamily::mpeg4},
    {"3IV1", VideoFamily::mpeg4},
    {"3IV2", VideoFamily::mpeg4},
    {"3IVX", VideoFamily::mpeg4},
    {"RMP4", VideoFamily::mpeg4},
    {"SEDG", VideoFamily::mpeg4},
    {"SMP4", VideoFamily::mpeg4},
    {"BLZ0", VideoFamily::mpeg4},
    {"UMP4", VideoFamily::mpeg4},
    {"DM4V", VideoFamily::mpeg4},
    {"DXGM", VideoFamily::mpeg4},
    {"EM4A", VideoFamily::mpeg4},
    {"EPHV", VideoFamily::mpeg4},
    {"GEOX", VideoFamily::mpeg4},
    {"GMP4", VideoFamily::mpeg4},
    {"HDX4", VideoFamily::mpeg4},
    {"NDIG", VideoFamily::mpeg4},
    {"PVMM", VideoFamily::mpeg4},
    {"SM4V", VideoFamily::mpeg4},
    {"VIDM", VideoFamily::mpeg4},
    {"WV1F", VideoFamily::mpeg4},
    {"ZMP4", VideoFamily::mpeg4},
    {"\4\0\0", VideoFamily::mpeg4},
    {"H264", VideoFamily::avc},
    {"X264", VideoFamily::avc},
    {"Q264", VideoFamily::avc},
    {"V264", VideoFamily::avc},
    {"AVC1", VideoFamily::avc},
    {"DAVC", VideoFamily::avc},
    {"VSSH", VideoFamily::avc},
    {"SMV2", VideoFamily::avc},
    {"HEVC", VideoFamily::hevc},
    {"H265", VideoFamily::hevc},
    {"X265", VideoFamily::hevc},
    {"HVC1", VideoFamily::hevc},
    {"HEV1", VideoFamily::hevc},
    {"AV01", VideoFamily::av1},
    {"VP80", VideoFamily::vp8},
    {"VP90", VideoFamily::vp9},
    {"MPEG", VideoFamily::mpeg12},
    {"MPG1", VideoFamily::mpeg12},
    {"MPG2", VideoFamily::mpeg12},
    {"MPGV", VideoFamily::mpeg12},
    {"MP2V", VideoFamily::mpeg12},
    {"PIM1", VideoFamily::mpeg12},
    {"PIM2", VideoFamily::mpeg12},
    {"LMP2", VideoFamily::mpeg12},
    {"MMES", VideoFamily::mpeg12},
    {"EM2V", VideoFamily::mpeg12},
    {"DVR ", VideoFamily::mpeg12},
    {"VCR2", VideoFamily::mpeg12},
    {"H262", VideoFamily::mpeg12},
    {"\1\0\0\x10", VideoFamily::mpeg12},
    {"\2\0\0\x10", VideoFamily::mpeg12},
    {"WVC1", VideoFamily::vc1},
    {"WMVA", VideoFamily::vc1},
    {"WMV3", VideoFamily::wmv3},
    {"MJPG", VideoFamily::mjpeg},
    {"IJPG", VideoFamily::mjpeg},
    {"LJPG", VideoFamily::mjpeg},
    {"JPEG", VideoFamily::mjpeg},
    {"AVRN", VideoFamily::mjpeg},
    {"AVDJ", VideoFamily::mjpeg},
    {"ADVJ", VideoFamily::mjpeg},
    {"ACDV", VideoFamily::mjpeg},
    {"CJPG", VideoFamily::mjpeg},
    {"DMB1", VideoFamily::mjpeg},
    {"DMB2", VideoFamily::mjpeg},
    {"MJPX", VideoFamily::mjpeg},
    {"QIVG", VideoFamily::mjpeg},
    {"DVSD", VideoFamily::dv},
    {"DVHD", VideoFamily::dv},
    {"DVSL", VideoFamily::dv},
    {"DV25", VideoFamily::dv},
    {"DV50", VideoFamily::dv},
    {"CDVC", VideoFamily::dv},
    {"DVCP", VideoFamily::dv},
    {"DVC ", VideoFamily::dv},
    {"DVCS", VideoFamily::dv},
    {"DVIS", VideoFamily::dv},
    {"PDVC", VideoFamily::dv},
    {"IPDV", VideoFamily::dv},
    {"SLDV", VideoFamily::dv},
    {"AVD1", VideoFamily::dv},
    {"DXSB", VideoFamily::divx_subtitle},
    {"DXSA", VideoFamily::divx_subtitle},
    // BI_RGB and BI_BITFIELDS; then RGB and YUV by their codes.
    {"\0\0\0", VideoFamily::raw},
    {"\3\0\0", VideoFamily::raw},
    {"RGB ", VideoFamily::raw},
    {"RGBA", VideoFamily::raw},
    {"RAW ", VideoFamily::raw},
    {"DIB ", VideoFamily::raw},
    {"BGR ", VideoFamily::raw},
    {"Y800", VideoFamily::raw},
    {"Y8  ", VideoFamily::raw},
    {"GREY", VideoFamily::raw},
    {"YUY2", VideoFamily::raw},
    {"YUYV", VideoFamily::raw},
    {"YUNV", VideoFamily::raw},
    {"YVYU", VideoFamily::raw},
    {"UYVY", VideoFamily::raw},
    {"UYNV", VideoFamily::raw},
    {"VYUY", VideoFamily::raw},
    {"HDYC", VideoFamily::raw},
    {"2VUY", VideoFamily::raw},
    {"Y422", VideoFamily::raw},
    {"P422", VideoFamily::raw},
    {"Y42B", VideoFamily::raw},
    {"YV16", VideoFamily::raw},
    {"V210", VideoFamily::raw},
    {"P210", VideoFamily::raw},
    {"P216", VideoFamily::raw},
    {"YV12", VideoFamily::raw},
    {"I420", VideoFamily::raw},
    {"IYUV", VideoFamily::raw},
    {"NV12", VideoFamily::raw},
    {"NV21", VideoFamily::raw},
    {"P010", VideoFamily::raw},
    {"P016", VideoFamily::raw},
    {"YV24", VideoFamily::raw},
    {"AYUV", VideoFamily::raw},
    {"V308", VideoFamily::raw},
    {"V408", VideoFamily::raw},
    {"V410", VideoFamily::raw},
    {"Y41P", VideoFamily::raw},
    {"Y41B", VideoFamily::raw},
    {"Y411", VideoFamily::raw},
    {"YUV9", VideoFamily::raw},
    {"YVU9", VideoFamily::raw},
};

void to_upper(const uint8_t* code, char (&upper)[4]) {
    for (int i = 0; i < 4; ++i) {
        upper[i] = ascii_upper(static_cast<char>(code[i]));
    }
}

} // namespace

bool read_bitmap_info(Bytes bytes, BitmapInfo* info) {
    if (bytes.size() < compression_at + 4) {
        return false;
    }
    uint8_t header[bitmap_info_size] = {};
    std::memcpy(header, bytes.data(), bytes.size() < sizeof header ? bytes.size() : sizeof header);
    const auto magnitude = [](uint32_t value) { return value > INT32_MAX ? 0 - value : value; };
    info->width = magnitude(ReadLE32(header + 4));
    info->height = magnitude(ReadLE32(header + 8));
    info->bits = ReadLE16(header + 14);
    std::memcpy(info->compression, header + compression_at, sizeof info->compression);
    info->image_size = ReadLE32(header + 20);
    info->codec_data = bytes.size() > bitmap_info_size ? bytes.subspan(bitmap_info_size) : Bytes{};
    return true;
}

VideoFamily video_family(const uint8_t* compression) {
    char upper[4];
    to_upper(compression, upper);
    for (const Family& row : families) {
        if (std::memcmp(row.code, upper, sizeof upper) == 0) {
            return row.family;
        }
    }
    return VideoFamily::other;
}

uint32_t raw_pixel_bits(const BitmapInfo& info) {
    if (video_family(info.compression) != VideoFamily::raw) {
        return 0;
    }
    const bool is_rgb = info.compression[0] <= 3; // BI_RGB, BI_BITFIELDS
    return is_rgb && info.bits > grey_palette_bits ? info.bits - grey_palette_bits : info.bits;
}

void video_code_name(const uint8_t* compression, char* out, size_t size) {
    constexpr std::string_view section = "[AVI-Video]";
    char shown[fourcc_text_size];
    printable_fourcc_text(compression, shown);
    if (codec_name(section, shown, shown, out, size) != codec_not_listed) {
        return;
    }
    char upper[fourcc_text_size];
    for (size_t i = 0; i < sizeof upper; ++i) {
        upper[i] = ascii_upper(shown[i]);
    }
    codec_name(section, bounded_text(upper), shown, out, size);
}

} // namespace zat
