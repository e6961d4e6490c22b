// UTF-8 (RFC 3629), character by character.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zat {

constexpr uint32_t replacement_character = 0xFFFD;
constexpr uint32_t no_character = 0xFFFFFFFF;

// Takes the first character off a text that is not empty. `no_character`, and one byte less, when
// none stands there.
uint32_t take_utf8(std::string_view* text);

bool is_utf8(std::string_view text);

// A text whose end was cut off somewhere, without what the cut left of a character.
std::string_view without_cut_character(std::string_view text);

// Copies UTF-8, cut to `size` bytes, terminator included, at a whole character.
void copy_utf8(char* out, size_t size, std::string_view text);
template <size_t N>
void copy_utf8(char (&out)[N], std::string_view text) {
    copy_utf8(out, N, text);
}

// A text that grows in a buffer of `size` bytes (at least 1), always terminated.
struct Utf8Text {
    char* out;
    size_t size;
    size_t used = 0;
    bool full = false; // a character had no room: nothing is taken any more
};

void append_utf8(Utf8Text* text, uint32_t character);

} // namespace zat
