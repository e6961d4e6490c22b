#include "video/mjpeg.h"

#include <cstddef>

namespace zat {

namespace {

constexpr uint8_t marker_prefix = 0xFF;

enum Marker : uint8_t {
    marker_sof0 = 0xC0, // baseline; the next three: extended, progressive, lossless
    marker_sof3 = 0xC3,
    marker_soi = 0xD8,
    marker_eoi = 0xD9,
    marker_sos = 0xDA,
    marker_app0 = 0xE0,
};

struct Sampling {
    uint32_t components;
    uint8_t luma; // horizontal and vertical factor, four bits each; the others' are 1
    const char* name;
};

constexpr Sampling samplings[] = {
    {3, 0x22, "4:2:0"},
    {3, 0x21, "4:2:2"},
    {3, 0x11, "4:4:4"},
    {3, 0x41, "4:1:1"},
    {3, 0x12, "4:4:0"},
    {1, 0x11, "4:0:0"},
    {1, 0x22, "4:0:0"},
};

const char* chroma_name(Bytes components, uint32_t count) {
    for (const Sampling& row : samplings) {
        if (row.components == count && byte_at(components, 1) == row.luma &&
            (count == 1 || (byte_at(components, 4) == 0x11 && byte_at(components, 7) == 0x11))) {
            return row.name;
        }
    }
    return "";
}

bool read_frame_header(Bytes segment, MjpegInfo* info) {
    constexpr size_t fixed_size = 6; // up to the components
    if (segment.size() < fixed_size) {
        return false;
    }
    info->bit_depth = segment[0];
    info->height = ReadBE16(&segment[1]);
    info->width = ReadBE16(&segment[3]);
    info->chroma = chroma_name(segment.subspan(fixed_size), segment[5]);
    return true;
}

} // namespace

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
            return read_frame_header(segment, info);
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
