// SPDX-License-Identifier: MIT
#include "mesh/vertex_corners.h"

#include "mesh/dmesh.h"
#include "support/allocation_counter.h"
#include "support/allocation_limit.h"
#include "support/mesh_builder.h"
#include "support/random.h"
#include "support/threads.h"
#include "support/vertex_corners.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>
#include <set>
#include <utility>
#include <vector>

namespace korvalite::core {
namespace {

constexpr std::int32_t kCorners = 3000;

// The sizes where a list begins or stops to need a block, or one of the next size.
constexpr std::int32_t kEdgesOfBlocks[] = {7, 8, 9, 14, 15, 16, 22, 23, 38, 39};

IndexList walk(const VertexCorners& corners, std::int32_t vertex) {
    IndexList list;
    CornerCursor cursor(corners, vertex);
    for (std::int32_t corner = cursor.next(); corner != kNone; corner = cursor.next())
        list.push_back(corner);
    return list;
}

IndexList randomCorners(test::Random& random, std::int32_t count) {
    IndexList list;
    for (std::int32_t i = 0; i < count; ++i)
        list.push_back(random.between(0, kCorners - 1));
    return list;
}

// Many sizes that need no block or a small one, and a few hubs.
std::int32_t randomSize(test::Random& random) {
    return random.onceIn(20) ? random.between(64, 3000) : random.between(0, 40);
}

// All corners at the first vertex.
VertexCorners allAtOne(std::int32_t vertexCount) {
    VertexCorners corners;
    corners.build(IndexedArray<std::uint32_t>(kCorners, 0), vertexCount);
    return corners;
}

// Lists of all vertices, with a plain vector for each as the reference.
struct Lists {
    VertexCorners corners;
    test::Lists expected;

    explicit Lists(std::int32_t vertexCount) : corners(allAtOne(vertexCount)) {
        expected.resize(static_cast<std::size_t>(vertexCount));
        for (std::int32_t corner = kCorners; corner-- > 0;)
            expected[0].push_back(corner);
    }
    [[nodiscard]] std::int32_t vertexCount() const {
        return static_cast<std::int32_t>(expected.size());
    }
    void assign(std::int32_t vertex, const IndexList& list) {
        corners.assign(vertex, list);
        expected[static_cast<std::size_t>(vertex)] = list;
    }
    void assignAtRandom(test::Random& random, int times) {
        for (int i = 0; i < times; ++i) {
            assign(random.between(0, vertexCount() - 1), randomCorners(random, randomSize(random)));
        }
    }
    void check() const {
        for (std::int32_t vertex = 0; vertex < vertexCount(); ++vertex) {
            const IndexList& list = expected[static_cast<std::size_t>(vertex)];
            ASSERT_EQ(walk(corners, vertex), list) << vertex;
            ASSERT_EQ(corners.isEmpty(vertex), list.empty()) << vertex;
        }
    }
};

TEST(VertexCorners, ListTheHighestCornerFirst) {
    VertexCorners corners;
    corners.build({{2, 0, 2, 1, 2, 0}}, 4);
    EXPECT_EQ(walk(corners, 0), (IndexList{5, 1}));
    EXPECT_EQ(walk(corners, 1), (IndexList{3}));
    EXPECT_EQ(walk(corners, 2), (IndexList{4, 2, 0}));
    EXPECT_EQ(walk(corners, 3), IndexList{});
    EXPECT_FALSE(corners.isEmpty(1));
    EXPECT_TRUE(corners.isEmpty(3));
}

TEST(VertexCorners, ListTheCornersOfFansOfEverySize) {
    // Fans and hubs, with their corners between those of others.
    std::vector<std::uint32_t> left;
    for (std::uint32_t size = 1; size <= 40; ++size)
        left.push_back(size);
    left.insert(left.end(), {64, 700, 3000, 9000});
    const auto vertexCount = static_cast<std::int32_t>(left.size());
    test::Lists expected(left.size());
    IndexedArray<std::uint32_t> vertexOfCorner;
    for (bool any = true; any;) {
        any = false;
        for (std::uint32_t v = 0; v < left.size(); ++v) {
            if (left[v] == 0) continue;
            --left[v];
            any = true;
            vertexOfCorner.push_back(v);
        }
    }
    for (std::size_t corner = vertexOfCorner.size(); corner-- > 0;)
        expected[vertexOfCorner[corner]].push_back(static_cast<std::int32_t>(corner));
    VertexCorners corners;
    for (int round = 0; round < 2; ++round) {
        corners.build(vertexOfCorner, vertexCount);
        EXPECT_TRUE(corners.areBuiltFor(expected.size(), vertexOfCorner.size()));
        for (std::int32_t v = 0; v < vertexCount; ++v)
            ASSERT_EQ(walk(corners, v), expected[static_cast<std::size_t>(v)]) << v;
    }
}

TEST(VertexCorners, AreBuiltFromScratchOverOlderOnes) {
    Lists lists(50);
    test::Random random(1);
    lists.assignAtRandom(random, 500);
    lists.corners.build({{1, 1, 0}}, 2);
    EXPECT_EQ(walk(lists.corners, 0), (IndexList{2}));
    EXPECT_EQ(walk(lists.corners, 1), (IndexList{1, 0}));
    EXPECT_TRUE(lists.corners.areBuiltFor(2, 3));
    EXPECT_FALSE(lists.corners.areBuiltFor(3, 3));
    EXPECT_FALSE(lists.corners.areBuiltFor(2, 4));

    // The blocks of the older ones are gone too.
    const IndexedArray<std::uint32_t> hub(40, 0);
    VertexCorners fresh;
    fresh.build(hub, 1);
    lists.corners.build(hub, 1);
    EXPECT_EQ(lists.corners.run(0).places, fresh.run(0).places);
}

TEST(VertexCorners, KeepABlockAsLongAsItHasTheRightSize) {
    test::Random random(15);
    VertexCorners corners = allAtOne(2);
    corners.assign(1, randomCorners(random, 9));
    const std::int32_t link = corners.run(1).places.back();
    for (const std::int32_t size : {14, 9, 12}) {
        corners.assign(1, randomCorners(random, size));
        EXPECT_EQ(corners.run(1).places.back(), link) << size;
    }
}

TEST(VertexCorners, UseTheBlocksAgainThatAHubOutgrewWhileItWasBuilt) {
    VertexCorners corners;
    corners.build(IndexedArray<std::uint32_t>(100, 0), 2);
    corners.assign(1, IndexList(9, 1));
    // Blocks are numbered as they are first taken, and links fall with the number.
    EXPECT_GT(corners.run(1).places.back(), corners.run(0).places.back());
}

TEST(VertexCorners, AreReleased) {
    Lists lists(50);
    test::Random random(2);
    lists.assignAtRandom(random, 500);
    lists.corners.release();
    EXPECT_TRUE(lists.corners.areBuiltFor(0, 0));
    lists.corners.build({{0, 0, 0}}, 1);
    EXPECT_EQ(walk(lists.corners, 0), (IndexList{2, 1, 0}));
}

TEST(VertexCorners, GiveBackWhatWasAssigned) {
    test::Random random(3);
    Lists lists(300);
    lists.check();
    for (int round = 0; round < 30; ++round) {
        lists.assignAtRandom(random, 300);
        lists.check();
    }
}

TEST(VertexCorners, ChangeFromEverySizeToEveryOther) {
    test::Random random(4);
    Lists lists(3);
    for (std::int32_t from = 0; from <= 40; ++from) {
        for (std::int32_t to = 0; to <= 40; ++to) {
            lists.assign(1, randomCorners(random, from));
            lists.assign(2, randomCorners(random, 11));
            lists.assign(1, randomCorners(random, to));
            lists.check();
        }
    }
}

TEST(VertexCorners, TakeOrReleaseABlockOnlyForMoreCornersThanPlaces) {
    test::Random random(5);
    VertexCorners corners = allAtOne(2);
    EXPECT_TRUE(corners.changesBlocks(0, 0));
    for (std::int32_t before = 0; before <= 40; ++before) {
        corners.assign(1, randomCorners(random, before));
        for (std::size_t after = 0; after <= 40; ++after)
            EXPECT_EQ(corners.changesBlocks(1, after), before > 8 || after > 8) << before;
    }
}

TEST(VertexCorners, OfACopyChangeOnTheirOwn) {
    test::Random random(6);
    Lists first(100);
    first.assignAtRandom(random, 1000);
    Lists second = first;
    second.assignAtRandom(random, 1000);
    first.check();
    second.check();
    first.assignAtRandom(random, 1000);
    first.check();
    second.check();
    const Lists moved = std::move(first);
    second.corners.release();
    moved.check();
}

TEST(VertexCorners, AreCopiedWithTheirMesh) {
    DMesh mesh = test::torus(5, 4);
    BuildVertexCorners(mesh);
    test::Random random(7);
    mesh.vertexCorners.assign(3, randomCorners(random, 100));
    const test::Lists lists = test::vertexCornersOf(mesh);
    DMesh copy = mesh;
    copy.vertexCorners.assign(3, randomCorners(random, 90));
    copy.vertexCorners.assign(4, randomCorners(random, 90));
    EXPECT_EQ(test::vertexCornersOf(mesh), lists);
}

// A vertex that has a block links to it from its last place.
std::set<std::int32_t> blocksIn(const VertexCorners& corners, std::int32_t vertexCount) {
    std::set<std::int32_t> links;
    for (std::int32_t vertex = 0; vertex < vertexCount; ++vertex) {
        const std::int32_t last = corners.run(vertex).places.back();
        if (last < kNone) links.insert(last);
    }
    return links;
}

TEST(VertexCorners, UseABlockAgainAfterItsRelease) {
    test::Random random(8);
    VertexCorners corners = allAtOne(2);
    for (const std::int32_t size : kEdgesOfBlocks) {
        for (const std::int32_t other : kEdgesOfBlocks) {
            const IndexList one = randomCorners(random, size);
            const IndexList two = randomCorners(random, other);
            corners.assign(1, one);
            corners.assign(1, two);
            std::set<std::int32_t> known;
            for (int i = 0; i < 2; ++i) {
                corners.assign(1, i % 2 == 0 ? one : two);
                known.merge(blocksIn(corners, 2));
            }
            const test::AllocationCounter counter;
            for (int i = 0; i < 100; ++i)
                corners.assign(1, i % 2 == 0 ? one : two);
            EXPECT_EQ(counter.count(), 0U) << size << ' ' << other;
            for (int i = 0; i < 100; ++i) {
                corners.assign(1, i % 2 == 0 ? one : two);
                known.merge(blocksIn(corners, 2));
            }
            EXPECT_LE(known.size(), 3U) << size << ' ' << other;  // with that of vertex 0
        }
    }
}

TEST(VertexCorners, OfChangingSizesNeedNoMoreBlocksThanEverAtOnce) {
    // Every vertex has had a list of every size, so there are blocks of every size for each.
    constexpr std::int32_t kVertices = 20;
    test::Random random(9);
    VertexCorners corners = allAtOne(kVertices);
    corners.assign(0, {});
    std::set<std::int32_t> known;
    std::vector<IndexList> lists;
    for (const std::int32_t size : kEdgesOfBlocks) {
        lists.push_back(randomCorners(random, size));
        for (std::int32_t vertex = 0; vertex < kVertices; ++vertex)
            corners.assign(vertex, lists.back());
        known.merge(blocksIn(corners, kVertices));
    }
    // A block is taken before the old one is released, so there may be another of each size.
    const std::size_t most = known.size() + 4;
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < 500; ++i) {
            corners.assign(random.between(0, kVertices - 1),
                           lists[random.below(static_cast<std::uint32_t>(lists.size()))]);
        }
        known.merge(blocksIn(corners, kVertices));
    }
    EXPECT_LE(known.size(), most);
    const test::AllocationCounter counter;
    for (int i = 0; i < 10000; ++i) {
        corners.assign(random.between(0, kVertices - 1),
                       lists[random.below(static_cast<std::uint32_t>(lists.size()))]);
    }
    EXPECT_EQ(counter.count(), 0U);
}

TEST(CornerBlocks, AreOfTheSameSizeUpToAPowerOfTwo) {
    EXPECT_TRUE(CornerBlocks::areSameSize(2, 7));
    EXPECT_FALSE(CornerBlocks::areSameSize(7, 8));
    EXPECT_TRUE(CornerBlocks::areSameSize(8, 15));
    EXPECT_FALSE(CornerBlocks::areSameSize(15, 16));
    EXPECT_TRUE(CornerBlocks::areSameSize(1024, 2047));
    EXPECT_FALSE(CornerBlocks::areSameSize(2047, 2048));
}

TEST(CornerBlocks, NeverMoveOrOverlap) {
    // Past the end of the first segments, among them some blocks that are longer than the first.
    test::Random random(10);
    CornerBlocks blocks;
    struct Block {
        std::int32_t block;
        std::int32_t count;
        const std::int32_t* address;
        std::int32_t mark;
    };
    std::vector<Block> taken;
    for (std::int32_t mark = 0; mark < 4000; ++mark) {
        const std::int32_t count = random.onceIn(300)  ? random.between(30000, 70000)
                                   : random.onceIn(10) ? random.between(64, 3000)
                                                       : random.between(2, 40);
        const std::int32_t block = blocks.take(static_cast<std::size_t>(count));
        std::fill_n(blocks.at(block), count + 1, mark);
        taken.push_back({block, count, blocks.at(block), mark});
    }
    for (const Block& block : taken) {
        EXPECT_EQ(blocks.at(block.block), block.address);
        EXPECT_TRUE(std::all_of(block.address, block.address + block.count + 1,
                                [&](std::int32_t word) { return word == block.mark; }))
            << block.mark;
    }
}

TEST(CornerBlocks, AreUsedAgainForTheirSizeOnly) {
    CornerBlocks blocks;
    const std::int32_t small = blocks.take(7);
    const std::int32_t large = blocks.take(8);
    EXPECT_NE(small, large);
    blocks.release(large, 15);
    blocks.release(small, 2);
    EXPECT_EQ(blocks.take(3), small);
    EXPECT_NE(blocks.take(3), large);
    EXPECT_EQ(blocks.take(9), large);
}

TEST(CornerBlocks, DoNotReachAcrossTheEndOfASegment) {
    // After an odd number of the smallest blocks, two of those do not fit the end of a segment.
    CornerBlocks blocks;
    for (std::int32_t i = 0; i < 4095; ++i)
        std::fill_n(blocks.at(blocks.take(7)), 8, i);
    std::vector<std::int32_t> longer;
    for (std::int32_t i = 0; i < 5000; ++i) {
        longer.push_back(blocks.take(15));
        std::fill_n(blocks.at(longer.back()), 16, i);
    }
    for (std::int32_t i = 0; i < 5000; ++i) {
        const std::int32_t* const words = blocks.at(longer[static_cast<std::size_t>(i)]);
        ASSERT_EQ(std::count(words, words + 16, i), 16) << i;
    }
}

TEST(VertexCorners, AListThatFindsNoMemoryStaysAsItWas) {
    test::Random random(11);
    Lists lists(200);
    int failures = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::int32_t vertex = random.between(0, lists.vertexCount() - 1);
        const IndexList list = randomCorners(random, randomSize(random));
        bool isDone = true;
        {
            const test::FailingAllocation failing(random.onceIn(2) ? 1 : 2);
            try {
                lists.corners.assign(vertex, list);
            } catch (const std::bad_alloc&) {
                isDone = false;
            }
        }
        if (isDone) lists.expected[static_cast<std::size_t>(vertex)] = list;
        failures += isDone ? 0 : 1;
    }
    lists.check();
    EXPECT_GT(failures, 0);
}

TEST(VertexCorners, AThreadMayWalkThemWhileAnotherChangesThem) {
    constexpr std::int32_t kVertices = 40;
    constexpr std::int32_t kLongest = 200;
    constexpr int kMostSteps = 300;  // with all that a block of that size has room for
    VertexCorners corners = allAtOne(kVertices);
    corners.assign(0, {});
    std::mutex changing;
    std::atomic<bool> isOver = false;
    std::atomic<int> strangers = 0;
    std::atomic<int> endless = 0;
    std::atomic<int> walks = 0;
    const auto change = [&] {
        test::Random random(12);
        for (int i = 0; i < 20000 || walks.load() < 1000; ++i) {
            const std::int32_t size =
                random.onceIn(10) ? random.between(0, kLongest) : random.between(5, 25);
            const IndexList list = randomCorners(random, size);
            const std::scoped_lock lock(changing);
            corners.assign(random.between(0, kVertices - 1), list);
        }
        isOver = true;
    };
    const auto walkOne = [&](std::int32_t vertex) {
        CornerCursor cursor(corners, vertex);
        (void)corners.isEmpty(vertex);
        for (int step = 0; step < kMostSteps; ++step) {
            const std::int32_t corner = cursor.next();
            if (corner == kNone) return;
            if (corner < 0 || corner >= kCorners) ++strangers;
        }
        ++endless;
    };
    test::onThreads(4, [&](std::size_t thread) {
        if (thread == 0) return change();
        while (!isOver) {
            for (std::int32_t vertex = 0; vertex < kVertices; ++vertex)
                walkOne(vertex);
            ++walks;
        }
    });
    EXPECT_EQ(strangers, 0);
    EXPECT_EQ(endless, 0);
}

TEST(VertexCorners, AThreadThatWalksAVertexThatNobodyChangesSeesAllItsCorners) {
    // Its neighbours in memory change, and so do their blocks.
    constexpr std::int32_t kVertices = 40;
    VertexCorners corners = allAtOne(kVertices);
    test::Random lists(13);
    test::Lists still;
    for (std::int32_t vertex = 0; vertex < kVertices; vertex += 2) {
        still.push_back(randomCorners(lists, lists.between(0, 60)));
        corners.assign(vertex, still.back());
    }
    std::mutex changing;
    std::atomic<int> differences = 0;
    test::onThreads(4, [&](std::size_t thread) {
        test::Random random(static_cast<std::uint32_t>(14 + thread));
        for (int i = 0; i < 5000; ++i) {
            const std::int32_t vertex = random.between(0, kVertices / 2 - 1);
            if (thread < 2) {
                const IndexList list = randomCorners(random, random.between(0, 60));
                const std::scoped_lock lock(changing);
                corners.assign(2 * vertex + 1, list);
            } else if (walk(corners, 2 * vertex) != still[static_cast<std::size_t>(vertex)]) {
                ++differences;
            }
        }
    });
    EXPECT_EQ(differences, 0);
}

}  // namespace
}  // namespace korvalite::core
