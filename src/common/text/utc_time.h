// Dates of files, for the details.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t utc_text_size = 32; // bytes, as in ZatDetails

// Seconds from the beginnings of other clocks to that of Unix time.
constexpr int64_t unix_seconds_of_1601 = -11'644'473'600;
constexpr int64_t unix_seconds_of_1904 = -2'082'844'800;
constexpr int64_t unix_seconds_of_2001 = 978'307'200;

// Writes seconds since 1970-01-01 as UTC, "2024-02-29T23:55:00Z" (ISO 8601); nothing for a time
// outside the years 1 to 9999.
void format_utc(int64_t unix_seconds, char (&out)[utc_text_size]);

} // namespace zat
