#include "common/text/text_codes.h"

#include "common/text/utf8.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zat {

namespace {

// The nearest forms of `count` characters, from `first` on, that code page 932 lacks:
//   step 0  all of them are shown as the code `value`, or not at all when that is 0;
//   step 1  they are shown as the codes from `value` on, one for each;
//   step 2  they are shown as several codes, the text at the place `value` of cp932_form_texts.
struct Form {
    uint32_t first;
    uint8_t count;
    uint8_t step;
    uint16_t value;
};

struct VoicedKana {
    uint16_t kana;
    uint16_t mark;
    uint16_t joined;
};

#include "common/text/text_code_tables.inc"

constexpr uint8_t first_trail = 0x40;
constexpr uint8_t last_trail = 0xFC;
constexpr size_t trails = last_trail - first_trail + 1;
constexpr uint8_t no_row = 0xFF;
constexpr uint8_t first_half_width_kana = 0xA1;
constexpr uint8_t last_half_width_kana = 0xDF;
constexpr uint32_t half_width_kana = 0xFF61;
constexpr uint16_t wide_blank = 0x8140;

// A kana's marks as characters that join it, and on their own.
constexpr uint32_t voiced_mark = 0x3099;
constexpr uint32_t semi_voiced_mark = 0x309A;
constexpr uint32_t mark_to_single = 2;

std::string_view until_zero(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

uint8_t first_byte(std::string_view text) {
    return static_cast<uint8_t>(text[0]);
}

// A character of code page 932, 0 for an unassigned code.
uint32_t from_cp932(uint16_t code) {
    if (code < 0x80) {
        return code;
    }
    if (code >= first_half_width_kana && code <= last_half_width_kana) {
        return half_width_kana + code - first_half_width_kana;
    }
    const auto lead = static_cast<uint8_t>(code >> 8);
    const auto trail = static_cast<uint8_t>(code);
    if (lead < 0x80 || trail < first_trail || trail > last_trail) {
        return 0;
    }
    const uint8_t row = cp932_rows[lead - 0x80];
    return row == no_row ? 0 : cp932_grid[row * trails + trail - first_trail];
}

bool is_lead_byte(uint8_t byte) {
    return byte >= 0x80 && cp932_rows[byte - 0x80] != no_row;
}

// Takes the first code off a text that is not empty. An unassigned or cut one is a single byte:
// what follows it may well be a character of its own.
uint32_t take_cp932(std::string_view* text) {
    const uint8_t lead = first_byte(*text);
    uint16_t code = lead;
    if (is_lead_byte(lead) && text->size() > 1) {
        code = static_cast<uint16_t>(lead << 8 | static_cast<uint8_t>((*text)[1]));
    }
    const uint32_t character = from_cp932(code);
    text->remove_prefix(character != 0 && code > 0xFF ? 2 : 1);
    return character;
}

// True for text whose bytes are all of assigned characters, one of them typical of Japanese: a
// double-byte character of the lower rows with a trail above 7F, or behind another double-byte one.
bool looks_like_cp932(std::string_view text) {
    bool typical = false;
    bool behind_double = false;
    while (!text.empty()) {
        const std::string_view rest = text;
        if (take_cp932(&text) == 0) {
            return false;
        }
        const bool is_double = rest.size() - text.size() == 2;
        if (is_double && first_byte(rest) <= 0x9F) {
            typical = typical || behind_double || static_cast<uint8_t>(rest[1]) > 0x7F;
        }
        behind_double = is_double;
    }
    return typical;
}

// True for text that is mostly ASCII.
bool looks_like_windows_1252(std::string_view text) {
    const auto high = std::count_if(
        text.begin(), text.end(), [](char c) { return static_cast<uint8_t>(c) > 0x7F; });
    const auto blanks = std::count(text.begin(), text.end(), ' ');
    return high <= 1 || 2 * high <= static_cast<int64_t>(text.size()) - blanks;
}

size_t windows_1252_to_utf8(std::string_view bytes, char* out, size_t size) {
    Utf8Text text = {out, size};
    out[0] = '\0';
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        append_utf8(&text, byte >= 0x80 && byte <= 0x9F ? windows_1252[byte - 0x80] : byte);
    }
    return text.used;
}

using ReadUnit = uint16_t (*)(const uint8_t*);

// A byte order mark is no character, and decides (Unicode, 23.8).
size_t utf16_to_utf8(Bytes bytes, ReadUnit read, ReadUnit read_swapped, char* out, size_t size) {
    constexpr uint16_t byte_order_mark = 0xFEFF;
    if (bytes.size() >= 2 && read_swapped(bytes.data()) == byte_order_mark) {
        read = read_swapped;
    }
    const bool marked = bytes.size() >= 2 && read(bytes.data()) == byte_order_mark;
    Utf8Text text = {out, size};
    out[0] = '\0';
    for (size_t at = marked ? 2 : 0; at + 1 < bytes.size() && !text.full; at += 2) {
        uint32_t unit = read(&bytes[at]);
        if (unit == 0) {
            break;
        }
        if (unit >= 0xD800 && unit <= 0xDBFF && at + 3 < bytes.size()) {
            const uint32_t low = read(&bytes[at + 2]);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                unit = 0x10000 + ((unit - 0xD800) << 10 | (low - 0xDC00));
                at += 2;
            }
        }
        append_utf8(&text, unit);
    }
    return text.used;
}

// A line's text as it grows. Blanks wait for what follows them, so that none ends the text.
struct Cp932Text {
    char* out;
    size_t size;
    size_t used = 0;
    size_t trimmed = 0; // without the blanks at the end
    bool full = false;
};

void append_code(Cp932Text* text, uint16_t code) {
    const bool is_blank = code == ' ' || code == wide_blank;
    if (is_blank && text->trimmed == 0) {
        return;
    }
    if (code == ' ' && text->out[text->used - 1] == ' ') {
        return;
    }
    const size_t width = code > 0xFF ? 2 : 1;
    if (text->full || width >= text->size - text->used) {
        text->full = true;
        return;
    }
    if (width == 2) {
        text->out[text->used++] = static_cast<char>(code >> 8);
    }
    text->out[text->used++] = static_cast<char>(code);
    if (!is_blank) {
        text->trimmed = text->used;
    }
}

// The code of a character, 0 when code page 932 lacks it.
uint16_t to_cp932(uint32_t character) {
    if (character < 0x80) {
        return static_cast<uint16_t>(character);
    }
    if (character >= half_width_kana &&
        character <= half_width_kana + last_half_width_kana - first_half_width_kana) {
        return static_cast<uint16_t>(character - half_width_kana + first_half_width_kana);
    }
    const uint16_t* found = std::lower_bound(std::begin(cp932_order), std::end(cp932_order),
        character, [](uint16_t code, uint32_t wanted) { return from_cp932(code) < wanted; });
    return found != std::end(cp932_order) && from_cp932(*found) == character ? *found : uint16_t{0};
}

void append_form_text(Cp932Text* text, uint16_t place) {
    const size_t length = cp932_form_texts[place];
    std::string_view codes = text_of({cp932_form_texts + place + 1, length});
    while (!codes.empty()) {
        const size_t width = is_lead_byte(first_byte(codes)) ? 2 : 1;
        append_code(text, width == 1 ? first_byte(codes)
                                     : static_cast<uint16_t>(first_byte(codes) << 8 |
                                                             static_cast<uint8_t>(codes[1])));
        codes.remove_prefix(width);
    }
}

void append_form(Cp932Text* text, uint32_t character) {
    const Form* form = std::upper_bound(std::begin(cp932_forms), std::end(cp932_forms), character,
        [](uint32_t wanted, const Form& row) { return wanted < row.first; });
    if (form == std::begin(cp932_forms) || character - form[-1].first >= form[-1].count) {
        append_code(text, '?');
        return;
    }
    --form;
    if (form->step == 2) {
        append_form_text(text, form->value);
    } else if (form->value != 0) {
        append_code(
            text, static_cast<uint16_t>(form->value + (character - form->first) * form->step));
    }
}

bool is_control(uint32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
           character == 0x2029;
}

void append_character(Cp932Text* text, uint32_t character) {
    if (character == voiced_mark || character == semi_voiced_mark) {
        character += mark_to_single;
    }
    if (is_control(character)) {
        append_code(text, ' ');
        return;
    }
    const uint16_t code = to_cp932(character);
    if (code != 0) {
        append_code(text, code);
    } else {
        append_form(text, character);
    }
}

// Takes a character with the mark that may follow a kana. A byte that belongs to none is U+FFFD.
uint32_t take_joined(std::string_view* utf8) {
    const uint32_t character = take_utf8(utf8);
    std::string_view rest = *utf8;
    if (character < 0x3041 || character > 0x30FE || rest.empty()) {
        return character == no_character ? replacement_character : character;
    }
    const uint32_t mark = take_utf8(&rest);
    for (const VoicedKana& row : voiced_kana) {
        if (row.kana == character && row.mark == mark) {
            *utf8 = rest;
            return row.joined;
        }
    }
    return character;
}

} // namespace

size_t unknown_to_utf8(std::string_view bytes, char* out, size_t size) {
    const std::string_view text = until_zero(bytes);
    if (is_utf8(text)) {
        constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF"; // no character
        const size_t mark = text.starts_with(byte_order_mark) ? byte_order_mark.size() : 0;
        copy_utf8(out, size, text.substr(mark));
        return std::strlen(out);
    }
    if (looks_like_cp932(text)) {
        return cp932_to_utf8(text, out, size);
    }
    return windows_1252_to_utf8(
        looks_like_windows_1252(text) ? text : std::string_view{}, out, size);
}

size_t claimed_utf8_to_utf8(std::string_view bytes, char* out, size_t size) {
    return unknown_to_utf8(bytes, out, size); // which holds UTF-8 against the text first
}

size_t utf16le_to_utf8(Bytes bytes, char* out, size_t size) {
    return utf16_to_utf8(bytes, ReadLE16, ReadBE16, out, size);
}

size_t utf16be_to_utf8(Bytes bytes, char* out, size_t size) {
    return utf16_to_utf8(bytes, ReadBE16, ReadLE16, out, size);
}

size_t cp932_to_utf8(std::string_view bytes, char* out, size_t size) {
    Utf8Text text = {out, size};
    out[0] = '\0';
    std::string_view rest = until_zero(bytes);
    while (!rest.empty() && !text.full) {
        const uint32_t character = take_cp932(&rest);
        append_utf8(&text, character == 0 ? replacement_character : character);
    }
    return text.used;
}

size_t utf8_to_cp932(std::string_view utf8, char* out, size_t size) {
    Cp932Text text = {out, size};
    std::string_view rest = until_zero(utf8);
    while (!rest.empty() && !text.full) {
        append_character(&text, take_joined(&rest));
    }
    out[text.trimmed] = '\0';
    return text.trimmed;
}

} // namespace zat
