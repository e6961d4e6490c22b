#include "common/text/utf8.h"

#include "common/text/text.h"

#include <cstring>

namespace zat {

namespace {

struct Utf8Form {
    uint8_t mask;   // bits of the first byte that tell the form
    uint8_t lead;   // their value
    uint8_t length; // bytes
    uint32_t lowest;
};

constexpr Utf8Form forms[] = {
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
};

constexpr bool is_character(uint32_t code) {
    return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

constexpr bool continues_character(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The character that `text` begins with; its form in `form`.
uint32_t character_at(std::string_view text, const Utf8Form** form) {
    const auto first = static_cast<uint8_t>(text[0]);
    for (const Utf8Form& row : forms) {
        if ((first & row.mask) != row.lead) {
            continue;
        }
        if (row.length > text.size()) {
            return no_character;
        }
        uint32_t code = first & static_cast<uint8_t>(~row.mask);
        for (size_t i = 1; i < row.length; ++i) {
            const auto next = static_cast<uint8_t>(text[i]);
            if ((next & 0xC0) != 0x80) {
                return no_character;
            }
            code = code << 6 | (next & 0x3F);
        }
        *form = &row;
        return code >= row.lowest && is_character(code) ? code : no_character;
    }
    return no_character;
}

} // namespace

uint32_t take_utf8(std::string_view* text) {
    const Utf8Form* form = nullptr;
    const uint32_t code = character_at(*text, &form);
    text->remove_prefix(code == no_character ? 1 : form->length);
    return code;
}

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        if (take_utf8(&text) == no_character) {
            return false;
        }
    }
    return true;
}

std::string_view without_cut_character(std::string_view text) {
    constexpr size_t most_followers = 3;
    size_t start = text.size();
    while (start > 0 && text.size() - start < most_followers &&
           (static_cast<uint8_t>(text[start - 1]) & 0xC0) == 0x80) {
        --start;
    }
    if (start > 0 && static_cast<uint8_t>(text[start - 1]) >= 0xC0) {
        const std::string_view last = text_from(text, start - 1);
        return is_utf8(last) ? text : text.substr(0, start - 1);
    }
    return text;
}

void copy_utf8(char* out, size_t size, std::string_view text) {
    size_t length = text.size();
    if (length >= size) {
        length = size - 1;
        while (length > 0 && continues_character(text[length])) {
            --length;
        }
    }
    if (length != 0) { // an empty text may have no address
        std::memmove(out, text.data(), length);
    }
    out[length] = '\0';
}

void append_utf8(Utf8Text* text, uint32_t character) {
    const uint32_t code = is_character(character) ? character : replacement_character;
    const Utf8Form* form = forms;
    for (const Utf8Form& row : forms) {
        form = code >= row.lowest ? &row : form;
    }
    if (text->full || form->length >= text->size - text->used) {
        text->full = true;
        return;
    }
    char* at = text->out + text->used;
    uint32_t rest = code;
    for (size_t i = form->length - 1; i > 0; --i) {
        at[i] = static_cast<char>(0x80 | (rest & 0x3F));
        rest >>= 6;
    }
    at[0] = static_cast<char>(form->lead | rest);
    text->used += form->length;
    text->out[text->used] = '\0';
}

} // namespace zat
