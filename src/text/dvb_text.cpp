#include "text/dvb_text.h"

#include "common/text/text.h"
#include "common/text/utf8.h"
#include "text/dvb_tables.h"
#include "text/tidy_blanks.h"

#include <string_view>

namespace zat {

namespace {

constexpr uint32_t new_line = 0x8A;

// A character, or one of the control codes of table A.1 at U+0080 or U+E080: emphasis, of no use
// here, and the new line.
void put(Utf8Text* writer, uint32_t code_point) {
    const uint32_t control =
        code_point >= 0xE080 && code_point <= 0xE09F ? code_point - 0xE000 : code_point;
    if (control >= 0x80 && control <= 0x9F) {
        if (control == new_line) {
            append_utf8(writer, ' ');
        }
    } else if (control < 0x20) {
        append_utf8(writer, ' ');
    } else {
        append_utf8(writer, code_point);
    }
}

// ISO/IEC 6937 with the euro sign (figure A.1); U+0000 for what is not assigned.
constexpr char16_t iso6937_a0[] = u"\u00A0¡¢£€¥\0§¤‘“«←↑→↓°±²³×µ¶·÷’”»¼½¾¿";
constexpr char16_t iso6937_d0[] = u"―¹®©™♪¬¦\0\0\0\0⅛⅜⅝⅞ΩÆĐªĦ\0ĲĿŁØŒºÞŦŊŉĸæđðħıĳŀłøœßþŧŋ\u00AD";
static_assert(std::size(iso6937_a0) == 0x20 + 1 && std::size(iso6937_d0) == 0x30 + 1);

// The non-spacing accents, which stand before their letter.
struct Accent {
    char16_t combining;
    std::string_view letters;
    std::u16string_view composed;
};

constexpr Accent accents[] = {
    // From C1 on.
    {0x0300, "AEINOUWYaeinouwy", u"ÀÈÌǸÒÙẀỲàèìǹòùẁỳ"},
    {0x0301, "ACEGIKLMNOPRSUWYZacegiklmnoprsuwyz", u"ÁĆÉǴÍḰĹḾŃÓṔŔŚÚẂÝŹáćéǵíḱĺḿńóṕŕśúẃýź"},
    {0x0302, "ACEGHIJOSUWYZaceghijosuwyz", u"ÂĈÊĜĤÎĴÔŜÛŴŶẐâĉêĝĥîĵôŝûŵŷẑ"},
    {0x0303, "AEINOUVYaeinouvy", u"ÃẼĨÑÕŨṼỸãẽĩñõũṽỹ"},
    {0x0304, "AEGIOUYaegiouy", u"ĀĒḠĪŌŪȲāēḡīōūȳ"},
    {0x0306, "AEGIOUaegiou", u"ĂĔĞĬŎŬăĕğĭŏŭ"},
    {0x0307, "ABCDEFGHIMNOPRSTWXYZabcdefghmnoprstwxyz", u"ȦḂĊḊĖḞĠḢİṀṄȮṖṘṠṪẆẊẎŻȧḃċḋėḟġḣṁṅȯṗṙṡṫẇẋẏż"},
    {0x0308, "AEHIOUWXYaehiotuwxy", u"ÄËḦÏÖÜẄẌŸäëḧïöẗüẅẍÿ"},
    {0x0308, "AEHIOUWXYaehiotuwxy", u"ÄËḦÏÖÜẄẌŸäëḧïöẗüẅẍÿ"},
    {0x030A, "AUauwy", u"ÅŮåůẘẙ"},
    {0x0327, "CDEGHKLNRSTcdeghklnrst", u"ÇḐȨĢḨĶĻŅŖŞŢçḑȩģḩķļņŗşţ"},
    {0, "", u""},
    {0x030B, "OUou", u"ŐŰőű"},
    {0x0328, "AEIOUaeiou", u"ĄĘĮǪŲąęįǫų"},
    {0x030C, "ACDEGHIKLNORSTUZacdeghijklnorstuz", u"ǍČĎĚǦȞǏǨĽŇǑŘŠŤǓŽǎčďěǧȟǐǰǩľňǒřšťǔž"},
};
static_assert(std::size(accents) == 0xCF - 0xC1 + 1);

void put_accented(Utf8Text* writer, const Accent& accent, uint8_t letter) {
    const size_t at = accent.letters.find(static_cast<char>(letter));
    if (at != std::string_view::npos) {
        append_utf8(writer, accent.composed[at]);
        return;
    }
    append_utf8(writer, letter);
    if (accent.combining != 0) {
        append_utf8(writer, accent.combining);
    }
}

void put_iso6937(Utf8Text* writer, Bytes text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const uint8_t byte = text[i];
        if (byte < 0xA0) {
            put(writer, byte);
        } else if (byte < 0xC0 || byte >= 0xD0) {
            const char16_t c = byte < 0xC0 ? iso6937_a0[byte - 0xA0] : iso6937_d0[byte - 0xD0];
            if (c != 0) {
                append_utf8(writer, c);
            }
        } else if (byte > 0xC0 && is_ascii_letter(byte_at(text, i + 1))) {
            put_accented(writer, accents[byte - 0xC1], text[++i]);
        } // else nothing for the accent to stand on
    }
}

void put_iso8859(Utf8Text* writer, Bytes text, uint32_t part) {
    for (const uint8_t byte : text) {
        put(writer, iso8859_character(part, byte));
    }
}

void put_ucs2(Utf8Text* writer, Bytes text) {
    for (size_t i = 0; i + 1 < text.size(); i += 2) {
        put(writer, ReadBE16(text.data() + i));
    }
}

void put_pairs(Utf8Text* writer, Bytes text, uint32_t (*character)(uint8_t row, uint8_t cell)) {
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0xA1) {
            put(writer, text[i]);
        } else if (i + 1 < text.size()) {
            append_utf8(writer, character(text[i], text[i + 1]));
            ++i;
        }
    }
}

void put_checked_utf8(Utf8Text* writer, Bytes text) {
    std::string_view rest(reinterpret_cast<const char*>(text.data()), text.size());
    while (!rest.empty()) {
        const uint32_t character = take_utf8(&rest);
        put(writer, character != no_character ? character : replacement_character);
    }
}

// Behind the selector 10: two bytes that number a part of ISO/IEC 8859 (table A.4).
void put_selected_iso8859(Utf8Text* writer, Bytes text) {
    const uint32_t part = text.size() >= 2 ? ReadBE16(text.data()) : 0;
    if (part >= 1 && part <= 15 && part != 12) {
        put_iso8859(writer, text.subspan(2), part);
    }
}

} // namespace

size_t dvb_to_utf8(Bytes text, DvbDefault default_table, char* out, size_t size) {
    out[0] = '\0';
    Utf8Text writer = {out, size};
    const uint8_t selector = byte_at(text, 0);
    const Bytes rest = text.subspan(text.empty() ? 0 : 1);
    if (selector >= 0x20) {
        if (default_table == DvbDefault::iso8859_15) {
            put_iso8859(&writer, text, 15);
        } else {
            put_iso6937(&writer, text);
        }
        return tidy_blanks(out);
    }
    switch (selector) { // tables A.3 and A.4
    case 0x01:
    case 0x02:
    case 0x03:
    case 0x04:
    case 0x05:
    case 0x06:
    case 0x07:
    case 0x09:
    case 0x0A:
    case 0x0B:
        put_iso8859(&writer, rest, selector + 4U);
        break;
    case 0x10:
        put_selected_iso8859(&writer, rest);
        break;
    case 0x11:
    case 0x14: // the Big5 subset of ISO/IEC 10646
        put_ucs2(&writer, rest);
        break;
    case 0x12:
        put_pairs(&writer, rest, ksx1001_character);
        break;
    case 0x13:
        put_pairs(&writer, rest, gb2312_character);
        break;
    case 0x15:
        put_checked_utf8(&writer, rest);
        break;
    default: // reserved, or the compressed texts of 1F
        break;
    }
    return tidy_blanks(out);
}

bool looks_like_iso8859_15(Bytes text) {
    if (byte_at(text, 0) < 0x20) {
        return false;
    }
    for (size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] >= 0xE0 && text[i] <= 0xEF && is_ascii_letter(text[i - 1]) &&
            text[i + 1] >= 'a' && text[i + 1] <= 'z') {
            return true;
        }
    }
    return false;
}

} // namespace zat
