#include "common/text/text.h"

#include <algorithm>
#include <cstring>

namespace zat {

namespace {

// First bytes of double-byte characters in code page 932.
bool is_lead_byte(char c) {
    const auto code = static_cast<unsigned char>(c);
    return (code >= 0x81 && code <= 0x9F) || (code >= 0xE0 && code <= 0xFC);
}

} // namespace

size_t whole_characters(const char* text, size_t length) {
    size_t at = 0;
    while (at < length) {
        const size_t width = is_lead_byte(text[at]) ? 2 : 1;
        if (width > length - at) {
            break;
        }
        at += width;
    }
    return at;
}

void copy_text(char* out, size_t size, std::string_view text) {
    size_t length = text.size();
    if (length >= size) {
        length = whole_characters(text.data(), size - 1);
    }
    if (length != 0) { // an empty text may have no address
        std::memmove(out, text.data(), length);
    }
    out[length] = '\0';
}

void append_text(char* out, size_t size, std::string_view text) {
    const size_t used = bounded_text(out, size).size();
    if (used < size) {
        copy_text(out + used, size - used, text);
    }
}

void AppendWithSeparator(char* line, size_t size, std::string_view piece, int mode) {
    if (line[0] != '\0' && mode == separator_comma) {
        append_text(line, size, ",");
    } else if (line[0] != '\0' && mode == separator_space) {
        append_text(line, size, " ");
    }
    append_text(line, size, piece);
}

bool same_letters(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](char x, char y) { return ascii_lower(x) == ascii_lower(y); });
}

std::string_view printable_text(std::string_view text) {
    const auto* end = std::find_if(text.begin(), text.end(), IsNotPrintable);
    return text.substr(0, static_cast<size_t>(end - text.begin()));
}

std::string_view bounded_text(const char* text, size_t size) {
    if (size == 0) { // an empty text may have no address
        return {};
    }
    const void* end = std::memchr(text, '\0', size);
    return {
        text, end == nullptr ? size : static_cast<size_t>(static_cast<const char*>(end) - text)};
}

} // namespace zat
