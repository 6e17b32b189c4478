// SPDX-License-Identifier: MIT
#include "symmetry/remaining_places.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <set>

namespace korvalite::core {
namespace {

TEST(RemainingPlaces, EmptySetHasNone) {
    RemainingPlaces places(0);
    EXPECT_EQ(places.atOrBelow(-1), -1);
}

TEST(RemainingPlaces, FindsThePlaceItselfUntilItIsRemoved) {
    RemainingPlaces places(3);
    EXPECT_EQ(places.atOrBelow(2), 2);
    places.remove(2);
    EXPECT_EQ(places.atOrBelow(2), 1);
    places.remove(0);
    places.remove(1);
    EXPECT_EQ(places.atOrBelow(2), -1);
}

TEST(RemainingPlaces, AgreesWithAnOrderedSetWhateverTheOrderOfRemoval) {
    constexpr std::int32_t kCount = 500;
    std::mt19937 random(29);
    std::uniform_int_distribution<std::int32_t> anyPlace(0, kCount - 1);
    RemainingPlaces places(kCount);
    std::set<std::int32_t> expected;
    for (std::int32_t place = 0; place < kCount; ++place)
        expected.insert(place);
    for (int round = 0; round < 3000; ++round) {
        const std::int32_t gone = anyPlace(random);
        places.remove(gone);  // removing twice changes nothing
        expected.erase(gone);
        const std::int32_t from = anyPlace(random);
        const auto above = expected.upper_bound(from);
        ASSERT_EQ(places.atOrBelow(from), above == expected.begin() ? -1 : *std::prev(above));
    }
}

}  // namespace
}  // namespace korvalite::core
