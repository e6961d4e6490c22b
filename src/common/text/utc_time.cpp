#include "common/text/utc_time.h"

#include "common/text/text.h"

namespace zat {

void format_utc(int64_t unix_seconds, char (&out)[utc_text_size]) {
    constexpr int64_t day = 86400;
    constexpr int64_t first = -62'135'596'800; // 0001-01-01
    constexpr int64_t last = 253'402'300'799;  // 9999-12-31
    out[0] = '\0';
    if (unix_seconds < first || unix_seconds > last) {
        return;
    }
    // The proleptic Gregorian calendar, its years counted from March on: a leap day ends its year.
    constexpr int64_t days_from_march_of_0 = 719'468;
    constexpr int64_t days_of_400_years = 146'097;
    int64_t days = unix_seconds / day;
    int64_t seconds = unix_seconds % day;
    if (seconds < 0) {
        seconds += day;
        --days;
    }
    days += days_from_march_of_0;
    const int64_t era = days / days_of_400_years;
    const int64_t day_of_era = days % days_of_400_years;
    const int64_t year_of_era =
        (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146'096) / 365;
    const int64_t day_of_year =
        day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const int64_t month_from_march = (5 * day_of_year + 2) / 153;
    const int64_t month = month_from_march < 10 ? month_from_march + 3 : month_from_march - 9;
    const int64_t year = era * 400 + year_of_era + (month <= 2 ? 1 : 0);
    format_text(out, sizeof out, "%04d-%02d-%02dT%02d:%02d:%02dZ", static_cast<int>(year),
        static_cast<int>(month),
        static_cast<int>(day_of_year - (153 * month_from_march + 2) / 5 + 1),
        static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
        static_cast<int>(seconds % 60));
}

} // namespace zat
