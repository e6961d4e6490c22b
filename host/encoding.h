// Texts between the library's encodings and the ones that people and programs read.
#pragma once

#include "zat/zat.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// Shift-JIS (code page 932) to UTF-8; a byte that belongs to no character becomes U+FFFD. Control
// characters stay.
std::string utf8_of_shift_jis(std::string_view text);

// The first `count` of a record's lines in UTF-8.
template <size_t Slots>
std::vector<std::string> lines_of(const char (&lines)[Slots][ZAT_LINE_SIZE], int32_t count) {
    std::vector<std::string> out;
    for (int32_t i = 0; i < count && i < static_cast<int32_t>(Slots); ++i) {
        out.push_back(utf8_of_shift_jis(lines[i]));
    }
    return out;
}

bool is_utf8(std::string_view text);

// UTF-8 with U+FFFD for each byte that belongs to no character.
std::string repaired_utf8(std::string_view text);

#ifdef _WIN32
std::string utf8_of_wide(const std::wstring& text);
std::wstring wide_of_utf8(std::string_view text);
#endif

} // namespace host
