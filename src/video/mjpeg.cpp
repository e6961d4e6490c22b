#include "video/mjpeg.h"

#include <cstddef>

namespace zat {

bool read_mjpeg_info(Bytes image, MjpegInfo* info) {
    for (size_t at = 0; at + 4 <= image.size() && image[at] == marker_prefix;) {
        const uint8_t marker = image[at + 1];
        if (marker == marker_soi || marker == marker_prefix) {
            at += marker == marker_soi ? 2 : 1;
            continue;
        }
        const size_t length = ReadBE16(&image[at + 2]); // its own two bytes counted
        if (marker == marker_sos || marker == marker_eoi || length < 2) {
            return false;
        }
        const Bytes rest = image.subspan(at + 4);
        const Bytes segment = rest.first(length - 2 < rest.size() ? length - 2 : rest.size());
        if (marker >= marker_sof0 && marker <= marker_sof3) {
            return read_jpeg_frame(segment, &info->frame);
        }
        if (marker == marker_app0 && has_at(segment, 0, "AVI1")) {
            info->has_avi1 = true;
            info->polarity = byte_at(segment, 4);
        }
        at += 2 + length;
    }
    return false;
}

} // namespace zat
