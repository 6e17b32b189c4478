// SPDX-License-Identifier: MIT
//
// A float is mantissa / 2^shift with a mantissa below 2^24. Since 10^9 is below 2^30, mantissa *
// 10^9 is below 2^54, and a single shift with correct rounding gives the billionths: exact in 64
// bits.
#include "formats/nine_decimals.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace korvalite::core {

namespace {

constexpr std::uint64_t kBillion = 1'000'000'000;

// In an IEEE single, the exponent field e means mantissa * 2^(e - kUnitExponent).
constexpr int kFractionBits = 23;
constexpr std::uint32_t kHiddenBit = 1U << kFractionBits;
constexpr int kUnitExponent = 127 + kFractionBits;

// Up to this exponent field the number is below 2^64. Infinity and NaN have the highest field.
constexpr int kLargestExponent = kUnitExponent + 64 - (kFractionBits + 1);

// "00" to "99" in one string.
constexpr auto kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

void putPair(char* out, std::uint32_t pair) {
    std::memcpy(out, &kDigitPairs[std::size_t{pair} * 2], 2);
}

// REQUIRES: number < 10^9.
char* appendNineDigits(char* out, std::uint32_t number) {
    const std::uint32_t low = number % 10'000;
    const std::uint32_t middle = number / 10'000 % 10'000;
    out[0] = static_cast<char>('0' + number / 100'000'000);
    putPair(out + 1, middle / 100);
    putPair(out + 3, middle % 100);
    putPair(out + 5, low / 100);
    putPair(out + 7, low % 100);
    return out + 9;
}

char* appendInteger(char* out, std::uint64_t number) {
    if (number < 10) {
        *out = static_cast<char>('0' + number);
        return out + 1;
    }
    return std::to_chars(out, out + kLongestNineDecimals - 10, number).ptr;
}

// mantissa / 2^shift in billionths; an exact half rounds to even.
// REQUIRES: mantissa < 2^24 and shift > 0.
std::uint64_t billionthsOf(std::uint32_t mantissa, int shift) {
    if (shift > 63) return 0;  // any shift from 55 up gives 0
    const std::uint64_t product = mantissa * kBillion;
    const std::uint64_t odd = (product >> shift) & 1U;
    const std::uint64_t half = std::uint64_t{1} << (shift - 1);
    return (product + half - 1 + odd) >> shift;
}

}  // namespace

char* appendNineDecimals(char* out, float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const auto exponent = static_cast<int>((bits >> kFractionBits) & 0xFFU);
    if (exponent > kLargestExponent) {
        char* const end = out + kLongestNineDecimals;
        return std::to_chars(out, end, double{value}, std::chars_format::fixed, 9).ptr;
    }
    *out = '-';
    out += bits >> 31U;
    const std::uint32_t mantissa = (bits & (kHiddenBit - 1)) | (exponent != 0 ? kHiddenBit : 0);
    // A subnormal number has the same exponent as the smallest normal ones.
    const int shift = kUnitExponent - std::max(exponent, 1);
    std::uint64_t integer = 0;
    std::uint32_t decimals = 0;
    if (shift > 0) {
        const std::uint64_t billionths = billionthsOf(mantissa, shift);
        integer = billionths / kBillion;
        decimals = static_cast<std::uint32_t>(billionths % kBillion);
    } else {
        integer = std::uint64_t{mantissa} << -shift;
    }
    out = appendInteger(out, integer);
    *out++ = '.';
    return appendNineDigits(out, decimals);
}

}  // namespace korvalite::core
