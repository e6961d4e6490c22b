#include "text/tidy_blanks.h"

#include <string_view>

namespace zat {

namespace {

constexpr std::string_view ideographic_space = "\xE3\x80\x80";

// Bytes of the blank at the start of the text, 0 when there is none.
size_t blank_size(std::string_view text) {
    if (text.starts_with(' ')) {
        return 1;
    }
    return text.starts_with(ideographic_space) ? ideographic_space.size() : 0;
}

} // namespace

size_t tidy_blanks(char* text) {
    std::string_view rest = text;
    while (const size_t size = blank_size(rest)) {
        rest.remove_prefix(size);
    }
    size_t length = 0;
    for (const char c : rest) {
        if (c != ' ' || length == 0 || text[length - 1] != ' ') {
            text[length++] = c;
        }
    }
    for (;;) {
        const std::string_view kept(text, length);
        if (kept.ends_with(' ')) {
            --length;
        } else if (kept.ends_with(ideographic_space)) {
            length -= ideographic_space.size();
        } else {
            break;
        }
    }
    text[length] = '\0';
    return length;
}

} // namespace zat
