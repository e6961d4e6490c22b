// BITMAPINFOHEADER (Windows bitmaps), which describes the video of AVI, ASF, Matroska's VFW tracks
// and OGM, and the codes that name its compression.
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t bitmap_info_size = 40; // bytes; the codec's own data stands behind

struct BitmapInfo {
    uint32_t width = 0;  // pixels
    uint32_t height = 0; // pixels, whether stored bottom-up or top-down
    uint32_t bits = 0;   // per pixel
    uint8_t compression[4] = {};
    uint32_t image_size = 0; // bytes
    Bytes codec_data;        // behind the header; a palette for up to 8 bits
};

// False when the bytes end before the compression; what follows that and is missing is 0.
bool read_bitmap_info(Bytes bytes, BitmapInfo* info);

// What reads the elementary stream behind a compression code.
enum class VideoFamily : uint8_t {
    other,
    raw,
    mpeg4, // Visual
    avc,
    hevc,
    av1,
    vp8,
    vp9,
    mpeg12,
    vc1,  // advanced profile
    wmv3, // its simple and main profiles
    mjpeg,
    dv,
    divx_subtitle,
};

// Letters count whatever their case.
VideoFamily video_family(const uint8_t* compression);

// Bits of a pixel of an uncompressed picture, 0 when the code is of another kind. Depths above 32
// are those of grey palettes, as 40 for 8 bits.
uint32_t raw_pixel_bits(const BitmapInfo& info);

// The catalogue's name: by the code as it stands, then upper-cased, else a remark that shows it.
void video_code_name(const uint8_t* compression, char* out, size_t size);

} // namespace zat
