#include "text_width.h"

#include "common/text/utf8.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace host {

namespace {

struct Range {
    uint32_t first;
    uint32_t last;
};

// East Asian Wide and Fullwidth, by blocks.
constexpr Range wide_ranges[] = {{0x1100, 0x115F}, {0x2E80, 0x303E}, {0x3041, 0xA4CF},
    {0xA960, 0xA97C}, {0xAC00, 0xD7A3}, {0xF900, 0xFAFF}, {0xFE30, 0xFE6F}, {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1B000, 0x1B2FF}, {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF},
    {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

// Combining marks and characters without a width, by blocks.
constexpr Range empty_ranges[] = {{0x300, 0x36F}, {0x483, 0x489}, {0x591, 0x5BD}, {0x610, 0x61A},
    {0x64B, 0x65F}, {0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x2064}, {0x20D0, 0x20F0},
    {0x302A, 0x302D}, {0x3099, 0x309A}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF},
    {0xE0100, 0xE01EF}};

bool is_in(const Range* begin, const Range* end, uint32_t character) {
    return std::any_of(begin, end,
        [&](const Range& range) { return character >= range.first && character <= range.last; });
}

size_t character_width(uint32_t character) {
    if (is_in(std::begin(empty_ranges), std::end(empty_ranges), character)) {
        return 0;
    }
    return is_in(std::begin(wide_ranges), std::end(wide_ranges), character) ? 2 : 1;
}

} // namespace

size_t text_width(std::string_view utf8) {
    size_t width = 0;
    while (!utf8.empty()) {
        width += character_width(zat::take_utf8(&utf8));
    }
    return width;
}

std::string cut_to_width(const std::string& utf8, size_t columns) {
    if (text_width(utf8) <= columns) {
        return utf8;
    }
    constexpr char ellipsis[] = "\xE2\x80\xA6";
    std::string_view rest = utf8;
    size_t length = 0;
    for (size_t width = 1; !rest.empty(); length = utf8.size() - rest.size()) {
        width += character_width(zat::take_utf8(&rest));
        if (width > columns) {
            break;
        }
    }
    return utf8.substr(0, length) + (columns != 0 ? ellipsis : "");
}

std::string printable(std::string_view utf8) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    while (!utf8.empty()) {
        std::string_view rest = utf8;
        const uint32_t character = zat::take_utf8(&rest);
        if (character < 0x20 || (character >= 0x7F && character < 0xA0)) {
            out += {'\\', 'x', digits[character >> 4], digits[character & 15]};
        } else {
            out += utf8.substr(0, utf8.size() - rest.size());
        }
        utf8 = rest;
    }
    return out;
}

std::string printable_lines(std::string_view utf8) {
    std::string out;
    while (!utf8.empty()) {
        const size_t length = std::min(utf8.find_first_of("\t\r\n"), utf8.size());
        out += printable(utf8.substr(0, length));
        utf8.remove_prefix(length);
        // A carriage return alone would let what follows overwrite the line.
        if (utf8.starts_with('\r') && !utf8.starts_with("\r\n")) {
            out += printable("\r");
        } else {
            out += utf8.substr(0, 1);
        }
        utf8.remove_prefix(std::min<size_t>(1, utf8.size()));
    }
    return out;
}

} // namespace host
