// SPDX-License-Identifier: MIT
#include "queue/cost_queue.h"

#include "mesh/dmesh.h"
#include "support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <set>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// A queue over vertices that have nothing but a cost; the box is a cube.
struct Queue {
    DMesh mesh;
    CostQueue queue{mesh};

    explicit Queue(const std::vector<float>& costs, float side = 1.0F) {
        for (const float cost : costs) {
            mesh.vertices.emplace_back();
            mesh.vertices.back().cost = cost;
        }
        mesh.boundingBox = {{0, 0, 0}, {side, side, side}};
        queue.Init(mesh.vertexCount());
    }
    void insertAll() {
        for (std::int32_t v = 0; v < mesh.vertexCount(); ++v)
            queue.Insert(v);
    }
    std::vector<std::int32_t> drain() {
        std::vector<std::int32_t> order;
        // Stops an endless loop: no more than twice as many turns as there are vertices.
        for (std::size_t turn = 0; turn < 2 * mesh.vertices.size() + 1; ++turn) {
            const std::int32_t v = queue.Top();
            if (v == kNone) break;
            order.push_back(v);
            queue.Remove(v);
        }
        return order;
    }
    float& cost(std::int32_t v) { return mesh.vertices[static_cast<std::size_t>(v)].cost; }
};

using Order = std::vector<std::int32_t>;

double maxCostOfCube(float side) {
    const float diagonal = std::sqrt(side * side + side * side + side * side);
    const double u =
        std::sin(std::numbers::pi / (std::sqrt(10.0) * 2.0)) * static_cast<double>(diagonal);
    return u * u * 0.25;
}

std::vector<float> copies(std::size_t count, float cost) {
    return std::vector<float>(count, cost);
}

TEST(CostQueue, AnEmptyMeshHasNoVerticesAndNoTop) {
    Queue q({});
    EXPECT_EQ(q.queue.vertexCount(), 0);
    EXPECT_EQ(q.queue.bucketCount(), 0);
    EXPECT_EQ(q.queue.Top(), -1);
    EXPECT_EQ(q.queue.minCost(), 1e-9);
    EXPECT_EQ(q.queue.maxCost(), 10.0);
    EXPECT_EQ(q.queue.logRange(), 5.0);
    DMesh mesh;
    CostQueue fresh(mesh);
    EXPECT_EQ(fresh.Top(), -1);
}

TEST(CostQueue, HasOneBucketForTenVerticesRoundedUp) {
    EXPECT_EQ(Queue(copies(1, 1)).queue.bucketCount(), 1);
    EXPECT_EQ(Queue(copies(10, 1)).queue.bucketCount(), 1);
    EXPECT_EQ(Queue(copies(11, 1)).queue.bucketCount(), 2);
    EXPECT_EQ(Queue(copies(1000, 1)).queue.bucketCount(), 100);
}

TEST(CostQueue, MaxCostFollowsFromTheDiagonalOfTheBox) {
    EXPECT_EQ(Queue(copies(3, 1), 1).queue.maxCost(), maxCostOfCube(1));
    EXPECT_EQ(Queue(copies(3, 1), 7).queue.maxCost(), maxCostOfCube(7));
    EXPECT_NEAR(maxCostOfCube(1), 0.476553 * 0.476553 * 3 / 4, 1e-6);
}

TEST(CostQueue, MoreThanFifteenZeroCostsPutTheScaleAtTheLowestDecade) {
    Queue q(copies(16, 0));
    EXPECT_EQ(q.queue.minCost(), std::pow(10.0, -128));
    EXPECT_EQ(q.queue.logRange(), std::log10(maxCostOfCube(1)) + 128);
}

TEST(CostQueue, FifteenVerticesOrFewerKeepTheDefaultMinCost) {
    for (const std::size_t count : {1U, 15U}) {
        Queue q(copies(count, 0.5F));
        EXPECT_EQ(q.queue.minCost(), 1e-9);
        EXPECT_EQ(q.queue.logRange(), std::log10(maxCostOfCube(1)) - 5);
    }
    // Vertices that are not collapsible do not count.
    std::vector<float> costs = copies(15, 0.5F);
    costs.insert(costs.end(), 100, kNotCollapsible);
    EXPECT_EQ(Queue(costs).queue.minCost(), 1e-9);
}

TEST(CostQueue, TheScaleStartsAtTheDecadeOfTheSixteenthVertex) {
    // Decades are truncated toward zero, so 0.2 and 8 are in the same one.
    const auto minCost = [](std::vector<float> costs, const std::vector<float>& more) {
        costs.insert(costs.end(), more.begin(), more.end());
        return Queue(costs).queue.minCost();
    };
    EXPECT_EQ(minCost(copies(8, 0.2F), copies(8, 8)), 1.0);
    EXPECT_EQ(minCost(copies(15, 0.2F), copies(1, 11)), 10.0);
    EXPECT_EQ(minCost(copies(15, 0), copies(5, 3e-7F)), 1e-6);
    EXPECT_EQ(minCost(copies(4, 0), copies(12, 5e20F)), 1e20);
    const Queue q(copies(16, 3e-7F));
    EXPECT_EQ(q.queue.logRange(), std::log10(maxCostOfCube(1)) - -6.0);
}

TEST(CostQueue, CostsWithoutALogarithmCountInTheLowestDecade) {
    for (const float cost : {-1.0F, -1e-30F, kNaN, kInfinity, -kInfinity, 0.0F}) {
        EXPECT_EQ(Queue(copies(16, cost)).queue.minCost(), std::pow(10.0, -128)) << cost;
    }
    // A denormal cost has a logarithm: -45.
    EXPECT_EQ(Queue(copies(16, 1e-45F)).queue.minCost(), std::pow(10.0, -44));
}

TEST(CostQueue, ABucketIsAShareOfTheDecadesAboveMinCost) {
    // With these costs minCost is 1e-6, and there are 100 buckets.
    Queue q(copies(1000, 3e-7F), 1000);
    const double decades = std::log10(maxCostOfCube(1000)) + 6;
    for (const float cost : {1e-6F, 2e-6F, 1e-4F, 0.5F, 1.0F, 77.0F, 1e4F}) {
        const double share = std::log10(static_cast<double>(cost) / 1e-6) / decades;
        EXPECT_EQ(q.queue.bucketOf(cost), static_cast<std::int32_t>(share * 100)) << cost;
    }
}

TEST(CostQueue, CostsOutsideTheScaleGoToItsEnds) {
    Queue q(copies(1000, 3e-7F), 1000);
    for (const float cost : {3e-7F, 0.0F, -5.0F, -kInfinity, kNaN})
        EXPECT_EQ(q.queue.bucketOf(cost), 0) << cost;
    for (const float cost : {1e6F, 1e10F, 3e38F, kInfinity})
        EXPECT_EQ(q.queue.bucketOf(cost), 99) << cost;
}

TEST(CostQueue, ACostBelowMinCostGoesStraightToTheOrderedSet) {
    Queue q(copies(100, 3e-7F), 1000);
    q.insertAll();
    EXPECT_EQ(q.queue.currentBucket(), 0);
    EXPECT_EQ(q.queue.Top(), 0);
    EXPECT_EQ(q.queue.currentBucket(), 0);  // nothing was poured
}

TEST(CostQueue, EqualCostsLeaveInIndexOrder) {
    Queue q(copies(1000, 2), 1000);  // all in one bucket after the current one
    ASSERT_GT(q.queue.bucketOf(2), 0);
    for (std::int32_t v = 999; v >= 0; --v)
        q.queue.Insert((v * 7) % 1000);
    const Order order = q.drain();
    ASSERT_EQ(order.size(), 1000U);
    for (std::int32_t v = 0; v < 1000; ++v)
        EXPECT_EQ(order[static_cast<std::size_t>(v)], v);
}

TEST(CostQueue, TheCheapestLeavesFirst) {
    Queue q({5, 1, 4, 1, 3, 0, -2, kInfinity, 1e10F});
    q.insertAll();
    EXPECT_EQ(q.drain(), (Order{6, 5, 1, 3, 4, 2, 0, 8, 7}));
}

TEST(CostQueue, ZeroAndMinusZeroAreEqual) {
    Queue q({0.0F, -0.0F, 0.0F, -0.0F});
    q.insertAll();
    EXPECT_EQ(q.drain(), (Order{0, 1, 2, 3}));
}

TEST(CostQueue, NeverQueuesAVertexThatIsNotCollapsible) {
    Queue q({kNotCollapsible, 1, kNotCollapsible});
    q.insertAll();
    EXPECT_FALSE(q.queue.isQueued(0));
    EXPECT_TRUE(q.queue.isQueued(1));
    EXPECT_EQ(q.drain(), (Order{1}));
}

TEST(CostQueue, RepeatedInsertsAndRemovesHaveNoEffect) {
    Queue q(copies(50, 2), 1000);
    q.queue.Remove(7);
    q.queue.Insert(7);
    q.queue.Insert(7);
    EXPECT_EQ(q.queue.Top(), 7);
    q.queue.Insert(7);
    q.queue.Remove(7);
    q.queue.Remove(7);
    EXPECT_EQ(q.queue.Top(), -1);
}

TEST(CostQueue, InsertingIntoAKnownBucketGivesTheSameOrder) {
    Queue q(copies(1000, 3e-7F), 1000);
    q.cost(5) = 2;
    q.cost(6) = 1;
    for (const std::int32_t v : {5, 6})
        q.queue.Insert(v, q.queue.bucketOf(q.cost(v)));
    q.queue.Insert(7, kNone);
    q.queue.Insert(6, q.queue.bucketOf(2));  // already queued
    EXPECT_FALSE(q.queue.isQueued(7));
    EXPECT_EQ(q.drain(), (Order{6, 5}));
}

TEST(CostQueue, TopDoesNotRemove) {
    Queue q({3, 2});
    q.insertAll();
    EXPECT_EQ(q.queue.Top(), 1);
    EXPECT_EQ(q.queue.Top(), 1);
    EXPECT_TRUE(q.queue.isQueued(1));
}

TEST(CostQueue, AcceptsVerticesAfterTheLastBucket) {
    Queue q(copies(100, 2), 1000);
    q.insertAll();
    EXPECT_EQ(q.drain().size(), 100U);
    EXPECT_EQ(q.queue.currentBucket(), q.queue.bucketCount());
    q.cost(3) = 1e10F;
    q.queue.Insert(3);
    q.queue.Insert(4);
    EXPECT_EQ(q.drain(), (Order{4, 3}));
}

TEST(CostQueue, FindsVerticesByCostInALargeOrderedSet) {
    // All but the last have cost 0, so all are in the set at once, with the costlier ones last.
    std::vector<float> costs = copies(20500, 0);
    for (std::size_t v = 20400; v < costs.size(); ++v)
        costs[v] = static_cast<float>(v);
    Queue q(costs, 0);
    q.insertAll();
    ASSERT_EQ(q.queue.currentBucket(), 0);
    ASSERT_EQ(q.queue.bucketOf(20499), 0);
    for (const std::int32_t v : {20000, 20001, 20450, 20499, 0, 19999, 5}) {
        q.queue.Remove(v);
        EXPECT_FALSE(q.queue.isQueued(v));
    }
    for (const std::int32_t v : {20499, 5, 20000, 0})
        q.queue.Insert(v);
    q.queue.Remove(20499);
    q.queue.Remove(5);
    Order expected;
    for (std::int32_t v = 0; v < 20500; ++v) {
        if (v != 20001 && v != 20450 && v != 20499 && v != 19999 && v != 5) expected.push_back(v);
    }
    EXPECT_EQ(q.drain(), expected);
}

TEST(CostQueue, ClearEmptiesItAndKeepsScaleAndCurrentBucket) {
    Queue q(copies(1000, 2), 1000);
    q.insertAll();
    ASSERT_EQ(q.queue.Top(), 0);
    const std::int32_t current = q.queue.currentBucket();
    const double minCost = q.queue.minCost();
    ASSERT_GT(current, 0);
    q.queue.Clear();
    EXPECT_EQ(q.queue.currentBucket(), current);
    EXPECT_EQ(q.queue.minCost(), minCost);
    EXPECT_EQ(q.queue.bucketCount(), 100);
    EXPECT_EQ(q.queue.vertexCount(), 1000);
    for (std::int32_t v = 0; v < 1000; ++v)
        EXPECT_FALSE(q.queue.isQueued(v));
    EXPECT_EQ(q.queue.Top(), -1);
    q.queue.Insert(9);
    EXPECT_EQ(q.queue.Top(), 9);
}

TEST(CostQueue, ReleaseRestoresTheStateBeforeInit) {
    Queue q(copies(1000, 2), 1000);
    q.insertAll();
    (void)q.queue.Top();
    q.queue.Release();
    EXPECT_EQ(q.queue.vertexCount(), 0);
    EXPECT_EQ(q.queue.currentBucket(), 0);
    EXPECT_EQ(q.queue.bucketCount(), 0);
    EXPECT_EQ(q.queue.minCost(), 1e-9);
    EXPECT_EQ(q.queue.maxCost(), 10.0);
    EXPECT_EQ(q.queue.logRange(), 5.0);
    EXPECT_EQ(q.queue.Top(), -1);
    q.queue.Init(1000);
    q.insertAll();
    EXPECT_EQ(q.drain().size(), 1000U);
}

TEST(Penalize, MovesAVertexPastEveryRealCost) {
    Queue q({1, 2, 3, 1e9F});
    q.insertAll();
    Penalize(q.mesh, q.queue, 0);
    EXPECT_EQ(q.cost(0), 1.0F * 100.0F + 1e10F);
    Penalize(q.mesh, q.queue, 2);
    EXPECT_EQ(q.drain(), (Order{1, 3, 0, 2}));
}

TEST(Penalize, ChangesOnlyTheCostOfAnUnqueuedVertex) {
    Queue q({1e9F, 2});
    q.queue.Insert(1);
    Penalize(q.mesh, q.queue, 0);
    EXPECT_EQ(q.cost(0), 1e9F * 100.0F + 1e10F);
    EXPECT_FALSE(q.queue.isQueued(0));
    EXPECT_EQ(q.drain(), (Order{1}));
}

TEST(Penalize, ACostThatBecomesInfiniteStaysQueued) {
    Queue q({3e38F, 1});
    q.insertAll();
    Penalize(q.mesh, q.queue, 0);
    EXPECT_EQ(q.cost(0), kInfinity);
    EXPECT_TRUE(q.queue.isQueued(0));
    EXPECT_EQ(q.drain(), (Order{1, 0}));
}

TEST(Penalize, AlwaysRaisesTheCost) {
    EXPECT_EQ(penalizedCost(0), 1e10F);
    EXPECT_EQ(penalizedCost(-1), -100.0F + 1e10F);
    EXPECT_EQ(penalizedCost(1e10F), 1e10F * 100.0F + 1e10F);
    // Costs that would sink further and further, stay the same, or be NaN.
    for (const float cost : {-1e10F, -3e38F, -kInfinity, kInfinity, kNaN})
        EXPECT_EQ(penalizedCost(cost), 1e10F) << cost;
}

TEST(Penalize, RefusingEverythingTerminates) {
    // As a driver does: until the top is a penalized one.
    for (const float cost : {-1e30F, -5.0F, 0.0F, 3.0F, 9e9F}) {
        Queue q(copies(40, cost));
        q.insertAll();
        int turns = 0;
        while (q.cost(q.queue.Top()) < kPenalizedCost && turns < 1000) {
            Penalize(q.mesh, q.queue, q.queue.Top());
            ++turns;
        }
        EXPECT_EQ(turns, 40) << cost;
    }
}

TEST(CostQueue, NaNCostsNeitherCrashNorLoop) {
    test::Random random(23);
    std::vector<float> costs;
    for (int i = 0; i < 3000; ++i)
        costs.push_back(random.onceIn(3) ? kNaN : random.around(100));
    for (const float side : {1.0F, kNaN}) {
        Queue q(costs, side);
        q.insertAll();
        for (std::int32_t v = 0; v < 3000; v += 7)
            q.queue.Remove(v);
        EXPECT_EQ(q.drain().size(), 3000U - 429U);
    }
}

constexpr auto kAlways = [] { return true; };

// Costs over many decades, so that nearly every vertex has its own bucket.
std::vector<float> spreadCosts(std::size_t count) {
    test::Random random(31);
    std::vector<float> costs;
    for (std::size_t i = 0; i < count; ++i)
        costs.push_back(std::pow(10.0F, random.around(6) - 6.0F));
    return costs;
}

TEST(CostQueue, APickThatAcceptsNothingAsksForEachVertexOnce) {
    Queue q(spreadCosts(3000));
    q.insertAll();
    Order asked;
    const auto refuse = [&](std::int32_t v) {
        asked.push_back(v);
        return false;
    };
    EXPECT_EQ(q.queue.FirstAccepted(refuse, kAlways), -1);
    EXPECT_EQ(asked, q.drain());
}

TEST(CostQueue, APickStopsPouringOnRequest) {
    Queue q(spreadCosts(3000));
    q.insertAll();
    int asked = 0;
    int pours = 0;
    const auto refuse = [&](std::int32_t) { return ++asked == 0; };
    EXPECT_EQ(q.queue.FirstAccepted(refuse, [&] { return ++pours <= 5; }), -1);
    EXPECT_EQ(pours, 6);
    EXPECT_LT(asked, 1000);
    EXPECT_LT(q.queue.currentBucket(), q.queue.bucketCount() / 2);
    // All vertices are still queued.
    EXPECT_EQ(q.drain().size(), 3000U);
}

// Compares the queue with a plain sorted set of (cost, index).
class QueueModel {
public:
    using CostOf = float (*)(test::Random&);

    QueueModel(std::size_t count, float side, CostOf costOf, std::uint32_t seed)
        : random_(seed), costOf_(costOf), q_(draw(count), side) {}

    void run(int steps) {
        for (std::int32_t v = 0; v < q_.mesh.vertexCount(); ++v)
            insert(v);
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step)
            takeStep();
        while (!model_.empty() && !testing::Test::HasFailure()) {
            expectTop();
            remove(q_.queue.Top());
        }
        EXPECT_EQ(q_.queue.Top(), -1);
    }

private:
    std::vector<float> draw(std::size_t count) {
        std::vector<float> costs;
        for (std::size_t i = 0; i < count; ++i)
            costs.push_back(costOf_(random_));
        return costs;
    }
    void takeStep() {
        const auto v = static_cast<std::int32_t>(
            random_.below(static_cast<std::uint32_t>(q_.mesh.vertices.size())));
        switch (random_.below(7)) {
        case 0: remove(v); break;
        case 1: insert(v); break;
        case 2: penalize(v); break;
        case 3: change(v); break;
        case 4: expectPick(); break;
        default:
            expectTop();
            if (!model_.empty()) random_.onceIn(4) ? penalize(top()) : remove(top());
        }
        EXPECT_EQ(q_.queue.isQueued(v), model_.count({q_.cost(v), v}) == 1);
        if (random_.onceIn(500)) {
            q_.queue.Clear();
            model_.clear();
        }
    }
    std::int32_t top() const { return model_.begin()->second; }
    void expectTop() { ASSERT_EQ(q_.queue.Top(), model_.empty() ? -1 : top()); }
    // Picks among every third vertex.
    void expectPick() {
        const auto residue = static_cast<std::int32_t>(random_.below(3));
        const auto isTaken = [residue](std::int32_t v) { return v % 3 == residue; };
        const auto expected = std::find_if(model_.begin(), model_.end(), [&](const auto& queued) {
            return isTaken(queued.second);
        });
        ASSERT_EQ(q_.queue.FirstAccepted(isTaken, kAlways),
                  expected == model_.end() ? -1 : expected->second);
    }
    void insert(std::int32_t v) {
        q_.queue.Insert(v);
        if (q_.cost(v) != kNotCollapsible) model_.insert({q_.cost(v), v});
    }
    void remove(std::int32_t v) {
        q_.queue.Remove(v);
        model_.erase({q_.cost(v), v});
    }
    void change(std::int32_t v) {
        remove(v);
        q_.cost(v) = costOf_(random_);
        insert(v);
    }
    void penalize(std::int32_t v) {
        const bool queued = model_.erase({q_.cost(v), v}) == 1;
        Penalize(q_.mesh, q_.queue, v);
        if (queued && q_.cost(v) != kNotCollapsible) model_.insert({q_.cost(v), v});
    }

    test::Random random_;
    CostOf costOf_;
    Queue q_;
    std::set<std::pair<float, std::int32_t>> model_;
};

TEST(CostQueue, OrdersLikeASortedSetWhateverTheCosts) {
    using test::Random;
    const QueueModel::CostOf distributions[] = {
        [](Random&) { return 0.0F; },
        [](Random&) { return 3.5F; },
        [](Random& r) { return r.unit(); },
        [](Random& r) { return r.around(10); },
        [](Random& r) { return static_cast<float>(r.below(4)); },
        [](Random& r) { return static_cast<float>(r.between(-5, 5)); },
        [](Random& r) { return std::pow(10.0F, r.around(37)); },
        [](Random& r) { return 1.0F + 1e-6F * r.unit(); },
        [](Random& r) { return 1e-45F * static_cast<float>(r.below(100)); },
        [](Random& r) { return -std::pow(10.0F, r.around(37)); },
        [](Random& r) { return r.onceIn(2) ? 0.0F : r.unit() * 1e-8F; },
        [](Random& r) { return r.onceIn(3) ? kNotCollapsible : r.unit(); },
        [](Random& r) { return r.onceIn(3)   ? kInfinity
                               : r.onceIn(3) ? -kInfinity
                                             : r.around(1); },
        [](Random& r) { return r.onceIn(2) ? 1e10F : 1e12F * r.unit(); },
    };
    std::uint32_t seed = 100;
    for (const auto costOf : distributions) {
        for (const float side : {0.0F, 1e-6F, 1.0F, 50.0F, 1e18F, kInfinity, kNaN}) {
            for (const std::size_t count : {1U, 9U, 40U, 400U}) {
                QueueModel(count, side, costOf, ++seed).run(600);
                ASSERT_FALSE(HasFailure()) << seed << ' ' << side << ' ' << count;
            }
        }
    }
}

}  // namespace
}  // namespace korvalite::core
