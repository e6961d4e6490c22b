#include "common/record/channel_layout.h"

#include "common/text/text.h"

#include <bit>
#include <iterator>
#include <string_view>

namespace zat {

namespace {

struct Speaker {
    std::string_view line;
    std::string_view details;
};

// By bit of the mask.
constexpr Speaker speakers[] = {
    {"L", "L"},
    {"R", "R"},
    {"C", "C"},
    {"LFE", "LFE"},
    {"BL", "Lb"},
    {"BR", "Rb"},
    {"FL-C", "Lc"},
    {"FR-C", "Rc"},
    {"B-C", "Cb"},
    {"SL", "Ls"},
    {"SR", "Rs"},
    {"T-C", "Tc"},
    {"TF-L", "Tfl"},
    {"TF-C", "Tfc"},
    {"TF-R", "Tfr"},
    {"TB-L", "Tbl"},
    {"TB-C", "Tbc"},
    {"TB-R", "Tbr"},
    {"BL-C", "Lcb"}, // WSD's, not of WAVE
    {"BR-C", "Rcb"},
};

constexpr uint32_t named_bits = (1U << std::size(speakers)) - 1;
constexpr uint32_t mono = 0x4;
constexpr uint32_t stereo = 0x3;

bool names_all(uint32_t mask, uint32_t channels) {
    return (mask & ~named_bits) == 0 && static_cast<uint32_t>(std::popcount(mask)) == channels;
}

} // namespace

uint32_t default_channel_mask(uint32_t channels) {
    static constexpr uint32_t masks[] = {0, mono, stereo, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};
    return channels < std::size(masks) ? masks[channels] : 0;
}

void line_layout(uint32_t mask, uint32_t channels, char (&out)[layout_size]) {
    out[0] = '\0';
    if (!names_all(mask, channels) || mask == mono || mask == stereo) {
        return;
    }
    for (size_t bit = 0; bit < std::size(speakers); ++bit) {
        if ((mask >> bit & 1) != 0) {
            append_text(out, out[0] == '\0' ? "" : "+");
            append_text(out, speakers[bit].line);
        }
    }
}

void details_layout(uint32_t mask, uint32_t channels, char (&out)[layout_size]) {
    out[0] = '\0';
    if (!names_all(mask, channels)) {
        return;
    }
    for (size_t bit = 0; bit < std::size(speakers); ++bit) {
        if ((mask >> bit & 1) != 0) {
            AppendWithSeparator(out, speakers[bit].details, separator_space);
        }
    }
}

} // namespace zat
