// SPDX-License-Identifier: MIT
#include "geometry/matrix_inverse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>

namespace korvalite::core {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The method step by step, with the identity carried along in the right half of every row.
template <std::size_t n>
bool invertStepByStep(std::array<double, n * n>& out, const std::array<double, n * n>& in) {
    std::array<std::array<double, 2 * n>, n> storage{};
    std::array<double*, n> r{};
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t c = 0; c < n; ++c)
            storage[i][c] = in[n * i + c];
        storage[i][n + i] = 1.0;
        r[i] = storage[i].data();
    }
    for (std::size_t c = 0; c < n; ++c) {
        for (std::size_t i = n - 1; i > c; --i) {
            if (std::fabs(r[i][c]) > std::fabs(r[i - 1][c])) std::swap(r[i], r[i - 1]);
        }
        if (r[c][c] == 0.0) return false;
        for (std::size_t i = c + 1; i < n; ++i) {
            const double factor = r[i][c] / r[c][c];
            for (std::size_t k = c + 1; k < n; ++k)
                r[i][k] -= factor * r[c][k];
            for (std::size_t k = n; k < 2 * n; ++k) {
                if (r[c][k] != 0.0) r[i][k] -= factor * r[c][k];
            }
        }
    }
    for (std::size_t i = n; i-- > 0;) {
        const double reciprocal = 1.0 / r[i][i];
        for (std::size_t k = n; k < 2 * n; ++k) {
            double value = r[i][k];
            for (std::size_t s = n - 1; s > i; --s)
                value -= r[i][s] * r[s][k];
            r[i][k] = value * reciprocal;
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t c = 0; c < n; ++c)
            out[n * i + c] = r[i][n + c];
    }
    return true;
}

bool invert(std::array<double, 9>& out, const std::array<double, 9>& in) {
    return invert3(out.data(), in.data());
}
bool invert(std::array<double, 16>& out, const std::array<double, 16>& in) {
    return invert4d(out.data(), in.data());
}

/// Compares bit for bit, but any two NaNs are the same.
bool sameBits(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

/// Draws matrices of a flavour that is fixed for each matrix, so that every path is taken often.
template <std::size_t n>
std::array<double, n * n> drawMatrix(std::mt19937& random, int flavour) {
    std::normal_distribution<double> normal;
    std::uniform_int_distribution<int> small(-2, 2);
    std::uniform_int_distribution<int> exponent(-300, 300);
    std::uniform_int_distribution<std::size_t> index(0, n - 1);
    std::uniform_int_distribution<int> oneIn(0, 3);
    constexpr std::array<double, 6> kOdd{kNaN, kInfinity, -kInfinity, -0.0, 1e-320, 1e308};

    std::array<double, n * n> m{};
    for (double& e : m) {
        if (flavour == 0) e = normal(random);
        if (flavour == 1) e = small(random);  // many are singular or tied
        if (flavour == 2) e = std::ldexp(normal(random), exponent(random));
        if (flavour == 3) e = oneIn(random) == 0 ? kOdd[random() % kOdd.size()] : small(random);
        if (flavour == 4) e = normal(random);
    }
    if (flavour == 4) {  // two equal rows
        const std::size_t from = index(random);
        const std::size_t to = index(random);
        for (std::size_t c = 0; c < n; ++c)
            m[n * to + c] = m[n * from + c];
    }
    return m;
}

template <std::size_t n>
void expectSameAsStepByStep() {
    std::mt19937 random(20240611);
    int inverted = 0;
    int refused = 0;
    for (int round = 0; round < 100000; ++round) {
        const std::array<double, n* n> in = drawMatrix<n>(random, round % 5);
        std::array<double, n * n> expected{};
        expected.fill(7.0);
        std::array<double, n* n> actual = expected;
        const bool expectedResult = invertStepByStep<n>(expected, in);
        ASSERT_EQ(invert(actual, in), expectedResult) << "round " << round;
        ++(expectedResult ? inverted : refused);
        for (std::size_t i = 0; i < n * n; ++i) {
            ASSERT_TRUE(sameBits(actual[i], expected[i]))
                << "round " << round << " element " << i << ": " << actual[i] << " instead of "
                << expected[i];
        }
    }
    EXPECT_GT(inverted, 10000);
    EXPECT_GT(refused, 1000);
}

TEST(Invert3, MatchesThePlainMethodBitForBit) {
    expectSameAsStepByStep<3>();
}

TEST(Invert4d, MatchesThePlainMethodBitForBit) {
    expectSameAsStepByStep<4>();
}

template <std::size_t n>
void expectProductWithInverseIsIdentity() {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> element(-1.0, 1.0);
    for (int round = 0; round < 2000; ++round) {
        std::array<double, n * n> in{};
        for (double& e : in)
            e = element(random);
        for (std::size_t i = 0; i < n; ++i)
            in[n * i + i] += 4.0;  // far from singular
        std::array<double, n * n> inverse{};
        ASSERT_TRUE(invert(inverse, in));
        for (std::size_t r = 0; r < n; ++r) {
            for (std::size_t c = 0; c < n; ++c) {
                double sum = 0.0;
                for (std::size_t k = 0; k < n; ++k)
                    sum += in[n * r + k] * inverse[n * k + c];
                ASSERT_NEAR(sum, r == c ? 1.0 : 0.0, 1e-13);
            }
        }
    }
}

TEST(Invert3, ProductWithTheInverseIsTheIdentity) {
    expectProductWithInverseIsIdentity<3>();
}

TEST(Invert4d, ProductWithTheInverseIsTheIdentity) {
    expectProductWithInverseIsIdentity<4>();
}

TEST(Invert3, KnownInverse) {
    const std::array<double, 9> in{2, 0, 0, 0, 0, 4, 1, 8, 0};
    const std::array<double, 9> expected{0.5, 0, 0, -0.0625, 0, 0.125, 0, 0.25, 0};
    std::array<double, 9> out{};
    ASSERT_TRUE(invert(out, in));
    EXPECT_EQ(out, expected);
}

TEST(Invert4d, KnownInverse) {
    const std::array<double, 16> in{1, 0, 0, 0, 0, 0, 2, 0, 0, 4, 0, 0, 3, 5, 7, 1};
    const std::array<double, 16> expected{1, 0,   0, 0, 0,  0,    0.25,  0,
                                          0, 0.5, 0, 0, -3, -3.5, -1.25, 1};
    std::array<double, 16> out{};
    ASSERT_TRUE(invert(out, in));
    EXPECT_EQ(out, expected);
}

TEST(Invert3, TwoEqualRowsFailAndKeepTheResult) {
    std::array<double, 9> out{};
    out.fill(7.0);
    const std::array<double, 9> before = out;
    EXPECT_FALSE(invert(out, {1, 2, 3, 4, 5, 6, 1, 2, 3}));
    EXPECT_EQ(out, before);
}

TEST(Invert4d, TwoEqualRowsFailAndKeepTheResult) {
    std::array<double, 16> out{};
    out.fill(7.0);
    const std::array<double, 16> before = out;
    EXPECT_FALSE(invert(out, {1, 2, 3, 4, 0, 1, 0, 0, 1, 2, 3, 4, 0, 0, 0, 1}));
    EXPECT_EQ(out, before);
}

TEST(Invert4f, TwoEqualRowsFailAndKeepTheResult) {
    const std::array<float, 16> in{1, 2, 3, 4, 0, 1, 0, 0, 1, 2, 3, 4, 0, 0, 0, 1};
    std::array<float, 16> out{};
    out.fill(7.0F);
    const std::array<float, 16> before = out;
    EXPECT_FALSE(invert4f(out.data(), in.data()));
    EXPECT_EQ(out, before);
}

TEST(Invert3, PivotOf1e300thInverts) {
    std::array<double, 9> out{};
    ASSERT_TRUE(invert(out, {1e-300, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(out[0], 1.0 / 1e-300);
    ASSERT_TRUE(invert(out, {1, 0, 0, 0, 1, 0, 0, 0, 1e-300}));
    EXPECT_EQ(out[8], 1.0 / 1e-300);
}

TEST(Invert4d, PivotOf1e300thInverts) {
    std::array<double, 16> out{};
    ASSERT_TRUE(invert(out, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1e-300, 0, 0, 0, 0, 1}));
    EXPECT_EQ(out[10], 1.0 / 1e-300);
}

// With rows r2 = (2, ...) and r3 = (-2, ...), a tie keeps r2 above r3, and r2 becomes the pivot. If
// r3 moved up, it would be the pivot, and the rounding would differ.
TEST(Invert4d, TieInColumnZeroKeepsTheUpperRow) {
    const std::array<double, 16> in{0.1, 1.7, 0.3, 0.9, 0.7, 0.2,  1.1, 0.6,
                                    2,   0.3, 0.7, 1.3, -2,  0.11, 0.4, 0.7};
    std::array<double, 16> swappedByHand = in;  // as if a tie swapped the rows
    std::swap_ranges(swappedByHand.begin() + 8, swappedByHand.begin() + 12,
                     swappedByHand.begin() + 12);
    std::array<double, 16> out{};
    std::array<double, 16> expected{};
    std::array<double, 16> other{};
    ASSERT_TRUE(invert(out, in));
    ASSERT_TRUE(invertStepByStep<4>(expected, in));
    ASSERT_TRUE(invert(other, swappedByHand));
    EXPECT_EQ(out, expected);
    for (std::size_t r = 0; r < 4; ++r)
        std::swap(other[4 * r + 2], other[4 * r + 3]);
    EXPECT_NE(out, other) << "the result must depend on the pivot in this example";
}

TEST(Invert3, NaNInTheLastPivotPasses) {
    std::array<double, 9> out{};
    ASSERT_TRUE(invert(out, {1, 0, 0, 0, 1, 0, 0, 0, kNaN}));
    EXPECT_TRUE(std::isnan(out[8]));
}

TEST(Invert3, ResultMayBeTheOperand) {
    std::array<double, 9> m{0, 3, 1, 5, 1, 0, 2, 2, 9};
    std::array<double, 9> expected{};
    ASSERT_TRUE(invert(expected, m));
    ASSERT_TRUE(invert(m, m));
    EXPECT_EQ(m, expected);
}

TEST(Invert4d, ResultMayBeTheOperand) {
    std::array<double, 16> m{0, 3, 1, 4, 5, 1, 0, 2, 2, 2, 9, 1, 1, 7, 3, 3};
    std::array<double, 16> expected{};
    ASSERT_TRUE(invert(expected, m));
    ASSERT_TRUE(invert(m, m));
    EXPECT_EQ(m, expected);
}

TEST(Invert4f, WorksInDoubleAndNarrowsLast) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> element(-2.0F, 2.0F);
    for (int round = 0; round < 1000; ++round) {
        std::array<float, 16> in{};
        std::array<double, 16> wide{};
        for (std::size_t i = 0; i < 16; ++i)
            wide[i] = in[i] = element(random);
        std::array<float, 16> out{};
        std::array<double, 16> expected{};
        ASSERT_TRUE(invert4f(out.data(), in.data()));
        ASSERT_TRUE(invertStepByStep<4>(expected, wide));
        for (std::size_t i = 0; i < 16; ++i)
            ASSERT_EQ(out[i], static_cast<float>(expected[i]));
    }
}

}  // namespace
}  // namespace korvalite::core
