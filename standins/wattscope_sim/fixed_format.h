#pragma once

// Decimal text of whole numbers and of fixed-point values, written straight
// into a buffer. A capture row holds seven numbers and is written millions of
// times a second, so this avoids general floating-point formatting: values
// are kept as scaled integers (nA, uV, nW, nJ) and only their digits are made.

#include <cstdint>
#include <cstring>

namespace standin::sim {

namespace detail {

inline constexpr char digit_pairs[201] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

inline constexpr uint64_t powers_of_ten[20] = {1ULL,
                                               10ULL,
                                               100ULL,
                                               1000ULL,
                                               10000ULL,
                                               100000ULL,
                                               1000000ULL,
                                               10000000ULL,
                                               100000000ULL,
                                               1000000000ULL,
                                               10000000000ULL,
                                               100000000000ULL,
                                               1000000000000ULL,
                                               10000000000000ULL,
                                               100000000000000ULL,
                                               1000000000000000ULL,
                                               10000000000000000ULL,
                                               100000000000000000ULL,
                                               1000000000000000000ULL,
                                               10000000000000000000ULL};

inline int digit_count(uint64_t value) {
    // log10 from the bit width, corrected by one comparison; "| 1" gives 0
    // its one digit and changes no other count.
    value |= 1;
    const int bits = 64 - __builtin_clzll(value);
    const int guess = (bits * 1233) >> 12;
    return guess + (value >= powers_of_ten[guess] ? 1 : 0);
}

// Writes exactly `count` digits of `value` ending just before `end`.
inline void put_digits_backwards(char* end, uint64_t value, int count) {
    while (count >= 2) {
        const uint64_t pair = value % 100;
        value /= 100;
        end -= 2;
        std::memcpy(end, digit_pairs + pair * 2, 2);
        count -= 2;
    }
    if (count == 1) {
        *--end = static_cast<char>('0' + value % 10);
    }
}

}  // namespace detail

inline char* put_uint(char* out, uint64_t value) {
    const int count = detail::digit_count(value);
    detail::put_digits_backwards(out + count, value, count);
    return out + count;
}

// `value` in units of 10^-decimals, as "<whole>.<decimals digits>".
template <int decimals>
inline char* put_fixed(char* out, int64_t value) {
    static_assert(decimals > 0 && decimals < 19);
    constexpr uint64_t scale = detail::powers_of_ten[decimals];
    uint64_t magnitude = static_cast<uint64_t>(value);
    if (value < 0) {
        *out++ = '-';
        magnitude = 0 - magnitude;
    }
    out = put_uint(out, magnitude / scale);
    *out++ = '.';
    detail::put_digits_backwards(out + decimals, magnitude % scale, decimals);
    return out + decimals;
}

// The same with the number of decimals chosen at run time (0 to 18).
inline char* put_fixed(char* out, uint64_t whole, uint64_t fraction, int decimals) {
    out = put_uint(out, whole);
    if (decimals > 0) {
        *out++ = '.';
        detail::put_digits_backwards(out + decimals, fraction, decimals);
        out += decimals;
    }
    return out;
}

// "0x" and at least eight lower-case hex digits.
inline char* put_address(char* out, uint64_t value) {
    int count = 8;
    while (count < 16 && (value >> (count * 4)) != 0) {
        ++count;
    }
    *out++ = '0';
    *out++ = 'x';
    for (int i = count - 1; i >= 0; --i) {
        *out++ = "0123456789abcdef"[(value >> (i * 4)) & 0xF];
    }
    return out;
}

}  // namespace standin::sim
