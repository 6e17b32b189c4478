// SPDX-License-Identifier: MIT
#include "progressive/permute.h"

#include "support/random.h"

#include <gtest/gtest.h>

#include <numeric>
#include <utility>

namespace korvalite::core {
namespace {

IndexMap shuffled(std::int32_t count, test::Random& random) {
    IndexMap map(static_cast<std::size_t>(count));
    std::iota(map.begin(), map.end(), 0);
    for (std::size_t i = map.size(); i > 1; --i)
        std::swap(map[i - 1], map[random.below(static_cast<std::uint32_t>(i))]);
    return map;
}

TEST(Permute, MovesEachItemToItsEntryOfTheMap) {
    IndexedArray<std::uint32_t> words{10, 11, 12, 13, 14};
    IndexMap map{2, 0, 1, 4, 3};
    PermuteWords(words, map);
    EXPECT_EQ(words, (IndexedArray<std::uint32_t>{11, 12, 10, 14, 13}));
    EXPECT_EQ(map, (IndexMap{2, 0, 1, 4, 3}));
}

TEST(Permute, MovesTriplesWhole) {
    IndexedArray<std::uint32_t> words{1, 2, 3, 4, 5, 6, 7, 8, 9};
    IndexMap map{1, 2, 0};
    PermuteTriples(words, map);
    EXPECT_EQ(words, (IndexedArray<std::uint32_t>{7, 8, 9, 1, 2, 3, 4, 5, 6}));
}

TEST(Permute, AcceptsNoItemsAndTheIdentityMap) {
    IndexMap none;
    IndexedArray<std::uint32_t> words;
    PermuteWords(words, none);
    PermuteTriples(words, none);
    BitArray bits;
    PermuteBits(bits, none);
    EXPECT_TRUE(words.empty());

    IndexMap same(100);
    std::iota(same.begin(), same.end(), 0);
    const IndexMap sameBefore = same;
    IndexedArray<std::uint8_t> bytes(100);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{7});
    const IndexedArray<std::uint8_t> bytesBefore = bytes;
    PermuteBytes(bytes, same);
    EXPECT_EQ(bytes, bytesBefore);
    EXPECT_EQ(same, sameBefore);
}

TEST(Permute, EveryKindMatchesACopyAndKeepsTheMap) {
    test::Random random(31);
    for (int round = 0; round < 200; ++round) {
        const std::int32_t count = random.between(1, 200);
        const auto size = static_cast<std::size_t>(count);
        IndexMap map = shuffled(count, random);
        const IndexMap mapBefore = map;
        IndexedArray<std::uint32_t> words(size);
        IndexedArray<std::uint8_t> bytes(size);
        IndexedArray<std::uint32_t> triples(3 * size);
        decltype(DMesh::vertices) records(size);
        BitArray bits;
        bits.Resize(count, random.onceIn(2));
        for (std::size_t i = 0; i < size; ++i) {
            words[i] = random.word();
            bytes[i] = static_cast<std::uint8_t>(random.below(256));
            records[i] = {random.unit(), random.unit(), random.unit(), random.unit(),
                          random.between(-1, 9)};
            bits.Assign(static_cast<std::int32_t>(i), random.onceIn(2));
            for (std::size_t k = 0; k < 3; ++k)
                triples[3 * i + k] = random.word();
        }
        const auto wordsBefore = words;
        const auto bytesBefore = bytes;
        const auto triplesBefore = triples;
        const auto recordsBefore = records;
        BitArray bitsBefore;
        bitsBefore.Assign(bits);

        PermuteWords(words, map);
        PermuteBytes(bytes, map);
        PermuteTriples(triples, map);
        PermuteVertexRecords(records, map);
        PermuteBits(bits, map);
        ASSERT_EQ(map, mapBefore);
        for (std::size_t i = 0; i < size; ++i) {
            const auto to = static_cast<std::size_t>(map[i]);
            ASSERT_EQ(words[to], wordsBefore[i]);
            ASSERT_EQ(bytes[to], bytesBefore[i]);
            for (std::size_t k = 0; k < 3; ++k)
                ASSERT_EQ(triples[3 * to + k], triplesBefore[3 * i + k]);
            ASSERT_EQ(records[to].x, recordsBefore[i].x);
            ASSERT_EQ(records[to].cost, recordsBefore[i].cost);
            ASSERT_EQ(records[to].partner, recordsBefore[i].partner);
            ASSERT_EQ(bits.Test(map[i]), bitsBefore.Test(static_cast<std::int32_t>(i)));
        }
    }
}

}  // namespace
}  // namespace korvalite::core
