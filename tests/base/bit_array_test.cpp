// SPDX-License-Identifier: MIT
#include "base/bit_array.h"

#include "support/random.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace korvalite::core {
namespace {

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

std::vector<bool> bitsOf(const BitArray& bits) {
    std::vector<bool> result;
    for (std::int32_t i = 0; i < bits.count(); ++i)
        result.push_back(bits.Test(i));
    return result;
}

TEST(BitArray, NineBitsTakeTwoBytesAndBitNineTestsFalse) {
    BitArray bits;
    bits.Resize(9, true);
    EXPECT_EQ(bits.count(), 9);
    EXPECT_EQ(bits.byteCount(), 2U);
    EXPECT_TRUE(bits.Test(8));
    // The spare bit exists and is set.
    EXPECT_EQ(bits.data()[1], 0xFF);
    EXPECT_FALSE(bits.Test(9));
    EXPECT_EQ(bits.CountSet(), 9);
}

TEST(BitArray, TestsFalseForEveryIndexOutOfRange) {
    BitArray bits;
    bits.Resize(16, true);
    for (const std::int32_t index : {16, 17, 1000000, kHighest, -1, -8, kLowest}) {
        EXPECT_FALSE(bits.Test(index)) << index;
    }
    EXPECT_FALSE(bits.Test(0xFFFFFFFFU));
    EXPECT_FALSE(bits.Test(0x80000000U));
}

TEST(BitArray, WhenEmptyTestsFalseAndCountsNothing) {
    BitArray bits;
    EXPECT_EQ(bits.count(), 0);
    EXPECT_EQ(bits.byteCount(), 0U);
    EXPECT_EQ(bits.CountSet(), 0);
    for (const std::int32_t index : {0, 1, -1, kHighest, kLowest})
        EXPECT_FALSE(bits.Test(index)) << index;
}

TEST(BitArray, ResizingNothingToNothingKeepsTheEmptyState) {
    BitArray bits;
    bits.Resize(0, true);
    EXPECT_EQ(bits.count(), 0);
    EXPECT_EQ(bits.byteCount(), 0U);
    EXPECT_FALSE(bits.Test(0));
    bits.Reset(0);
    EXPECT_FALSE(bits.Test(0));
}

TEST(BitArray, PacksEightBitsPerByteLowestFirst) {
    BitArray bits;
    bits.Resize(24, false);
    bits.Set(0);
    bits.Set(11);
    bits.Set(23U);
    EXPECT_EQ(bits.data()[0], 0x01);
    EXPECT_EQ(bits.data()[1], 0x08);
    EXPECT_EQ(bits.data()[2], 0x80);
    bits.Clear(11);
    EXPECT_EQ(bits.data()[1], 0x00);
    bits.Assign(12, true);
    bits.Assign(23U, false);
    EXPECT_EQ(bits.data()[1], 0x10);
    EXPECT_EQ(bits.data()[2], 0x00);
}

TEST(BitArray, GrowingKeepsTheOldBitsAndFillsTheNewOnes) {
    for (const bool fill : {false, true}) {
        BitArray bits;
        bits.Resize(11, !fill);
        bits.Assign(3, fill);
        bits.Resize(40, fill);
        EXPECT_EQ(bits.count(), 40);
        for (std::int32_t i = 0; i < 40; ++i) {
            EXPECT_EQ(bits.Test(i), i < 11 && i != 3 ? !fill : fill) << i;
        }
    }
}

TEST(BitArray, GrowingWithinThePartialByteFillsOnlyItsNewBits) {
    BitArray bits;
    bits.Resize(3, false);
    bits.Resize(6, true);
    EXPECT_EQ(bitsOf(bits), (std::vector<bool>{false, false, false, true, true, true}));
    bits.Resize(8, false);
    EXPECT_EQ(bits.CountSet(), 3);
}

TEST(BitArray, ShrinkingKeepsTheBitsBelow) {
    BitArray bits;
    bits.Resize(30, false);
    bits.Set(4);
    bits.Set(20);
    bits.Resize(10, false);
    EXPECT_EQ(bits.CountSet(), 1);
    EXPECT_TRUE(bits.Test(4));
    EXPECT_FALSE(bits.Test(20));
}

TEST(BitArray, ResetClearsEverythingWhateverTheOldSize) {
    for (const std::int32_t before : {0, 5, 8, 64, 100}) {
        for (const std::int32_t after : {0, 1, 8, 9, 70}) {
            BitArray bits;
            bits.Resize(before, true);
            bits.Reset(after);
            EXPECT_EQ(bits.count(), after);
            EXPECT_EQ(bits.CountSet(), 0) << before << " to " << after;
        }
    }
}

TEST(BitArray, AssignCopiesTheBitsAndClearsSpareOnes) {
    BitArray source;
    source.Resize(11, true);  // with five spare bits set
    source.Clear(6);
    BitArray copy;
    copy.Resize(40, true);  // longer than the source
    copy.Assign(source);
    EXPECT_EQ(bitsOf(copy), bitsOf(source));
    EXPECT_EQ(copy.data()[1], 0x07);

    BitArray fresh;
    fresh.Assign(source);
    EXPECT_EQ(bitsOf(fresh), bitsOf(source));
    fresh.Assign(BitArray());
    EXPECT_EQ(fresh.count(), 0);
    EXPECT_FALSE(fresh.Test(0));
}

TEST(BitArray, FreeRestoresTheEmptyState) {
    BitArray bits;
    bits.Resize(100, true);
    bits.Free();
    EXPECT_EQ(bits.count(), 0);
    EXPECT_EQ(bits.CountSet(), 0);
    EXPECT_FALSE(bits.Test(0));
    bits.Resize(12, true);
    EXPECT_EQ(bits.CountSet(), 12);
}

TEST(BitArray, CountSetReadsOnlyTheBitsBelowCount) {
    for (std::int32_t n = 0; n < 70; ++n) {
        BitArray bits;
        bits.Resize(n, true);
        EXPECT_EQ(bits.CountSet(), n);
    }
}

TEST(BitArray, BehavesLikeAVectorOfBools) {
    test::Random random(1);
    BitArray bits;
    std::vector<bool> model;
    for (int step = 0; step < 20000; ++step) {
        if (model.empty() || random.onceIn(100)) {
            const bool fill = random.onceIn(2);
            const auto size = random.below(200);
            bits.Resize(static_cast<std::int32_t>(size), fill);
            model.resize(size, fill);
        } else {
            const auto i = random.below(static_cast<std::uint32_t>(model.size()));
            const bool value = random.onceIn(2);
            bits.Assign(i, value);
            model[i] = value;
        }
        ASSERT_EQ(bitsOf(bits), model) << step;
    }
}

}  // namespace
}  // namespace korvalite::core
