// Characters one by one into a bounded UTF-8 text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zat {

// Starts on a buffer of `size` bytes (at least 1), which is a terminated text after every call.
struct Utf8Writer {
    char* out = nullptr;
    size_t size = 0;
    size_t length = 0;
    bool full = false; // a character did not fit: nothing more is written
};

inline Utf8Writer utf8_writer(char* out, size_t size) {
    out[0] = '\0';
    return {out, size};
}

// Appends a character; U+0000, surrogates and values above U+10FFFF become U+FFFD.
void put_character(Utf8Writer* writer, uint32_t code_point);

// Appends whole characters of a UTF-8 text, all of it or nothing.
void put_utf8(Utf8Writer* writer, std::string_view text);

// Makes runs of blanks one and takes those at both ends away, ideographic ones at the ends too.
// Returns the length.
size_t tidy_blanks(char* text);

} // namespace zat
