#include "common/text/fixed_decimal.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace zat {

namespace {

// The largest double times 10^40 has 1157 bits.
constexpr int most_limbs = 38;
constexpr int limb_bits = 32;

// A natural number, the lowest limb first; no leading zeros.
struct Natural {
    uint32_t limbs[most_limbs];
    int count;
};

void drop_leading_zeros(Natural* number) {
    while (number->count > 0 && number->limbs[number->count - 1] == 0) {
        --number->count;
    }
}

Natural natural(uint64_t value) {
    Natural number;
    number.limbs[0] = static_cast<uint32_t>(value);
    number.limbs[1] = static_cast<uint32_t>(value >> limb_bits);
    number.count = 2;
    drop_leading_zeros(&number);
    return number;
}

void multiply(Natural* number, uint32_t factor) {
    uint64_t carry = 0;
    for (int i = 0; i < number->count; ++i) {
        carry += uint64_t{number->limbs[i]} * factor;
        number->limbs[i] = static_cast<uint32_t>(carry);
        carry >>= limb_bits;
    }
    if (carry != 0) {
        number->limbs[number->count++] = static_cast<uint32_t>(carry);
    }
}

void multiply_by_power_of_5(Natural* number, int exponent) {
    constexpr int step = 13; // the largest power of 5 in a limb
    constexpr uint32_t powers[step + 1] = {1, 5, 25, 125, 625, 3125, 15625, 78125, 390625, 1953125,
        9765625, 48828125, 244140625, 1220703125};
    for (; exponent > step; exponent -= step) {
        multiply(number, powers[step]);
    }
    multiply(number, powers[exponent]);
}

void shift_left(Natural* number, int bits) {
    const int limbs = bits / limb_bits;
    multiply(number, uint32_t{1} << (bits % limb_bits));
    std::copy_backward(
        number->limbs, number->limbs + number->count, number->limbs + number->count + limbs);
    std::fill_n(number->limbs, limbs, 0);
    number->count += limbs;
}

bool bit_at(const Natural& number, int bit) {
    const int limb = bit / limb_bits;
    return limb < number.count && ((number.limbs[limb] >> (bit % limb_bits)) & 1) != 0;
}

bool any_bit_below(const Natural& number, int bit) {
    const int limb = bit / limb_bits;
    if (limb >= number.count) {
        return number.count > 0;
    }
    const uint32_t mask = (uint32_t{1} << (bit % limb_bits)) - 1;
    return (number.limbs[limb] & mask) != 0 ||
           std::any_of(number.limbs, number.limbs + limb, [](uint32_t low) { return low != 0; });
}

// Divides by 2^bits (at least 1), ties to even.
void shift_right(Natural* number, int bits) {
    const bool up =
        bit_at(*number, bits - 1) && (bit_at(*number, bits) || any_bit_below(*number, bits - 1));
    const int limbs = std::min(bits / limb_bits, number->count);
    const int rest = bits % limb_bits;
    number->count -= limbs;
    for (int i = 0; i < number->count; ++i) {
        const uint64_t high = i + 1 < number->count ? number->limbs[i + limbs + 1] : 0;
        const uint64_t both = high << limb_bits | number->limbs[i + limbs];
        number->limbs[i] = static_cast<uint32_t>(both >> rest);
    }
    drop_leading_zeros(number);
    for (int i = 0; up; ++i) {
        if (i == number->count) {
            number->limbs[number->count++] = 0;
        }
        if (++number->limbs[i] != 0) {
            break;
        }
    }
}

// Returns the remainder.
uint32_t divide(Natural* number, uint32_t divisor) {
    uint64_t rest = 0;
    for (int i = number->count; i-- > 0;) {
        rest = rest << limb_bits | number->limbs[i];
        number->limbs[i] = static_cast<uint32_t>(rest / divisor);
        rest %= divisor;
    }
    drop_leading_zeros(number);
    return static_cast<uint32_t>(rest);
}

// value * 10^places, rounded to a natural number; the sign is left out.
Natural scaled(double value, int places) {
    constexpr int fraction_bits = 52; // of binary64, IEEE 754-2019, 3.4
    constexpr int bias = 1023;
    const auto bits = std::bit_cast<uint64_t>(value);
    const uint64_t fraction = bits & ((uint64_t{1} << fraction_bits) - 1);
    const int exponent = static_cast<int>(bits >> fraction_bits & 0x7FF);
    Natural number = natural(exponent == 0 ? fraction : fraction | uint64_t{1} << fraction_bits);
    multiply_by_power_of_5(&number, places);
    const int shift = std::max(exponent, 1) - bias - fraction_bits + places;
    if (shift < 0) {
        shift_right(&number, -shift);
    } else if (number.count > 0) {
        shift_left(&number, shift);
    }
    return number;
}

} // namespace

std::string_view fixed_decimal(double value, int places, FixedDecimalText* text) {
    constexpr uint32_t group = 1'000'000'000;
    constexpr int group_digits = 9;
    Natural number = scaled(value, places);
    // From the last digit to the first, at least one before the point.
    char* const end = text->data() + text->size();
    char* start = end;
    for (int digits = 0; number.count > 0 || digits <= places;) {
        uint32_t low = divide(&number, group);
        for (int i = 0; i < group_digits && (low != 0 || number.count > 0 || digits <= places);
             ++i) {
            *--start = static_cast<char>('0' + low % 10);
            low /= 10;
            if (++digits == places) {
                *--start = '.';
            }
        }
    }
    if ((std::bit_cast<uint64_t>(value) >> 63) != 0) {
        *--start = '-';
    }
    return {start, static_cast<size_t>(end - start)};
}

} // namespace zat
