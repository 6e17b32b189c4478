// SPDX-License-Identifier: MIT
#include "splits/vsplit_list_fixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace korvalite::core {
namespace {

using test::appendAll;
using test::firstDifference;
using test::kAllFormats;
using test::kManyVertices;
using test::recordBytes;
using test::ScratchedList;
using test::VSplitListTest;
using test::wordsOf;

// The last section of a .kvm file, assembled by hand.
class VSplitListLoad : public VSplitListTest {
protected:
    void SetUp() override {
        VSplitListTest::SetUp();
        splits = samples.next(kCount);
        bytes = test::bytesOf({kCount});
        for (std::size_t i = kCount; i-- > 0;) {
            bytes += test::bytesOf(wordsOf(splits[i], format));
            ends.push_back(bytes.size());
        }
    }
    bool load(VSplitList& list, const std::string& from, std::int32_t limit = -1) const {
        // Other bytes precede the section, as in a .kvm file.
        test::writeWhole(folder / u8"splits", "front" + from);
        platform::File file = reopened(u8"splits");
        file.seek(5, SEEK_SET);
        return list.loadFrom(file, format, limit);
    }
    std::vector<VSplit> newest(std::size_t count) const {
        return {splits.end() - static_cast<std::ptrdiff_t>(count), splits.end()};
    }

    static constexpr std::uint32_t kCount = 30;
    VSplitFormat format{true, true};
    std::vector<VSplit> splits;
    std::string bytes;
    std::vector<std::size_t> ends;  // of each record in `bytes`
};

TEST_F(VSplitListLoad, WithoutALimitAllRecordsAreAtTheirPositions) {
    ScratchedList list;
    list.pageCapacity = 2;
    EXPECT_TRUE(load(list, bytes));
    EXPECT_EQ(firstDifference(list, splits, format), -1);
    EXPECT_TRUE(list.isOpen());
    EXPECT_TRUE(list.dirty());
    EXPECT_EQ(list.pageCount(), kCount) << "all in one page";
    EXPECT_EQ(list.recordsPerPage(), kCount + 1);
    EXPECT_EQ(list.pageBytes(), static_cast<std::int64_t>(8 + recordBytes(splits, format)));
}

TEST_F(VSplitListLoad, SavingAndLoadingManyChunksChangesNothing) {
    for (const VSplitFormat some : kAllFormats) {
        format = some;
        const auto model = samples.next(5000);
        ScratchedList list;
        list.open(format, kManyVertices, 2);
        appendAll(list, model);
        platform::File out = platform::File::open((folder / u8"many").c_str(), "wb");
        EXPECT_TRUE(list.saveTo(out));
        out.close();
        for (const std::int32_t limit : {-1, 0, 1, 4000}) {
            ScratchedList loaded;
            platform::File in = reopened(u8"many");
            EXPECT_TRUE(loaded.loadFrom(in, format, limit));
            const auto kept = limit < 0 ? 5000 : limit;
            EXPECT_EQ(firstDifference(loaded, {model.end() - kept, model.end()}, format), -1);
        }
    }
}

TEST_F(VSplitListLoad, LimitKeepsTheNewest) {
    for (const std::int32_t limit : {1, 7, 29, 30}) {
        ScratchedList list;
        EXPECT_TRUE(load(list, bytes, limit));
        EXPECT_EQ(firstDifference(list, newest(static_cast<std::size_t>(limit)), format), -1);
    }
}

TEST_F(VSplitListLoad, LimitZeroReadsNone) {
    ScratchedList list;
    EXPECT_TRUE(load(list, bytes, 0));
    EXPECT_EQ(list.NumVtxSplit(), 0U);
    EXPECT_TRUE(list.isOpen());
    EXPECT_EQ(list.pageBytes(), 8);
}

TEST_F(VSplitListLoad, OtherNegativeLimitReadsNone) {
    for (const std::int32_t limit : {-2, -2147483647 - 1}) {
        ScratchedList list;
        EXPECT_TRUE(load(list, bytes, limit));
        EXPECT_EQ(list.NumVtxSplit(), 0U);
    }
}

TEST_F(VSplitListLoad, LimitAboveTheTotalReadsAll) {
    ScratchedList list;
    EXPECT_TRUE(load(list, bytes, 31));
    EXPECT_EQ(list.NumVtxSplit(), kCount);
    EXPECT_TRUE(load(list, bytes, 0x7FFFFFFF));
    EXPECT_EQ(firstDifference(list, splits, format), -1);
}

TEST_F(VSplitListLoad, ReplacesAnOpenList) {
    ScratchedList list;
    list.open({}, kManyVertices, 2);
    appendAll(list, samples.next(600));
    EXPECT_TRUE(load(list, bytes));
    EXPECT_EQ(firstDifference(list, splits, format), -1);
    list.close();
    EXPECT_EQ(filesInFolder(), 1U) << "only the saved file";
}

TEST_F(VSplitListLoad, LoadedListCanGrowAndSpill) {
    ScratchedList list;
    EXPECT_TRUE(load(list, bytes));
    auto model = splits;
    for (const VSplit& split : samples.next(40)) {
        model.push_back(split);
        list.append(split);
        list.spillIfFull();
    }
    EXPECT_GT(list.pageFirst(), 0);
    EXPECT_EQ(firstDifference(list, model, format), -1);
}

TEST_F(VSplitListLoad, TruncationAtEveryByteKeepsTheWholeRecords) {
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        std::size_t whole = 0;
        while (ends[whole] <= length)
            ++whole;
        ScratchedList list;
        EXPECT_FALSE(load(list, bytes.substr(0, length))) << length;
        ASSERT_EQ(list.NumVtxSplit(), whole) << length;
        EXPECT_EQ(firstDifference(list, newest(whole), format), -1) << length;
    }
}

TEST_F(VSplitListLoad, HostileTotalsLoadOnlyExistingRecords) {
    for (const std::uint32_t total : {31U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        const std::string hostile = test::bytesOf({total}) + bytes.substr(4);
        ScratchedList list;
        EXPECT_FALSE(load(list, hostile));
        EXPECT_EQ(firstDifference(list, splits, format), -1) << total;
    }
}

TEST_F(VSplitListLoad, HostileListCountEndsTheReading) {
    for (const std::uint32_t count : {0x00FFFFFFU, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        std::string hostile = bytes;
        // The count of the third record's corners.
        hostile.replace(ends[1] + 16, 4, test::bytesOf({count}));
        ScratchedList list;
        EXPECT_FALSE(load(list, hostile));
        EXPECT_EQ(firstDifference(list, newest(2), format), -1);
    }
}

TEST_F(VSplitListLoad, SurvivesEveryWordAsAHostileCount) {
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        for (const std::uint32_t value : {0U, 1U, 100U, 0xFFFFFFFFU}) {
            std::string hostile = bytes;
            hostile.replace(at, 4, test::bytesOf({value}));
            ScratchedList list;
            load(list, hostile);
            std::size_t length = 8;
            for (std::uint32_t i = 0; i < list.NumVtxSplit(); ++i)
                length += list.ensureLoaded(static_cast<std::int32_t>(i)).words().size_bytes();
            ASSERT_EQ(list.pageBytes(), static_cast<std::int64_t>(length)) << at;
        }
    }
}

TEST_F(VSplitListLoad, ClosedFileGivesAnEmptyList) {
    ScratchedList list;
    platform::File closed;
    EXPECT_FALSE(list.loadFrom(closed, format, -1));
    EXPECT_EQ(list.NumVtxSplit(), 0U);
    EXPECT_FALSE(list.saveTo(closed));
}

}  // namespace
}  // namespace korvalite::core
