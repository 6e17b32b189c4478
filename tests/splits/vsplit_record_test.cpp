// SPDX-License-Identifier: MIT
#include "splits/vsplit_record.h"

#include "splits/vsplit_samples.h"

#include <gtest/gtest.h>

#include <vector>

namespace korvalite::core {
namespace {

using test::kAllFormats;
using test::VSplitSamples;

template <typename T>
std::vector<T> copyOf(std::span<T> items) {
    return {items.begin(), items.end()};
}

TEST(VSplitRecord, ABareRecordIs24BytesPlusItsTwoLists) {
    VSplit split;
    EXPECT_EQ(vsplitWords(split, {}) * 4, 24U);
    split.corners = {1, 2, 3};
    split.removedTriangles = {4, 5};
    split.savedUVs.resize(7);
    split.cornerUVIndices.resize(7);
    split.uvIndexPairs.resize(7);
    EXPECT_EQ(vsplitWords(split, {}) * 4, 24U + 4 * 5);
    std::vector<std::uint32_t> words;
    appendVSplit(words, split, {});
    EXPECT_EQ(words.size(), 11U);
}

TEST(VSplitRecord, ColorsAddFourBytesAndUVsTwelvePlusTheirLists) {
    VSplit split;
    split.savedUVs.resize(2);
    split.cornerUVIndices.resize(3);
    split.uvIndexPairs.resize(2);
    EXPECT_EQ(vsplitWords(split, {true, false}) * 4, 28U);
    EXPECT_EQ(vsplitWords(split, {false, true}) * 4, 24U + 12 + 4 * (3 + 4 + 2 * 2));
    EXPECT_EQ(vsplitWords(split, {true, true}) * 4, 28U + 12 + 4 * (3 + 4 + 2 * 2));
}

TEST(VSplitRecord, FieldsAreInTheDocumentedOrder) {
    VSplitSamples samples;
    for (const VSplitFormat format : kAllFormats) {
        for (const VSplit& split : samples.next(50)) {
            std::vector<std::uint32_t> words{77};
            appendVSplit(words, split, format);
            ASSERT_EQ(words[0], 77U) << "the record is appended";
            words.erase(words.begin());
            EXPECT_EQ(words, test::wordsOf(split, format));
            EXPECT_EQ(words.size(), vsplitWords(split, format));
        }
    }
}

TEST(VSplitRecord, ViewGivesEveryField) {
    VSplitSamples samples;
    for (const VSplitFormat format : kAllFormats) {
        for (const VSplit& split : samples.next(50)) {
            std::vector<std::uint32_t> words;
            appendVSplit(words, split, format);
            const VSplitView view(words.data(), format);
            EXPECT_EQ(view.vertex(), split.vertex);
            EXPECT_EQ(view.position().x, split.position.x);
            EXPECT_EQ(view.position().y, split.position.y);
            EXPECT_EQ(view.position().z, split.position.z);
            EXPECT_EQ(copyOf(view.corners()), split.corners);
            EXPECT_EQ(copyOf(view.removedTriangles()), split.removedTriangles);
            EXPECT_EQ(view.words().size(), words.size());
            EXPECT_TRUE(!format.hasColors || view.savedColor() == split.savedColor);
            if (!format.hasUVs) {
                EXPECT_EQ(view.savedUVCount(), 0U);
                EXPECT_TRUE(view.cornerUVIndices().empty());
                EXPECT_TRUE(view.uvIndexPairWords().empty());
                continue;
            }
            EXPECT_EQ(copyOf(view.cornerUVIndices()), split.cornerUVIndices);
            ASSERT_EQ(view.savedUVCount(), split.savedUVs.size());
            ASSERT_EQ(view.uvIndexPairWords().size(), split.uvIndexPairs.size() * 2);
            for (std::uint32_t k = 0; k < view.savedUVCount(); ++k) {
                EXPECT_EQ(view.savedUV(k).u, split.savedUVs[k].u);
                EXPECT_EQ(view.savedUV(k).v, split.savedUVs[k].v);
                EXPECT_EQ(view.uvIndexPairWords()[k * 2], split.uvIndexPairs[k].oldIndex);
                EXPECT_EQ(view.uvIndexPairWords()[k * 2 + 1], split.uvIndexPairs[k].newIndex);
            }
        }
    }
}

TEST(VSplitRecord, ChangesThroughTheViewChangeTheRecord) {
    VSplitSamples samples;
    VSplit split = samples.next();
    split.corners = {1, 2};
    split.removedTriangles = {3};
    split.cornerUVIndices = {4, 5};
    split.savedUVs = {{0, 0}, {0, 0}};
    split.uvIndexPairs = {{6, 7}, {8, 9}};
    const VSplitFormat format{true, true};
    std::vector<std::uint32_t> words;
    appendVSplit(words, split, format);
    VSplitView view(words.data(), format);

    view.setVertex(split.vertex = 12345);
    view.setPosition(split.position = {-0.0F, 1e-40F, 3});
    view.corners()[1] = split.corners[1] = 99;
    view.removedTriangles()[0] = split.removedTriangles[0] = 98;
    view.setSavedColor(split.savedColor = 0xAABBCCDD);
    view.setSavedUV(1, split.savedUVs[1] = {0.25F, 0.75F});
    view.cornerUVIndices()[0] = split.cornerUVIndices[0] = 97;
    view.uvIndexPairWords()[3] = split.uvIndexPairs[1].newIndex = 96;
    EXPECT_EQ(words, test::wordsOf(split, format));
}

TEST(VSplitRecord, MeasureDetectsTruncatedRecords) {
    VSplitSamples samples;
    for (const VSplitFormat format : kAllFormats) {
        for (const VSplit& split : samples.next(20)) {
            const std::vector<std::uint32_t> words = test::wordsOf(split, format);
            for (std::size_t length = 0; length < words.size(); ++length) {
                // A copy, so that the sanitizer detects a read past its end.
                const std::vector<std::uint32_t> cut(words.data(), words.data() + length);
                const auto least = measureVSplit(cut, format);
                EXPECT_GT(least, length);
                EXPECT_LE(least, words.size());
            }
            EXPECT_EQ(measureVSplit(words, format), words.size());
            std::vector<std::uint32_t> longer = words;
            longer.resize(words.size() + 5, 0xFFFFFFFF);
            EXPECT_EQ(measureVSplit(longer, format), words.size());
        }
    }
}

TEST(VSplitRecord, HostileCountsAreMeasuredNotFollowed) {
    for (const VSplitFormat format : kAllFormats) {
        std::vector<std::uint32_t> words(16, 0xFFFFFFFF);
        EXPECT_GT(measureVSplit(words, format), std::uint64_t{0xFFFFFFFF});
        words[4] = 0;
        EXPECT_GT(measureVSplit(words, format), std::uint64_t{0xFFFFFFFF});
    }
}

}  // namespace
}  // namespace korvalite::core
