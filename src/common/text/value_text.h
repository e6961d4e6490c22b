// Values as the report shows them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zat {

constexpr size_t value_text_size = 32;

// The decimal value with "," every three digits from the right: 1234567 gives 1,234,567.
void FormatGroupedSize(uint64_t value, char (&out)[value_text_size]);

// Hours, minutes, seconds and milliseconds: 3725.5 gives 1:02:05.500. Returns 1 without writing for
// a time that is negative, not finite or of 2^31 seconds or more.
//
// The milliseconds are the first three decimals of the fraction rounded to six, so 59.9999996 gives
// 0:00:59.000.
int FormatPlayTime(double seconds, char (&out)[value_text_size]);

} // namespace zat
