// SPDX-License-Identifier: MIT
#include "korva/batch/schedule.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace korva {
namespace {

/// All that may start now.
std::vector<std::size_t> startAll(Schedule& schedule) {
    std::vector<std::size_t> started;
    while (const std::optional<std::size_t> mesh = schedule.next())
        started.push_back(*mesh);
    return started;
}

using Meshes = std::vector<std::size_t>;

TEST(Schedule, StartsWhatFitsTheBudget) {
    Schedule schedule({4, 4, 2, 1}, 10, 9);
    EXPECT_EQ(startAll(schedule), (Meshes{0, 1, 2}));
    schedule.finish(2);
    EXPECT_EQ(startAll(schedule), (Meshes{3}));
    EXPECT_TRUE(schedule.allStarted());
}

TEST(Schedule, StartsNoMoreAtOnceThanAllowed) {
    Schedule schedule({1, 1, 1}, 10, 2);
    EXPECT_EQ(startAll(schedule), (Meshes{0, 1}));
    schedule.finish(0);
    EXPECT_EQ(startAll(schedule), (Meshes{2}));
}

TEST(Schedule, ASmallMeshDoesNotOvertakeALargeOne) {
    Schedule schedule({6, 8, 1}, 10, 9);
    EXPECT_EQ(startAll(schedule), (Meshes{0}));
    schedule.finish(0);
    EXPECT_EQ(startAll(schedule), (Meshes{1, 2}));
}

TEST(Schedule, AMeshBeyondTheBudgetRunsAlone) {
    Schedule schedule({1, 50, 0}, 10, 9);
    EXPECT_EQ(startAll(schedule), (Meshes{0}));
    schedule.finish(0);
    EXPECT_EQ(startAll(schedule), (Meshes{1}));
    schedule.finish(1);
    EXPECT_EQ(startAll(schedule), (Meshes{2}));
}

TEST(Schedule, NeedsWhoseSumOverflowsDoNotRunTogether) {
    constexpr std::uint64_t kHuge = ~std::uint64_t{0} - 1;
    Schedule schedule({kHuge, kHuge}, kHuge, 9);
    EXPECT_EQ(startAll(schedule), (Meshes{0}));
}

TEST(Schedule, AMeshThatRanOutOfMemoryRunsOnceMoreAlone) {
    Schedule schedule({1, 1, 1}, 10, 2);
    EXPECT_EQ(startAll(schedule), (Meshes{0, 1}));
    EXPECT_TRUE(schedule.finishForLackOfMemory(0));
    EXPECT_FALSE(schedule.allStarted());
    EXPECT_EQ(startAll(schedule), Meshes{}) << "another is running";
    schedule.finish(1);
    EXPECT_EQ(startAll(schedule), (Meshes{0})) << "alone, although two would fit";
    EXPECT_FALSE(schedule.finishForLackOfMemory(0));
    EXPECT_EQ(startAll(schedule), (Meshes{2}));
}

TEST(Schedule, AMeshThatRanOutOfMemoryAloneDoesNotRunAgain) {
    Schedule schedule({1, 1}, 10, 1);
    EXPECT_EQ(startAll(schedule), (Meshes{0}));
    EXPECT_FALSE(schedule.finishForLackOfMemory(0));
    EXPECT_EQ(startAll(schedule), (Meshes{1}));
    EXPECT_FALSE(schedule.finishForLackOfMemory(1));
    EXPECT_TRUE(schedule.allStarted());
}

TEST(Schedule, AnEmptyListHasNothingToStart) {
    Schedule schedule({}, 10, 2);
    EXPECT_TRUE(schedule.allStarted());
    EXPECT_EQ(schedule.next(), std::nullopt);
}

}  // namespace
}  // namespace korva
