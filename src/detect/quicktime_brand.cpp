#include "detect/quicktime_brand.h"

#include "common/text/text.h"
#include "zat/zat.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace zat {

namespace {

constexpr std::string_view first_boxes[] = {
    "cmov", "free", "ftyp", "mdat", "moov", "pnot", "skip", "wide"};

struct Brand {
    std::string_view text;
    uint32_t type_code;
};

// Whole texts: the common brand "M4A ", with its blank, is none of them.
constexpr Brand brands[] = {
    {"avc1", FILETYPE_MPEG4},
    {"mp42", FILETYPE_MPEG4},
    {"isom", FILETYPE_MPEG4},
    {"m4a", FILETYPE_AAC},
    {"mp4a", FILETYPE_AAC},
    {"mmp4", FILETYPE_3GPP2},
};

} // namespace

uint32_t QuickTimeBrandCheck(Bytes bytes) {
    char box[4];
    char brand[4];
    for (size_t i = 0; i < 4; ++i) {
        box[i] = static_cast<char>(byte_at(bytes, 4 + i));
        brand[i] = ascii_lower(static_cast<char>(byte_at(bytes, 8 + i)));
    }
    if (std::find(std::begin(first_boxes), std::end(first_boxes),
            std::string_view(box, sizeof box)) == std::end(first_boxes)) {
        return FILETYPE_UNKNOWN;
    }
    const std::string_view text = bounded_text(brand);
    for (const Brand& row : brands) {
        if (text == row.text) {
            return row.type_code;
        }
    }
    return text.starts_with("3g") ? FILETYPE_3GPP2 : FILETYPE_QUICKTIME;
}

} // namespace zat
