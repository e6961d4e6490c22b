// Bounded texts: every line that the library writes is composed here.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

// mingw checks formats against Microsoft's printf unless told otherwise.
#if defined(__MINGW32__) && !defined(__clang__)
#define ZAT_PRINTF(format_index, first_argument)                                                   \
    __attribute__((format(gnu_printf, format_index, first_argument)))
#else
#define ZAT_PRINTF(format_index, first_argument)                                                   \
    __attribute__((format(printf, format_index, first_argument)))
#endif

namespace zat {

// Bytes of a description line and of every buffer that composes one, terminator included.
constexpr size_t line_size = 512;

// printf into a buffer of `size` bytes (at least 1), always terminated. Returns the length of the
// whole text, which is `size` or more when it was cut; a cut drops half of a double-byte character.
//
// Knows %d %i %u %x %X (with hh h l ll j z), %c, %s, %f and %%, the flag 0, a width and a
// precision. The same result on every platform and in every locale: exact decimals, ties to even,
// "inf", "-inf" and "nan" for what is not finite. A %c of 0 ends the text as a C string sees it.
size_t format_text(char* out, size_t size, const char* format, ...) ZAT_PRINTF(3, 4);
size_t format_text_v(char* text, size_t size, const char* format, va_list arguments)
    ZAT_PRINTF(3, 0);

// Copies and cuts `text` to `size` bytes, terminator included.
void copy_text(char* out, size_t size, std::string_view text);

// Appends in a buffer of `size` bytes.
void append_text(char* out, size_t size, std::string_view text);

// Appends a piece; before it "," in mode 1 or " " in mode 2 when the line is not empty.
void AppendWithSeparator(char* line, size_t size, std::string_view piece, int mode);
constexpr int separator_comma = 1;
constexpr int separator_space = 2;

// 1 for a code below 32 or from 127 on, else 0.
constexpr int IsNotPrintable(char c) {
    const auto code = static_cast<unsigned char>(c);
    return code < 32 || code >= 127 ? 1 : 0;
}

// The text up to its first character that is not printable.
std::string_view printable_text(std::string_view text);

// The text of a fixed array, up to its terminator or its end.
std::string_view bounded_text(const char* text, size_t size);
template <size_t N>
std::string_view bounded_text(const char (&text)[N]) {
    return bounded_text(text, N);
}

// The text from `at` on, empty when it ends before. Unlike substr it cannot throw, which would end
// the host.
constexpr std::string_view text_from(std::string_view text, size_t at) {
    text.remove_prefix(std::min(at, text.size()));
    return text;
}

template <size_t N>
void copy_text(char (&out)[N], std::string_view text) {
    copy_text(out, N, text);
}
template <size_t N>
void append_text(char (&out)[N], std::string_view text) {
    append_text(out, N, text);
}
template <size_t N>
void AppendWithSeparator(char (&line)[N], std::string_view piece, int mode) {
    AppendWithSeparator(line, N, piece, mode);
}

// ASCII only, whatever the locale.
constexpr bool is_ascii_letter(uint8_t byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}
constexpr char ascii_upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr char ascii_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// True when the texts are the same but for the case of ASCII letters.
bool same_letters(std::string_view a, std::string_view b);

// Length to which a text of `length` bytes may be cut without splitting a Shift-JIS character.
size_t whole_characters(const char* text, size_t length);

} // namespace zat
