// A video stream that BITMAPINFOHEADER describes, as AVI, ASF, Matroska's VFW tracks and OGM have
// it: its codec text and its facts, by what reads its codec.
#pragma once

#include "common/output.h"
#include "common/text.h"
#include "video/bitmap_info.h"

#include <cstdint>

namespace zat {

struct BitmapStream {
    BitmapInfo info;
    Bytes start = {}; // of the first picture
    Bytes media = {}; // where an MPEG-4 encoder's name is looked for; `start` when empty
    // The shape of the display that the container tells; 0 when it does not.
    uint64_t display_width = 0;
    uint64_t display_height = 0;
    double highest_frame_rate = 240;
    bool shows_wmv3_profile = false; // behind the catalogue's name
};

// Fills in what the codec's headers tell, adds the stream's line and its details. What the
// container told before, size, frame rate, bit rate and scan among it, counts over them.
void add_bitmap_stream(const Output& out, const BitmapStream& source, ZatStream* stream);

} // namespace zat
