// The headers of a JPEG image (ITU-T T.81, B.2) as a picture of Motion JPEG, with the application
// segment that AVI files have in it (OpenDML AVI File Format Extensions 1.02, "MJPEG DIB").
#pragma once

#include "common/bytes/bytes.h"
#include "video/jpeg_frame.h"

#include <cstdint>

namespace zat {

struct MjpegInfo {
    JpegFrame frame;
    bool has_avi1 = false; // an "AVI1" segment is there
    uint8_t polarity = 0;  // of AVI1: 0 whole frames, 1 odd field, 2 even field
};

// Reads the segments from the start of an image on, up to its frame header. False when none was
// found; an AVI1 segment before that counts all the same.
bool read_mjpeg_info(Bytes image, MjpegInfo* info);

} // namespace zat
