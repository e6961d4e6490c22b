#include "common/text/value_text.h"

#include "common/bytes/numbers.h"
#include "common/text/fixed_decimal.h"
#include "common/text/text.h"

#include <cmath>
#include <cstring>

namespace zat {

void FormatGroupedSize(uint64_t value, char (&out)[value_text_size]) {
    char digits[value_text_size];
    const size_t count = format_text(digits, sizeof digits, "%ju", static_cast<uintmax_t>(value));
    size_t at = 0;
    for (size_t i = 0; i < count; ++i) {
        if (i != 0 && (count - i) % 3 == 0) {
            out[at++] = ',';
        }
        out[at++] = digits[i];
    }
    out[at] = '\0';
}

int FormatPlayTime(double seconds, char (&out)[value_text_size]) {
    if (!(seconds >= 0.0 && seconds < 2147483648.0)) {
        return 1;
    }
    seconds = without_negative_zero(seconds);
    const auto whole = static_cast<int32_t>(seconds);
    const int32_t hours = whole / 3600;
    const int32_t minutes = (whole - hours * 3600) / 60;
    const int32_t rest = whole - hours * 3600 - minutes * 60;
    FixedDecimalText digits;
    const std::string_view fraction = // "0." and six digits, of which three are shown
        fixed_decimal(seconds - (hours * 3600.0 + minutes * 60 + rest), 6, &digits);
    const int milliseconds =
        (fraction[2] - '0') * 100 + (fraction[3] - '0') * 10 + (fraction[4] - '0');
    format_text(out, value_text_size, "%d:%.2d:%.2d.%.3d", hours, minutes, rest, milliseconds);
    return 0;
}

} // namespace zat
