// The frame header of a JPEG image (ITU-T T.81, B.2.2), in a picture file or a picture of a video.
#pragma once

#include "common/bytes/bytes.h"

#include <cstdint>

namespace zat {

// Markers (ITU-T T.81, table B.1), each behind a byte FF.
enum JpegMarker : uint8_t {
    marker_sof0 = 0xC0, // baseline; the next three: extended, progressive, lossless
    marker_sof3 = 0xC3,
    marker_soi = 0xD8,
    marker_eoi = 0xD9,
    marker_sos = 0xDA,
    marker_app0 = 0xE0,
    marker_prefix = 0xFF,
};

struct JpegFrame {
    uint32_t width = 0;  // of the stored image: of a field, where fields are stored apart
    uint32_t height = 0; // 0 when it is told behind the first scan
    uint32_t bit_depth = 0;
    const char* chroma = ""; // "4:2:0"; empty for a sampling without a name
};

// Reads what stands behind the length of a frame header. False, with the frame as it was, when that
// ends before the components.
bool read_jpeg_frame(Bytes segment, JpegFrame* frame);

} // namespace zat
