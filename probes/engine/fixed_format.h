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

// Writes exactly `count` digits of `value` ending just before `end`. 32-bit
// arithmetic where the value allows: its multiplications are quicker.
template <typename T>
inline void put_digits_backwards(char* end, T value, int count) {
    while (count >= 2) {
        const T pair = value % 100;
        value /= 100;
        end -= 2;
        std::memcpy(end, digit_pairs + pair * 2, 2);
        count -= 2;
    }
    if (count == 1) {
        *--end = static_cast<char>('0' + value % 10);
    }
}

inline void put_pair(char* out, uint32_t pair) {
    std::memcpy(out, digit_pairs + pair * 2, 2);
}

// Exactly nine digits of a value below 10^9. The halves don't wait on each
// other, so their divisions overlap, where a loop would do them one by one.
inline void put_nine_digits(char* out, uint32_t value) {
    const uint32_t high = value / 100000;
    const uint32_t low = value % 100000;
    const uint32_t rest = low % 10000;
    put_pair(out, high / 100);
    put_pair(out + 2, high % 100);
    out[4] = static_cast<char>('0' + low / 10000);
    put_pair(out + 5, rest / 100);
    put_pair(out + 7, rest % 100);
}

// Exactly six digits of a value below 10^6.
inline void put_six_digits(char* out, uint32_t value) {
    const uint32_t low = value % 10000;
    put_pair(out, value / 10000);
    put_pair(out + 2, low / 100);
    put_pair(out + 4, low % 100);
}

}  // namespace detail

inline char* put_uint(char* out, uint64_t value) {
    const int count = detail::digit_count(value);
    if (value <= UINT32_MAX) {
        detail::put_digits_backwards(out + count, static_cast<uint32_t>(value), count);
    } else {
        detail::put_digits_backwards(out + count, value, count);
    }
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
    const uint64_t fraction = magnitude % scale;
    if constexpr (decimals == 9) {
        detail::put_nine_digits(out, static_cast<uint32_t>(fraction));
    } else if constexpr (decimals == 6) {
        detail::put_six_digits(out, static_cast<uint32_t>(fraction));
    } else {
        detail::put_digits_backwards(out + decimals, fraction, decimals);
    }
    return out + decimals;
}

// The same with the number of decimals chosen at run time (0 to 18).
inline char* put_fixed(char* out, uint64_t whole, uint64_t fraction, int decimals) {
    out = put_uint(out, whole);
    if (decimals > 0) {
        *out++ = '.';
        if (decimals == 6 && fraction < 1000000) {
            detail::put_six_digits(out, static_cast<uint32_t>(fraction));
        } else if (fraction <= UINT32_MAX) {
            detail::put_digits_backwards(out + decimals, static_cast<uint32_t>(fraction), decimals);
        } else {
            detail::put_digits_backwards(out + decimals, fraction, decimals);
        }
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
