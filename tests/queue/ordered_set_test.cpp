// SPDX-License-Identifier: MIT
#include "queue/ordered_set.h"

#include "support/random.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kDenormal = std::numeric_limits<float>::denorm_min();

using Order = std::vector<std::int32_t>;

Order allOf(const OrderedSet& set) {
    Order order;
    EXPECT_EQ(set.firstAccepted([&](std::int32_t vertex) {
        order.push_back(vertex);
        return false;
    }),
              -1);
    return order;
}

TEST(OrderedSet, IsEmptyBeforeAnInsertAndAfterTheLastErase) {
    OrderedSet set;
    EXPECT_TRUE(set.empty());
    EXPECT_TRUE(allOf(set).empty());
    set.insert(3, 1.0F);
    EXPECT_FALSE(set.empty());
    EXPECT_EQ(set.first(), 3);
    set.erase(3, 1.0F);
    EXPECT_TRUE(set.empty());
    EXPECT_TRUE(allOf(set).empty());
}

TEST(OrderedSet, OrdersByCostThenByIndex) {
    OrderedSet set;
    const std::vector<float> costs{1.0F,      -kInfinity, 0.0F,  -0.0F, kDenormal, -kDenormal,
                                   kInfinity, -2.0F,      1e10F, 1.0F,  -1e-30F,   3e38F};
    for (std::size_t v = costs.size(); v-- > 0;)
        set.insert(static_cast<std::int32_t>(v), costs[v]);
    EXPECT_EQ(allOf(set), (Order{1, 7, 10, 5, 2, 3, 4, 0, 9, 8, 11, 6}));
}

TEST(OrderedSet, ErasesAZeroOfEitherSign) {
    OrderedSet set;
    set.insert(0, 0.0F);
    set.insert(1, -0.0F);
    set.erase(0, -0.0F);
    set.erase(1, 0.0F);
    EXPECT_TRUE(set.empty());
}

TEST(OrderedSet, FindsNaNCostsAgain) {
    OrderedSet set;
    for (std::int32_t v = 0; v < 1000; ++v)
        set.insert(v, v % 3 == 0 ? kNaN : static_cast<float>(v % 7));
    for (std::int32_t v = 0; v < 1000; ++v)
        set.erase(v, v % 3 == 0 ? kNaN : static_cast<float>(v % 7));
    EXPECT_TRUE(set.empty());
}

TEST(OrderedSet, FirstAcceptedAsksInOrderUntilOneIsAccepted) {
    OrderedSet set;
    for (std::int32_t v = 0; v < 5000; ++v)
        set.insert(v, static_cast<float>(5000 - v));
    std::int32_t asked = 0;
    const std::int32_t taken = set.firstAccepted([&](std::int32_t vertex) {
        EXPECT_EQ(vertex, 4999 - asked);
        return ++asked == 600;
    });
    EXPECT_EQ(taken, 4400);
    EXPECT_EQ(asked, 600);
}

TEST(OrderedSet, HoldsHundredsOfThousandsInsertedInAnyOrder) {
    constexpr std::int32_t kCount = 300000;
    const auto insertions = {
        +[](std::int32_t i) { return i; }, +[](std::int32_t i) { return kCount - 1 - i; },
        +[](std::int32_t i) { return static_cast<std::int32_t>(std::int64_t{i} * 7919 % kCount); }};
    for (const auto vertexAt : insertions) {
        OrderedSet set;
        for (std::int32_t i = 0; i < kCount; ++i)
            set.insert(vertexAt(i), 0.0F);
        for (std::int32_t v = 0; v < kCount; ++v) {
            ASSERT_EQ(set.first(), v);
            set.erase(v, 0.0F);
        }
        EXPECT_TRUE(set.empty());
    }
}

TEST(OrderedSet, BehavesLikeAPlainSet) {
    test::Random random(7);
    for (const std::uint32_t costCount : {1U, 5U, 100000U}) {
        OrderedSet set;
        std::set<std::pair<float, std::int32_t>> model;
        std::vector<float> costs(3000);
        for (int step = 0; step < 40000; ++step) {
            // Grows for a while, then shrinks for a while.
            const bool grows = step / 5000 % 2 == 0;
            const auto v = static_cast<std::int32_t>(random.below(3000));
            float& cost = costs[static_cast<std::size_t>(v)];
            const bool isIn = model.count({cost, v}) == 1;
            if (isIn && (!grows || random.onceIn(3))) {
                set.erase(v, cost);
                model.erase({cost, v});
            } else if (!isIn && (grows || random.onceIn(3))) {
                cost = static_cast<float>(random.below(costCount)) - 2.0F;
                set.insert(v, cost);
                model.insert({cost, v});
            }
            ASSERT_EQ(set.empty(), model.empty());
            if (!model.empty()) {
                ASSERT_EQ(set.first(), model.begin()->second);
            }
        }
        Order expected;
        for (const auto& [cost, vertex] : model)
            expected.push_back(vertex);
        EXPECT_EQ(allOf(set), expected);
        set.clear();
        EXPECT_TRUE(set.empty());
    }
}

}  // namespace
}  // namespace korvalite::core
