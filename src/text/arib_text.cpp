#include "text/arib_text.h"

#include "common/text/text_codes.h"
#include "common/text/utf8.h"
#include "text/arib_symbols.h"
#include "text/tidy_blanks.h"

#include <algorithm>

namespace zat {

namespace {

constexpr uint32_t geta_mark = 0x3013;
constexpr uint32_t ideographic_space_code = 0x3000;
constexpr uint8_t escape = 0x1B;

enum class Set : uint8_t {
    kanji, // JIS X 0208 and, behind its rows, the additional symbols
    alphanumeric,
    hiragana,
    katakana,
    half_width_katakana, // JIS X 0201
    kanji_plane1,        // JIS X 0213
    kanji_plane2,
    symbols,
    mosaic,
    drcs,
    drcs2, // two bytes a character
    macro,
    unknown,
    unknown2, // two bytes a character
};

constexpr bool takes_two_bytes(Set set) {
    return set == Set::kanji || set == Set::kanji_plane1 || set == Set::kanji_plane2 ||
           set == Set::symbols || set == Set::drcs2 || set == Set::unknown2;
}

// Final bytes of designations (table 7-3).
struct SetCode {
    uint8_t final_byte;
    Set set;
};

constexpr SetCode set_codes[] = {
    {0x30, Set::hiragana},
    {0x31, Set::katakana},
    {0x32, Set::mosaic}, // A to D
    {0x33, Set::mosaic},
    {0x34, Set::mosaic},
    {0x35, Set::mosaic},
    {0x36, Set::alphanumeric}, // proportional, like the next two
    {0x37, Set::hiragana},
    {0x38, Set::katakana},
    {0x39, Set::kanji_plane1},
    {0x3A, Set::kanji_plane2},
    {0x3B, Set::symbols},
    {0x42, Set::kanji},
    {0x49, Set::half_width_katakana},
    {0x4A, Set::alphanumeric},
};

struct Decoder {
    Bytes text;
    size_t position = 0;
    Set g[4] = {Set::kanji, Set::alphanumeric, Set::hiragana, Set::katakana};
    uint8_t gl = 0;           // the element of g in columns 2 to 7
    uint8_t gr = 2;           // that in columns 10 to 15
    int8_t single_shift = -1; // the element for the next character of columns 2 to 7
    uint32_t repeat = 1;      // how many times the next character stands
    bool yen_as_ascii = false;
    Utf8Text writer{};
};

bool at_end(const Decoder* decoder) {
    return decoder->position >= decoder->text.size();
}

// The next byte, 0 at the end.
uint8_t next_byte(Decoder* decoder) {
    return at_end(decoder) ? uint8_t{0} : decoder->text[decoder->position++];
}

uint8_t peek_byte(const Decoder* decoder) {
    return byte_at(decoder->text, decoder->position);
}

void put(Decoder* decoder, uint32_t code_point) {
    for (; decoder->repeat > 0 && !decoder->writer.full; --decoder->repeat) {
        append_utf8(&decoder->writer, code_point);
    }
    decoder->repeat = 1;
}

void put_text(Decoder* decoder, std::string_view utf8) {
    for (; decoder->repeat > 0 && !decoder->writer.full; --decoder->repeat) {
        for (std::string_view rest = utf8; !rest.empty();) {
            append_utf8(&decoder->writer, take_utf8(&rest));
        }
    }
    decoder->repeat = 1;
}

// A character of JIS X 0208 by way of code page 932 (the shift of JIS X 0208, annex 1).
void put_kanji(Decoder* decoder, uint32_t row, uint32_t cell) {
    const uint32_t lead = (row - 1) / 2 + (row <= 62 ? 0x81 : 0xC1);
    const uint32_t trail = row % 2 == 0 ? cell + 0x9E : cell + 0x3F + (cell >= 64 ? 1 : 0);
    const char pair[] = {static_cast<char>(lead), static_cast<char>(trail)};
    char utf8[8];
    const size_t length = cp932_to_utf8({pair, sizeof pair}, utf8, sizeof utf8);
    const std::string_view character(utf8, length);
    constexpr std::string_view unassigned = "\xEF\xBF\xBD"; // U+FFFD
    if (character.empty() || character.find(unassigned) != std::string_view::npos) {
        put(decoder, geta_mark);
    } else {
        put_text(decoder, character);
    }
}

void put_two_bytes(Decoder* decoder, Set set, uint8_t first, uint8_t second) {
    constexpr uint32_t last_kanji_row = 84;
    const uint32_t row = first - 0x20U;
    const uint32_t cell = second - 0x20U;
    const bool holds_kanji = set == Set::kanji || set == Set::kanji_plane1;
    const bool holds_symbols = set == Set::kanji || set == Set::symbols;
    if (holds_kanji && row <= last_kanji_row) {
        put_kanji(decoder, row, cell);
        return;
    }
    const std::string_view symbol = holds_symbols ? arib_symbol(row, cell) : std::string_view{};
    if (symbol.empty()) {
        put(decoder, geta_mark);
    } else {
        put_text(decoder, symbol);
    }
}

// The characters that hiragana and katakana share, from 0x79 on.
constexpr char16_t kana_signs[] = u"ー。「」、・";

uint32_t kana(uint8_t code, uint32_t first, uint8_t last, uint32_t iteration_mark) {
    if (code >= 0x79) {
        return kana_signs[code - 0x79];
    }
    if (code >= 0x77) {
        return iteration_mark + code - 0x77U;
    }
    return code <= last ? first + code - 0x21U : geta_mark;
}

// A set's character for a code of 0x21 to 0x7E.
uint32_t one_byte_character(const Decoder* decoder, Set set, uint8_t code) {
    switch (set) {
    case Set::alphanumeric:
        if (!decoder->yen_as_ascii && (code == 0x5C || code == 0x7E)) {
            return code == 0x5C ? 0xA5 : 0x203E; // yen sign, overline
        }
        return code;
    case Set::hiragana:
        return kana(code, 0x3041, 0x73, 0x309D);
    case Set::katakana:
        return kana(code, 0x30A1, 0x76, 0x30FD);
    case Set::half_width_katakana:
        return code <= 0x5F ? 0xFF61 + code - 0x21U : geta_mark;
    default:
        return geta_mark;
    }
}

// What the default macros designate to G0, G1 and G2 (table 7-15); G3 is the macros then.
constexpr uint8_t first_macro = 0x60;
constexpr Set macros[][3] = {
    {Set::kanji, Set::alphanumeric, Set::hiragana},
    {Set::kanji, Set::katakana, Set::hiragana},
    {Set::kanji, Set::drcs, Set::hiragana},
    {Set::mosaic, Set::mosaic, Set::mosaic},
    {Set::mosaic, Set::mosaic, Set::mosaic},
    {Set::mosaic, Set::drcs, Set::mosaic},
    {Set::drcs, Set::drcs, Set::drcs}, // 1 to 3
    {Set::drcs, Set::drcs, Set::drcs}, // 4 to 6
    {Set::drcs, Set::drcs, Set::drcs}, // 7 to 9
    {Set::drcs, Set::drcs, Set::drcs}, // 10 to 12
    {Set::drcs, Set::drcs, Set::drcs}, // 13 to 15
    {Set::kanji, Set::drcs, Set::hiragana},
    {Set::kanji, Set::drcs, Set::hiragana},
    {Set::kanji, Set::drcs, Set::hiragana},
    {Set::katakana, Set::hiragana, Set::alphanumeric},
    {Set::alphanumeric, Set::mosaic, Set::drcs},
};

void run_macro(Decoder* decoder, uint8_t code) {
    if (code < first_macro || code >= first_macro + std::size(macros)) {
        return;
    }
    std::copy_n(macros[code - first_macro], 3, decoder->g);
    decoder->g[3] = Set::macro;
    decoder->gl = 0;
    decoder->gr = 2;
}

// A character or the start of one, in columns 2 to 7 or 10 to 15.
void read_graphic(Decoder* decoder, uint8_t byte) {
    const bool is_left = byte < 0x80;
    const auto code = static_cast<uint8_t>(byte & 0x7F);
    Set set = decoder->g[is_left ? decoder->gl : decoder->gr];
    if (is_left && decoder->single_shift >= 0) {
        set = decoder->g[decoder->single_shift];
        decoder->single_shift = -1;
    }
    if (code == 0x7F) {
        return;
    }
    if (code == 0x20) {
        put(decoder, set == Set::alphanumeric ? ' ' : ideographic_space_code);
    } else if (set == Set::macro) {
        run_macro(decoder, code);
    } else if (!takes_two_bytes(set)) {
        put(decoder, one_byte_character(decoder, set, code));
    } else {
        const auto second = static_cast<uint8_t>(peek_byte(decoder) & 0x7F);
        if (second > 0x20 && second < 0x7F) { // else the character is cut
            ++decoder->position;
            put_two_bytes(decoder, set, code, second);
        }
    }
}

// Bytes of a character in the sets that a designation chooses from.
enum class Width : uint8_t { one_byte, two_bytes };

Set set_of(uint8_t final_byte, Width width) {
    const bool two_bytes = width == Width::two_bytes;
    for (const SetCode& row : set_codes) {
        if (row.final_byte == final_byte && takes_two_bytes(row.set) == two_bytes) {
            return row.set;
        }
    }
    return two_bytes ? Set::unknown2 : Set::unknown;
}

constexpr bool is_designation(uint8_t byte) {
    return byte >= 0x28 && byte <= 0x2B;
}

// Behind the escape and, for sets of two bytes, 0x24.
void designate(Decoder* decoder, Width width) {
    uint8_t element = 0;
    if (is_designation(peek_byte(decoder))) {
        element = static_cast<uint8_t>(next_byte(decoder) - 0x28);
    }
    if (peek_byte(decoder) == 0x20) {
        ++decoder->position;
        const uint8_t code = next_byte(decoder);
        decoder->g[element] = code == 0x70                ? Set::macro
                              : width == Width::two_bytes ? Set::drcs2
                                                          : Set::drcs;
    } else if (!at_end(decoder)) {
        decoder->g[element] = set_of(next_byte(decoder), width);
    }
}

void read_escape(Decoder* decoder) {
    const uint8_t byte = peek_byte(decoder);
    if (is_designation(byte)) {
        designate(decoder, Width::one_byte);
        return;
    }
    next_byte(decoder);
    switch (byte) {
    case 0x24:
        designate(decoder, Width::two_bytes);
        break;
    case 0x6E: // LS2
    case 0x6F: // LS3
        decoder->gl = static_cast<uint8_t>(byte - 0x6C);
        break;
    case 0x7C: // LS3R
    case 0x7D: // LS2R
    case 0x7E: // LS1R
        decoder->gr = static_cast<uint8_t>(0x7F - byte);
        break;
    default:
        break;
    }
}

// Behind the control that begins one, up to "MACRO 4F".
void skip_macro_definition(Decoder* decoder) {
    const uint8_t kind = next_byte(decoder);
    if (kind != 0x40 && kind != 0x41) {
        return;
    }
    while (!at_end(decoder)) {
        if (next_byte(decoder) == 0x95 && peek_byte(decoder) == 0x4F) {
            ++decoder->position;
            return;
        }
    }
}

void skip_control_sequence(Decoder* decoder) {
    while (!at_end(decoder)) {
        const uint8_t byte = next_byte(decoder);
        if (byte >= 0x40 && byte <= 0x7E) {
            return;
        }
    }
}

void skip_time(Decoder* decoder) {
    const uint8_t kind = next_byte(decoder);
    if (kind == 0x20 || kind == 0x28) {
        next_byte(decoder);
    } else if (kind == 0x29) {
        while (!at_end(decoder)) {
            const uint8_t byte = next_byte(decoder);
            if (byte >= 0x40 && byte <= 0x43) {
                return;
            }
        }
    }
}

void read_c1(Decoder* decoder, uint8_t byte) {
    switch (byte) {
    case 0x90: // colour, and concealment below: 0x20 leads a second byte
    case 0x92:
        if (next_byte(decoder) == 0x20) {
            next_byte(decoder);
        }
        break;
    case 0x8B: // character size
    case 0x91: // flashing
    case 0x93: // pattern polarity
    case 0x94: // writing mode
    case 0x97: // highlighting
        next_byte(decoder);
        break;
    case 0x95:
        skip_macro_definition(decoder);
        break;
    case 0x98: // repetition
        decoder->repeat = std::max(next_byte(decoder) & 0x3FU, 1U);
        break;
    case 0x9B:
        skip_control_sequence(decoder);
        break;
    case 0x9D:
        skip_time(decoder);
        break;
    default:
        break;
    }
}

void read_c0(Decoder* decoder, uint8_t byte) {
    switch (byte) {
    case 0x09: // a character forward
    case 0x0D: // a new line
        put(decoder, ' ');
        break;
    case 0x0E: // LS1
        decoder->gl = 1;
        break;
    case 0x0F: // LS0
        decoder->gl = 0;
        break;
    case 0x16: // characters forward
        next_byte(decoder);
        break;
    case 0x19: // SS2
        decoder->single_shift = 2;
        break;
    case escape:
        read_escape(decoder);
        break;
    case 0x1C: // position
        next_byte(decoder);
        next_byte(decoder);
        break;
    case 0x1D: // SS3
        decoder->single_shift = 3;
        break;
    default:
        break;
    }
}

size_t decode(Decoder* decoder) {
    decoder->writer.out[0] = '\0';
    while (!at_end(decoder) && !decoder->writer.full) {
        const uint8_t byte = next_byte(decoder);
        if ((byte & 0x7F) >= 0x20) {
            read_graphic(decoder, byte);
        } else if (byte < 0x20) {
            read_c0(decoder, byte);
        } else {
            read_c1(decoder, byte);
        }
    }
    return tidy_blanks(decoder->writer.out);
}

} // namespace

size_t arib_to_utf8(Bytes text, char* out, size_t size) {
    Decoder decoder{.text = text};
    decoder.writer = {out, size};
    return decode(&decoder);
}

size_t arib_to_cp932(Bytes text, char* out, size_t size) {
    constexpr size_t utf8_size = 2048;
    char utf8[utf8_size];
    Decoder decoder{.text = text, .yen_as_ascii = true};
    decoder.writer = {utf8, sizeof utf8};
    return utf8_to_cp932({utf8, decode(&decoder)}, out, size);
}

} // namespace zat
