// SPDX-License-Identifier: MIT
#include "formats/nine_decimals.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace korvalite::core {
namespace {

constexpr std::uint32_t kSign = 0x80000000U;

std::string nineDecimals(float value) {
    std::array<char, kLongestNineDecimals> text{};
    return {text.data(), appendNineDecimals(text.data(), value)};
}

std::string printed(float value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.9f", double{value});
    return text.data();
}

// Counts the differences, as one expectation for each of millions of numbers would be slow.
class Comparison {
public:
    ~Comparison() { EXPECT_EQ(differences_, 0U) << first_; }
    Comparison() = default;
    Comparison(const Comparison&) = delete;
    Comparison& operator=(const Comparison&) = delete;

    void compare(std::uint32_t bits) {
        const auto value = std::bit_cast<float>(bits);
        char* const end = appendNineDecimals(text_.data(), value);
        *end = '\0';
        std::snprintf(expected_.data(), expected_.size(), "%.9f", double{value});
        ++compared_;
        if (std::string_view(text_.data()) == expected_.data()) return;
        if (differences_++ == 0) first_ = std::string(text_.data()) + " for " + expected_.data();
    }
    void compareBothSigns(std::uint32_t bits) {
        compare(bits & ~kSign);
        compare(bits | kSign);
    }
    std::uint64_t compared() const { return compared_; }

private:
    std::array<char, kLongestNineDecimals + 1> text_{};
    std::array<char, 64> expected_{};
    std::uint64_t compared_ = 0;
    std::uint64_t differences_ = 0;
    std::string first_;
};

TEST(NineDecimals, AlwaysPrintsNine) {
    EXPECT_EQ(nineDecimals(0.0F), "0.000000000");
    EXPECT_EQ(nineDecimals(1.5F), "1.500000000");
    EXPECT_EQ(nineDecimals(-12.25F), "-12.250000000");
    EXPECT_EQ(nineDecimals(0.1F), "0.100000001");
    EXPECT_EQ(nineDecimals(16777217.0F), "16777216.000000000");
}

TEST(NineDecimals, KeepsTheSignOfZero) {
    EXPECT_EQ(nineDecimals(-0.0F), "-0.000000000");
    EXPECT_EQ(nineDecimals(-1e-30F), "-0.000000000");
    EXPECT_EQ(nineDecimals(-std::numeric_limits<float>::denorm_min()), "-0.000000000");
}

TEST(NineDecimals, PrintsNaNAndInfinityByName) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(nineDecimals(infinity), "inf");
    EXPECT_EQ(nineDecimals(-infinity), "-inf");
    EXPECT_EQ(nineDecimals(std::copysign(nan, 1.0F)), "nan");
    EXPECT_EQ(nineDecimals(std::copysign(nan, -1.0F)), "-nan");
}

TEST(NineDecimals, LongestTextFits) {
    const float most = std::numeric_limits<float>::max();
    EXPECT_EQ(nineDecimals(-most), "-340282346638528859811704183484516925440.000000000");
    EXPECT_EQ(nineDecimals(-most).size(), kLongestNineDecimals);
    EXPECT_EQ(nineDecimals(1e38F), printed(1e38F));
}

TEST(NineDecimals, RoundsAnExactHalfToTheEvenDigit) {
    EXPECT_EQ(nineDecimals(0.0009765625F), "0.000976562");
    EXPECT_EQ(nineDecimals(3 * 0.0009765625F), "0.002929688");
    EXPECT_EQ(nineDecimals(7.0009765625F), "7.000976562");
}

TEST(NineDecimals, MatchesPrintfAroundHalfOfTheLastDigit) {
    // 2^-31 is below half a billionth, and 2^-30 is above it.
    EXPECT_EQ(nineDecimals(std::ldexp(1.0F, -31)), "0.000000000");
    EXPECT_EQ(nineDecimals(std::ldexp(1.0F, -30)), "0.000000001");
    Comparison comparison;
    const auto half = std::bit_cast<std::uint32_t>(0.5e-9F);
    for (std::uint32_t bits = half - 1000; bits < half + 1000; ++bits)
        comparison.compareBothSigns(bits);
}

TEST(NineDecimals, MatchesPrintfForEveryExponent) {
    Comparison comparison;
    std::mt19937 random(1);
    for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
        for (std::uint32_t i = 0; i < 24; ++i) {
            const std::uint32_t lowOnes = (1U << i) - 1;
            for (const std::uint32_t fraction : {lowOnes, lowOnes + 1, 0x7FFFFFU - lowOnes})
                comparison.compareBothSigns(exponent << 23U | (fraction & 0x7FFFFFU));
        }
        for (int i = 0; i < 500; ++i)
            comparison.compareBothSigns(exponent << 23U | (random() & 0x7FFFFFU));
    }
    EXPECT_GT(comparison.compared(), 250'000U);
}

// An odd multiple of 2^-10 has ten decimals, and the last is a 5. Floats of all sizes up to 2^14
// include such numbers.
TEST(NineDecimals, MatchesPrintfForExactHalves) {
    Comparison comparison;
    for (std::uint32_t odd = 1; odd < 1U << 24U; odd += odd < 4000 ? 2 : 126)
        comparison.compareBothSigns(
            std::bit_cast<std::uint32_t>(std::ldexp(static_cast<float>(odd), -10)));
    EXPECT_GT(comparison.compared(), 250'000U);
}

TEST(NineDecimals, MatchesPrintfForRandomBits) {
    Comparison comparison;
    std::mt19937 random(2);
    for (int i = 0; i < 1'000'000; ++i)
        comparison.compare(static_cast<std::uint32_t>(random()));
}

// From 2^-24 to 2^24, the usual range of mesh coordinates.
TEST(NineDecimals, MatchesPrintfInASweepOverCoordinates) {
    Comparison comparison;
    const auto first = std::bit_cast<std::uint32_t>(std::ldexp(1.0F, -24));
    const auto last = std::bit_cast<std::uint32_t>(std::ldexp(1.0F, 24));
    for (std::uint32_t bits = first; bits <= last; bits += 499)
        comparison.compare(bits);
    EXPECT_GT(comparison.compared(), 800'000U);
}

}  // namespace
}  // namespace korvalite::core
