// The printf of text.h. The C library's own is no choice: its decimal point follows the locale that
// the host has set, and its rounding of ties and its NaN differ between platforms.
#include "common/text/fixed_decimal.h"
#include "common/text/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace zat {

namespace {

struct Writer {
    char* text;
    size_t size;
    size_t length; // of the whole text, kept or not
};

void put(Writer* out, std::string_view piece) {
    if (out->length < out->size) {
        std::memcpy(
            out->text + out->length, piece.data(), std::min(piece.size(), out->size - out->length));
    }
    out->length += piece.size();
}

void put_character(Writer* out, char c) {
    if (out->length < out->size) {
        out->text[out->length] = c;
    }
    ++out->length;
}

void put_repeated(Writer* out, char c, int count) {
    for (int i = 0; i < count; ++i) {
        put_character(out, c);
    }
}

struct Conversion {
    bool zeros = false; // pad a number with zeros
    int width = 0;
    int precision = -1;
    int longs = 0; // the length modifier: 0 for none and h, 1 l, 2 ll and j, 3 z
    char type = '\0';
};

int parse_number(const char** at) {
    int value = 0;
    while (**at >= '0' && **at <= '9') {
        value = std::min(value * 10 + (**at - '0'), static_cast<int>(line_size));
        ++*at;
    }
    return value;
}

// `*at` stands behind the '%' and is moved behind the conversion.
Conversion parse_conversion(const char** at) {
    Conversion conversion;
    for (; **at == '0'; ++*at) {
        conversion.zeros = true;
    }
    conversion.width = parse_number(at);
    if (**at == '.') {
        ++*at;
        conversion.precision = parse_number(at);
    }
    for (;; ++*at) {
        if (**at == 'l') {
            ++conversion.longs;
        } else if (**at == 'j') {
            conversion.longs = 2;
        } else if (**at == 'z') {
            conversion.longs = 3;
        } else if (**at != 'h') {
            break;
        }
    }
    conversion.type = **at;
    if (conversion.type != '\0') {
        ++*at;
    }
    return conversion;
}

// `digits` may begin with '-'.
void put_number(Writer* out, const Conversion& conversion, std::string_view digits) {
    const bool negative = digits.starts_with('-');
    digits.remove_prefix(negative ? 1 : 0);
    const bool integer = conversion.type != 'f';
    const int wanted = integer ? std::max(conversion.precision, 0) : 0;
    int zeros = std::max(wanted - static_cast<int>(digits.size()), 0);
    const int missing =
        conversion.width - zeros - static_cast<int>(digits.size()) - (negative ? 1 : 0);
    // As in C, a precision switches the zero flag off for integers.
    if (conversion.zeros && (!integer || conversion.precision < 0)) {
        zeros += std::max(missing, 0);
    } else {
        put_repeated(out, ' ', missing);
    }
    if (negative) {
        put_character(out, '-');
    }
    put_repeated(out, '0', zeros);
    put(out, digits);
}

int64_t signed_argument(const Conversion& conversion, va_list* arguments) {
    switch (conversion.longs) {
    case 0:
        return va_arg(*arguments, int);
    case 1:
        return va_arg(*arguments, long);
    case 2:
        return va_arg(*arguments, long long);
    default:
        return va_arg(*arguments, ptrdiff_t);
    }
}

uint64_t unsigned_argument(const Conversion& conversion, va_list* arguments) {
    switch (conversion.longs) {
    case 0:
        return va_arg(*arguments, unsigned);
    case 1:
        return va_arg(*arguments, unsigned long);
    case 2:
        return va_arg(*arguments, unsigned long long);
    default:
        return va_arg(*arguments, size_t);
    }
}

void put_double(Writer* out, const Conversion& conversion, double value) {
    if (!std::isfinite(value)) {
        // The sign of a NaN says nothing and differs between processors.
        Conversion with_blanks = conversion; // words are not padded with zeros
        with_blanks.zeros = false;
        put_number(out, with_blanks, std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf");
        return;
    }
    FixedDecimalText digits;
    const int places =
        conversion.precision < 0 ? 6 : std::min(conversion.precision, fixed_decimal_places);
    put_number(out, conversion, fixed_decimal(value, places, &digits));
}

void put_string(Writer* out, const Conversion& conversion, const char* text) {
    const size_t limit =
        conversion.precision < 0 ? SIZE_MAX : static_cast<size_t>(conversion.precision);
    const std::string_view piece =
        limit == SIZE_MAX ? std::string_view(text) : bounded_text(text, limit);
    put_repeated(out, ' ', conversion.width - static_cast<int>(std::min(piece.size(), line_size)));
    put(out, piece);
}

void put_conversion(Writer* out, const Conversion& conversion, va_list* arguments) {
    char digits[32];
    std::to_chars_result end{};
    switch (conversion.type) {
    case 'd':
    case 'i':
        end = std::to_chars(digits, digits + sizeof digits, signed_argument(conversion, arguments));
        break;
    case 'u':
        end =
            std::to_chars(digits, digits + sizeof digits, unsigned_argument(conversion, arguments));
        break;
    case 'x':
    case 'X':
        end = std::to_chars(
            digits, digits + sizeof digits, unsigned_argument(conversion, arguments), 16);
        break;
    case 'c':
        put_character(out, static_cast<char>(va_arg(*arguments, int)));
        return;
    case 's':
        put_string(out, conversion, va_arg(*arguments, const char*));
        return;
    case 'f':
        put_double(out, conversion, va_arg(*arguments, double));
        return;
    default: // "%%"
        if (conversion.type != '\0') {
            put_character(out, conversion.type);
        }
        return;
    }
    if (conversion.type == 'X') {
        std::transform(digits, end.ptr, digits, ascii_upper);
    }
    put_number(out, conversion, {digits, static_cast<size_t>(end.ptr - digits)});
}

} // namespace

size_t format_text_v(char* text, size_t size, const char* format, va_list arguments) {
    Writer out{text, size, 0};
    va_list rest; // a va_list that can be handed on by address on every platform
    va_copy(rest, arguments);
    while (*format != '\0') {
        if (*format == '%') {
            ++format;
            put_conversion(&out, parse_conversion(&format), &rest);
        } else { // mostly a few between conversions
            put_character(&out, *format++);
        }
    }
    va_end(rest);
    text[out.length < size ? out.length : whole_characters(text, size - 1)] = '\0';
    return out.length;
}

size_t format_text(char* out, size_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const size_t length = format_text_v(out, size, format, arguments);
    va_end(arguments);
    return length;
}

} // namespace zat
