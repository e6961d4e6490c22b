#include "text/utf8_writer.h"

#include <cstring>

namespace zat {

namespace {

constexpr uint32_t replacement = 0xFFFD;
constexpr std::string_view ideographic_space = "\xE3\x80\x80";

constexpr bool is_character(uint32_t code_point) {
    return code_point != 0 && code_point <= 0x10FFFF &&
           (code_point < 0xD800 || code_point > 0xDFFF);
}

constexpr char byte_of(uint32_t value) {
    return static_cast<char>(static_cast<uint8_t>(value));
}

// Bytes of the blank at the start of the text, 0 when there is none.
size_t blank_size(std::string_view text) {
    if (text.starts_with(' ')) {
        return 1;
    }
    return text.starts_with(ideographic_space) ? ideographic_space.size() : 0;
}

} // namespace

void put_utf8(Utf8Writer* writer, std::string_view text) {
    if (writer->full || text.size() >= writer->size - writer->length) {
        writer->full = writer->full || !text.empty();
        return;
    }
    std::memcpy(writer->out + writer->length, text.data(), text.size());
    writer->length += text.size();
    writer->out[writer->length] = '\0';
}

void put_character(Utf8Writer* writer, uint32_t code_point) {
    const uint32_t c = is_character(code_point) ? code_point : replacement;
    char bytes[4];
    size_t count = 1;
    if (c < 0x80) {
        bytes[0] = byte_of(c);
    } else {
        count = c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
        const uint32_t lead = 0xF00U >> count & 0xF0; // as many set bits as bytes
        bytes[0] = byte_of(lead | c >> (6 * (count - 1)));
        for (size_t i = 1; i < count; ++i) {
            bytes[i] = byte_of(0x80 | (c >> (6 * (count - 1 - i)) & 0x3F));
        }
    }
    put_utf8(writer, {bytes, count});
}

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
