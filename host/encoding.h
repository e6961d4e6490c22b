// Texts between the library's encodings and the ones that people and programs read.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Shift-JIS (code page 932) to UTF-8; a byte that belongs to no character becomes U+FFFD. Control
// characters stay.
std::string utf8_of_shift_jis(std::string_view text);

bool is_utf8(std::string_view text);

// UTF-8 with U+FFFD for each byte that belongs to no character.
std::string repaired_utf8(std::string_view text);

#ifdef _WIN32
std::string utf8_of_wide(const std::wstring& text);
std::wstring wide_of_utf8(std::string_view text);
#endif

} // namespace host
