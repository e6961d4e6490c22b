// The codes of texts in files, and the two that the library writes: UTF-8 in typed details, code
// page 932 in lines.
//
// All conversions write a terminated text of at most `size` bytes, cut at a whole character, and
// return its length. What a text does not end inside a buffer ends with its first zero character.
#pragma once

#include "common/bytes/bytes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zat {

// Bytes of an unknown 8-bit code. What is valid UTF-8 is that; else code page 932 when every byte
// belongs to an assigned character and the text looks like it; else Windows-1252 when most of it is
// ASCII; else nothing.
size_t unknown_to_utf8(std::string_view bytes, char* out, size_t size);

// UTF-8 as a file claims it: text that is not valid is of an unknown code.
size_t claimed_utf8_to_utf8(std::string_view bytes, char* out, size_t size);

// UTF-16; unpaired surrogates become U+FFFD. A byte order mark holds over the order that is named.
size_t utf16le_to_utf8(Bytes bytes, char* out, size_t size);
size_t utf16be_to_utf8(Bytes bytes, char* out, size_t size);

// Code page 932; what it does not assign becomes U+FFFD.
size_t cp932_to_utf8(std::string_view bytes, char* out, size_t size);

// Valid UTF-8 to code page 932 for a line: characters that the code page lacks take their nearest
// form or "?", control characters become blanks, runs of blanks one, and both ends are trimmed.
size_t utf8_to_cp932(std::string_view utf8, char* out, size_t size);

template <size_t N>
size_t unknown_to_utf8(std::string_view bytes, char (&out)[N]) {
    return unknown_to_utf8(bytes, out, N);
}
template <size_t N>
size_t utf8_to_cp932(std::string_view utf8, char (&out)[N]) {
    return utf8_to_cp932(utf8, out, N);
}

} // namespace zat
