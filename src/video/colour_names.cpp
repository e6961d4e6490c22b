#include "video/colour_names.h"

#include "common/text/text.h"

#include <iterator>
#include <span>

namespace zat {

namespace {

const char* name_of(std::span<const char* const> names, uint32_t code) {
    return code < names.size() ? names[code] : "";
}

template <size_t N>
void set_name(char (&member)[N], const char* name) {
    if (name[0] != '\0') {
        copy_text(member, name);
    }
}

constexpr uint8_t bt2020_primaries = 9;
constexpr uint8_t pq_transfer = 16;
constexpr uint8_t hlg_transfer = 18;

} // namespace

// Table 2.
const char* colour_primaries_name(uint32_t code) {
    static constexpr const char* names[] = {"", "BT.709", "", "", "BT.470 M", "BT.470 B/G",
        "SMPTE 170M", "SMPTE 240M", "film", "BT.2020", "SMPTE 428", "DCI P3", "Display P3", "", "",
        "", "", "", "", "", "", "", "EBU 3213"};
    return name_of(names, code);
}

// Table 3.
const char* transfer_name(uint32_t code) {
    static constexpr const char* names[] = {"", "BT.709", "", "", "BT.470 M", "BT.470 B/G",
        "SMPTE 170M", "SMPTE 240M", "linear", "log 100", "log 316", "xvYCC", "BT.1361", "sRGB",
        "BT.2020 10 bit", "BT.2020 12 bit", "PQ", "SMPTE 428", "HLG"};
    return name_of(names, code);
}

// Table 4.
const char* matrix_name(uint32_t code) {
    static constexpr const char* names[] = {"RGB", "BT.709", "", "", "FCC", "BT.470 B/G",
        "SMPTE 170M", "SMPTE 240M", "YCgCo", "BT.2020", "BT.2020 constant", "SMPTE 2085",
        "chromaticity", "chromaticity constant", "ICtCp"};
    return name_of(names, code);
}

void set_colour(ZatStream* stream, const ColourCodes& codes) {
    set_name(stream->primaries, colour_primaries_name(codes.primaries));
    set_name(stream->transfer, transfer_name(codes.transfer));
    set_name(stream->matrix, matrix_name(codes.matrix));
    if (codes.range_known) {
        copy_text(stream->range, codes.full_range ? "full" : "limited");
    }
    if (stream->hdr[0] == '\0') {
        if (codes.transfer == pq_transfer && codes.primaries == bt2020_primaries) {
            copy_text(stream->hdr, "HDR10");
        } else if (codes.transfer == hlg_transfer) {
            copy_text(stream->hdr, "HLG");
        }
    }
}

const char* chroma_format_name(uint32_t chroma_format_idc) {
    static constexpr const char* names[] = {"4:0:0", "4:2:0", "4:2:2", "4:4:4"};
    return name_of(names, chroma_format_idc);
}

} // namespace zat
