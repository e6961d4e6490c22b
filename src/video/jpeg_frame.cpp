#include "video/jpeg_frame.h"

#include <cstddef>

namespace zat {

namespace {

constexpr size_t fixed_size = 6;     // up to the components
constexpr size_t component_size = 3; // identifier, sampling factors, quantisation table

// A component's sampling factors, four bits each.
struct Factors {
    uint32_t across = 0;
    uint32_t down = 0;
};

Factors factors_of(Bytes components, size_t index) {
    const uint32_t both = byte_at(components, index * component_size + 1);
    return {.across = both >> 4, .down = both & 0xF};
}

struct Sampling {
    Factors ratio; // samples of luma for each one of chroma
    const char* name;
};

constexpr Sampling samplings[] = {
    {{2, 2}, "4:2:0"},
    {{2, 1}, "4:2:2"},
    {{1, 1}, "4:4:4"},
    {{4, 1}, "4:1:1"},
    {{1, 2}, "4:4:0"},
    {{4, 2}, "4:1:0"},
};

const char* chroma_name(Bytes components, uint32_t count) {
    if (count == 1) {
        return components.size() < component_size ? "" : "4:0:0";
    }
    const Factors luma = factors_of(components, 0);
    const Factors blue = factors_of(components, 1);
    const Factors red = factors_of(components, 2);
    if (count != 3 || blue.across == 0 || blue.down == 0 || blue.across != red.across ||
        blue.down != red.down) {
        return "";
    }
    for (const Sampling& row : samplings) {
        if (luma.across == row.ratio.across * blue.across &&
            luma.down == row.ratio.down * blue.down) {
            return row.name;
        }
    }
    return "";
}

} // namespace

bool read_jpeg_frame(Bytes segment, JpegFrame* frame) {
    if (segment.size() < fixed_size) {
        return false;
    }
    frame->bit_depth = segment[0];
    frame->height = ReadBE16(&segment[1]);
    frame->width = ReadBE16(&segment[3]);
    frame->chroma = chroma_name(segment.subspan(fixed_size), segment[5]);
    return true;
}

} // namespace zat
