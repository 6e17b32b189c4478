// SPDX-License-Identifier: MIT
//
// Picks from a queue in which some or all vertices are held by other threads.
#include "queue/cost_queue.h"

#include "mesh/dmesh.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <set>
#include <vector>

namespace korvalite::core {
namespace {

// Distinct costs over many decades, and a set of vertices that may be picked.
class HeldQueue : public testing::Test {
protected:
    static constexpr std::int32_t kVertices = 500;

    HeldQueue() {
        std::vector<std::int32_t> ranks(kVertices);
        std::iota(ranks.begin(), ranks.end(), 0);
        for (std::size_t i = ranks.size(); i > 1; --i)
            std::swap(ranks[i - 1], ranks[random_.below(static_cast<std::uint32_t>(i))]);
        for (const std::int32_t rank : ranks) {
            mesh_.vertices.emplace_back();
            mesh_.vertices.back().cost = 1e-9F * std::pow(10.0F, static_cast<float>(rank) / 50.0F);
        }
        mesh_.boundingBox = {{0, 0, 0}, {1, 1, 1}};
        queue_.Init(kVertices);
        for (std::int32_t v = 0; v < kVertices; ++v)
            insert(v);
    }

    void insert(std::int32_t v) {
        queue_.Insert(v);
        queued_.insert(v);
    }
    void remove(std::int32_t v) {
        queue_.Remove(v);
        queued_.erase(v);
    }
    std::int32_t pick() {
        return queue_.FirstAccepted([this](std::int32_t v) { return free_.count(v) != 0; });
    }
    [[nodiscard]] float costOf(std::int32_t v) const {
        return mesh_.vertices[static_cast<std::size_t>(v)].cost;
    }
    [[nodiscard]] std::int32_t cheapestFree() const {
        std::int32_t best = kNone;
        for (const std::int32_t v : queued_) {
            if (free_.count(v) != 0 && (best == kNone || costOf(v) < costOf(best))) best = v;
        }
        return best;
    }

    test::Random random_{7};
    DMesh mesh_;
    CostQueue queue_{mesh_};
    std::set<std::int32_t> queued_;
    std::set<std::int32_t> free_;
};

TEST_F(HeldQueue, IfEverythingIsHeldAsksAllAndPicksNone) {
    std::set<std::int32_t> asked;
    const std::int32_t picked = queue_.FirstAccepted([&](std::int32_t v) {
        asked.insert(v);
        return false;
    });
    EXPECT_EQ(picked, -1);
    EXPECT_EQ(asked, queued_);
    for (std::int32_t v = 0; v < kVertices; ++v)
        EXPECT_TRUE(queue_.isQueued(v)) << v;
}

TEST_F(HeldQueue, PicksHeldVerticesInOrderOnceTheyAreFree) {
    ASSERT_EQ(pick(), -1);
    free_ = queued_;
    while (!queued_.empty()) {
        const std::int32_t v = pick();
        ASSERT_EQ(v, cheapestFree());
        remove(v);
    }
    EXPECT_EQ(pick(), -1);
}

TEST_F(HeldQueue, AsksForNothingWhenEmpty) {
    queue_.Clear();
    EXPECT_EQ(queue_.FirstAccepted([](std::int32_t) {
        ADD_FAILURE() << "asked";
        return true;
    }),
              -1);
}

TEST_F(HeldQueue, AlwaysPicksTheCheapestFreeVertex) {
    for (int turn = 0; turn < 3000; ++turn) {
        const std::int32_t v = random_.between(0, kVertices - 1);
        switch (random_.below(5)) {
        case 0: insert(v); break;
        case 1: remove(v); break;
        case 2: free_.insert(v); break;
        case 3: free_.erase(v); break;
        default:
            // Almost all are held, so it takes several buckets to find a free one.
            if (free_.size() > 8) free_.erase(free_.begin(), std::next(free_.begin(), 5));
        }
        ASSERT_EQ(pick(), cheapestFree()) << turn;
    }
}

}  // namespace
}  // namespace korvalite::core
