// SPDX-License-Identifier: MIT
#include "splits/vsplit_list.h"

#include "host/job_paths.h"
#include "platform/platform.h"
#include "splits/vsplit_list_fixture.h"
#include "support/allocation_counter.h"
#include "support/allocation_limit.h"
#include "support/full_disk.h"
#include "support/scratch_folder.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <new>
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

// The change that the level update makes to a record.
void exchangePosition(VSplitList& list, std::vector<VSplit>& model, std::int32_t i, FloatVec3 p) {
    VSplitView view = list.ensureLoaded(i);
    list.markDirty();
    view.setPosition(p);
    model[static_cast<std::size_t>(i)].position = p;
}

TEST_F(VSplitListTest, ComputedPageCapacityFollowsTheFormat) {
    const std::uint32_t expected[] = {491, 481, 410, 404};
    for (std::size_t i = 0; i < 4; ++i) {
        ScratchedList list;
        list.open(kAllFormats[i], kManyVertices, 2);
        EXPECT_EQ(list.recordsPerPage(), expected[i]);
        EXPECT_EQ(list.pageCapacity, 0U);
    }
}

TEST_F(VSplitListTest, RunningOutOfMemoryInOpenLeavesNoFile) {
    bool failed = true;
    for (std::uint64_t nth = 1; failed; ++nth) {
        {
            ScratchedList list;
            const test::FailingAllocation failure(nth);
            try {
                list.open({}, kManyVertices, 2);
            } catch (const std::bad_alloc&) {
            }
            failed = test::FailingAllocation::hasFailed();
        }
        ASSERT_EQ(filesInFolder(), 0U) << nth;
    }
}

TEST_F(VSplitListTest, PageCapacityForAllRecordsExceedsTheVertices) {
    ScratchedList list;
    list.pageCapacity = VSplitList::kAllRecords;
    list.open({}, 700, 2);
    EXPECT_EQ(list.recordsPerPage(), 701U);
    appendAll(list, samples.next(700));
    EXPECT_EQ(list.pageCount(), 700U);
    list.close();
    list.open({}, 0xFFFFFFFF, 2);
    EXPECT_EQ(list.recordsPerPage(), 0xFFFFFFFF);
}

TEST_F(VSplitListTest, OpenTwiceKeepsTheRecords) {
    ScratchedList list;
    list.open({}, kManyVertices, 2);
    list.append(samples.next());
    list.open({true, true}, kManyVertices, 2);
    EXPECT_EQ(list.NumVtxSplit(), 1U);
    EXPECT_TRUE(list.isOpen());
}

TEST_F(VSplitListTest, ShortListLeavesItsFileEmptyAndCloseDeletesIt) {
    ScratchedList list;
    list.open({}, kManyVertices, 2);
    const std::string path = list.path().c_str();
    EXPECT_EQ(path, folder / u8"VSplitList.data");
    appendAll(list, samples.next(490));
    EXPECT_EQ(std::filesystem::file_size(test::pathOfUtf8(path)), 0U);
    EXPECT_EQ(list.pageOffset(), 0);
    EXPECT_TRUE(list.dirty());
    list.close();
    EXPECT_FALSE(platform::exists(path.c_str()));
    EXPECT_TRUE(list.path().isNull());
    EXPECT_EQ(list.NumVtxSplit(), 0U);
    EXPECT_EQ(list.pageBytes(), 0);
    list.close();
}

TEST_F(VSplitListTest, DestructionDeletesTheFile) {
    {
        ScratchedList list;
        list.open({}, kManyVertices, 2);
        EXPECT_EQ(filesInFolder(), 1U);
    }
    EXPECT_EQ(filesInFolder(), 0U);
}

TEST_F(VSplitListTest, AFullPageSpillsAndLeavesAnEmptyOne) {
    const VSplitFormat format{true, false};
    const auto splits = samples.next(481);
    ScratchedList list;
    list.open(format, kManyVertices, 2);
    EXPECT_EQ(list.pageBytes(), 8) << "a page without records";
    for (const VSplit& split : splits) {
        EXPECT_EQ(list.pageFirst(), 0);
        list.append(split);
    }
    const auto length = static_cast<std::int64_t>(8 + recordBytes(splits, format));
    EXPECT_EQ(list.pageBytes(), length);
    list.spillIfFull();
    EXPECT_EQ(list.pageCount(), 0U);
    EXPECT_EQ(list.pageFirst(), 481);
    EXPECT_EQ(list.pageOffset(), length);
    EXPECT_EQ(list.pageBytes(), 8);
    EXPECT_FALSE(list.dirty());
    EXPECT_EQ(list.NumVtxSplit(), 481U);
}

TEST_F(VSplitListTest, APartialPageIsNotSpilled) {
    ScratchedList list;
    list.pageCapacity = 3;
    list.open({}, kManyVertices, 2);
    appendAll(list, samples.next(2));
    EXPECT_EQ(list.pageCount(), 2U);
    // A mirrored pair may overfill the page.
    list.append(samples.next());
    list.append(samples.next());
    list.spillIfFull();
    EXPECT_EQ(list.pageFirst(), 4);
}

// Appends as many of the splits as a page of this list holds, and takes that page.
void takeFirstPage(VSplitList& list, const std::vector<VSplit>& splits, std::uint32_t capacity) {
    list.pageCapacity = capacity;
    list.open({}, kManyVertices, 2);
    for (std::uint32_t i = 0; i < capacity; ++i)
        list.append(splits[i]);
    ASSERT_TRUE(list.takeFullPage());
}

TEST_F(VSplitListTest, ATakenPageIsStoredLater) {
    const auto splits = samples.next(8);
    ScratchedList list;
    takeFirstPage(list, splits, 3);
    EXPECT_EQ(list.pageFirst(), 3);
    EXPECT_EQ(list.pageCount(), 0U);
    EXPECT_EQ(test::readWhole(list.path().c_str()), "");
    list.append(splits[3]);
    list.storeFullPage();
    EXPECT_EQ(test::readWhole(list.path().c_str()).size(),
              static_cast<std::size_t>(list.pageOffset()));
    appendAll(list, {splits.begin() + 4, splits.end()});
    EXPECT_EQ(firstDifference(list, splits, {}), -1);
}

TEST_F(VSplitListTest, APageThatFillsUpDuringAStoreGrows) {
    const auto splits = samples.next(9);
    ScratchedList list;
    takeFirstPage(list, splits, 2);
    for (std::size_t i = 2; i < 7; ++i) {
        list.append(splits[i]);
        EXPECT_FALSE(list.takeFullPage());
    }
    EXPECT_EQ(list.pageCount(), 5U);
    list.storeFullPage();
    list.spillIfFull();
    EXPECT_EQ(list.pageFirst(), 7);
    appendAll(list, {splits.begin() + 7, splits.end()});
    EXPECT_EQ(firstDifference(list, splits, {}), -1);
}

TEST_F(VSplitListTest, AFullPageAlreadyOnDiskIsDroppedWithoutAStore) {
    const auto splits = samples.next(4);
    ScratchedList list;
    list.pageCapacity = 2;
    list.open({}, kManyVertices, 2);
    appendAll(list, {splits.begin(), splits.begin() + 2});
    list.append(splits[2]);
    list.append(splits[3]);
    (void)list.ensureLoaded(0);
    (void)list.ensureLoaded(3);
    ASSERT_FALSE(list.dirty());
    EXPECT_FALSE(list.takeFullPage());
    EXPECT_EQ(list.pageFirst(), 4);
    EXPECT_EQ(firstDifference(list, splits, {}), -1);
}

// Each thread appends under a lock and stores without it, as threads do in a decimation.
TEST_F(VSplitListTest, ThreadsStorePagesWhileOthersAppend) {
    constexpr std::size_t kThreads = 4;
    constexpr std::size_t kEach = 3000;
    const auto splits = samples.next(kThreads * kEach);
    std::vector<VSplit> model;
    std::mutex mutex;
    ScratchedList list;
    list.pageCapacity = 7;
    list.open({}, kManyVertices, 2 * kThreads);
    test::onThreads(kThreads, [&](std::size_t thread) {
        for (std::size_t i = 0; i < kEach; ++i) {
            std::unique_lock lock(mutex);
            model.push_back(splits[thread * kEach + i]);
            list.append(model.back());
            const bool tookPage = list.takeFullPage();
            lock.unlock();
            if (tookPage) list.storeFullPage();
        }
    });
    EXPECT_EQ(firstDifference(list, model, {}), -1);
}

TEST_F(VSplitListTest, ScratchFileHoldsPagesWithTheirLengths) {
    for (const VSplitFormat format : kAllFormats) {
        const auto splits = samples.next(7);
        ScratchedList list;
        list.pageCapacity = 3;
        list.open(format, kManyVertices, 2);
        appendAll(list, splits);

        std::vector<std::uint32_t> expected;
        for (std::size_t page = 0; page < 2; ++page) {
            const std::size_t begin = expected.size();
            expected.push_back(3);
            for (std::size_t i = page * 3; i < page * 3 + 3; ++i) {
                const auto words = wordsOf(splits[i], format);
                expected.insert(expected.end(), words.begin(), words.end());
            }
            expected.push_back(static_cast<std::uint32_t>((expected.size() + 1 - begin) * 4));
        }
        EXPECT_EQ(test::readWhole(list.path().c_str()), test::bytesOf(expected));
    }
}

TEST_F(VSplitListTest, EveryPageCapacityGivesTheSameRecords) {
    for (const VSplitFormat format : kAllFormats) {
        const auto splits = samples.next(1300);
        for (const std::uint32_t capacity : {1U, 2U, 7U, 0U, 1300U, VSplitList::kAllRecords}) {
            ScratchedList list;
            list.pageCapacity = capacity;
            list.open(format, kManyVertices, 2);
            appendAll(list, splits);
            EXPECT_EQ(firstDifference(list, splits, format), -1) << capacity;
        }
    }
}

TEST_F(VSplitListTest, WalksAndChangesMatchAPlainList) {
    for (const VSplitFormat format : kAllFormats) {
        auto model = samples.next(2500);
        ScratchedList list;
        list.open(format, kManyVertices, 2);
        appendAll(list, model);
        const auto count = static_cast<std::int32_t>(model.size());
        for (int round = 0; round < 6; ++round) {
            for (std::int32_t i = count - 1; i >= round * 300; --i)
                exchangePosition(list, model, i, samples.position());
            for (std::int32_t i = round * 300; i < count - round * 100; ++i)
                exchangePosition(list, model, i, samples.position());
        }
        EXPECT_EQ(firstDifference(list, model, format), -1);
    }
}

TEST_F(VSplitListTest, RandomAccessAndChangesMatchAPlainList) {
    const VSplitFormat format{true, true};
    auto model = samples.next(1500);
    ScratchedList list;
    list.pageCapacity = 50;
    list.open(format, kManyVertices, 2);
    appendAll(list, model);
    for (int k = 0; k < 5000; ++k) {
        const std::int32_t i = samples.number(1500);
        const auto at = static_cast<std::size_t>(i);
        VSplitView view = list.ensureLoaded(i);
        ASSERT_EQ(wordsOf(view), wordsOf(model[at], format));
        if (k % 3 != 0) continue;
        view.setSavedColor(model[at].savedColor = static_cast<std::uint32_t>(k));
        if (view.savedUVCount() > 0) view.setSavedUV(0, model[at].savedUVs[0] = {1, 2});
        list.markDirty();
    }
    EXPECT_EQ(firstDifference(list, model, format), -1);
}

TEST_F(VSplitListTest, PositionZeroIsLoadedDirectly) {
    ScratchedList list;
    list.pageCapacity = 2;
    const auto splits = samples.next(9);
    list.open({}, kManyVertices, 2);
    appendAll(list, splits);
    EXPECT_EQ(wordsOf(list.ensureLoaded(0)), wordsOf(splits[0], {}));
    EXPECT_EQ(list.pageOffset(), 0);
    EXPECT_EQ(list.pageFirst(), 0);
    EXPECT_EQ(list.pageCount(), 2U);
}

#ifndef _WIN32
TEST_F(VSplitListTest, PositionZeroNeedsNoPagesInBetween) {
    ScratchedList list;
    list.pageCapacity = 2;
    const auto splits = samples.next(9);
    list.open({}, kManyVertices, 2);
    appendAll(list, splits);
    const auto firstPage = 8 + recordBytes({splits[0], splits[1]}, {});
    std::filesystem::resize_file(test::pathOfUtf8(list.path().c_str()), firstPage);
    EXPECT_EQ(list.ensureLoaded(1).vertex(), kNone) << "the lengths that lead there are lost";
    EXPECT_EQ(wordsOf(list.ensureLoaded(0)), wordsOf(splits[0], {}));
    EXPECT_EQ(wordsOf(list.ensureLoaded(1)), wordsOf(splits[1], {}));
}
#endif

TEST_F(VSplitListTest, APageOnlyReadIsNotWritten) {
    ScratchedList list;
    list.pageCapacity = 2;
    list.open({}, kManyVertices, 2);
    appendAll(list, samples.next(6));
    (void)list.ensureLoaded(1);
    EXPECT_FALSE(list.dirty());
    list.markDirty();
    EXPECT_TRUE(list.dirty());
    (void)list.ensureLoaded(5);
    EXPECT_FALSE(list.dirty());
}

TEST_F(VSplitListTest, AppendAfterAccessFollowsTheLastRecord) {
    for (const std::size_t count : {5U, 6U}) {
        auto model = samples.next(count);
        ScratchedList list;
        list.pageCapacity = 3;
        list.open({}, kManyVertices, 2);
        appendAll(list, model);
        for (int k = 0; k < 10; ++k) {
            (void)list.ensureLoaded(k % 2);
            list.spillIfFull();
            model.push_back(samples.next());
            list.append(model.back());
            if (k % 3 == 0) list.spillIfFull();
        }
        EXPECT_EQ(firstDifference(list, model, {}), -1);
    }
}

TEST_F(VSplitListTest, AppendAndSpillAllocateNothingInSteadyState) {
    for (const VSplitFormat format : kAllFormats) {
        const auto splits = samples.next(2000);
        ScratchedList list;
        list.open(format, kManyVertices, 2);
        const test::AllocationCounter counter;
        appendAll(list, splits);
        const auto count = counter.count();
        EXPECT_GT(list.pageFirst(), 1500);
        EXPECT_EQ(count, 0U);
    }
}

TEST_F(VSplitListTest, TwoListsInOneFolderShareNoFile) {
    const auto first = samples.next(10);
    const auto second = samples.next(10);
    ScratchedList a;
    ScratchedList b;
    a.pageCapacity = b.pageCapacity = 2;
    a.open({}, kManyVertices, 2);
    b.open({}, kManyVertices, 2);
    EXPECT_EQ(std::string(b.path().c_str()), folder / u8"VSplitList1.data");
    appendAll(a, first);
    appendAll(b, second);
    EXPECT_EQ(firstDifference(a, first, {}), -1);
    a.close();
    EXPECT_EQ(firstDifference(b, second, {}), -1);
    b.close();
    EXPECT_EQ(filesInFolder(), 0U);
}

TEST_F(VSplitListTest, AFolderWithTheFilesNameIsSkipped) {
    std::filesystem::create_directory(test::pathOfUtf8(folder / u8"VSplitList.data"));
    ScratchedList list;
    list.open({}, kManyVertices, 2);
    EXPECT_EQ(std::string(list.path().c_str()), folder / u8"VSplitList1.data");
}

#ifndef _WIN32
TEST_F(VSplitListTest, ALinkWithTheFilesNameIsSkipped) {
    // The name looks free, as the link leads to no file.
    const std::string target = folder / u8"target";
    std::filesystem::create_symlink(test::pathOfUtf8(target),
                                    test::pathOfUtf8(folder / u8"VSplitList.data"));
    ScratchedList list;
    list.open({}, kManyVertices, 2);
    EXPECT_EQ(std::string(list.path().c_str()), folder / u8"VSplitList1.data");
    EXPECT_FALSE(platform::exists(target.c_str()));
}
#endif

TEST_F(VSplitListTest, WithoutAFolderThePagesStayInMemory) {
    SetJobDirectory((folder / u8"missing").c_str());
    const VSplitFormat format{false, true};
    auto model = samples.next(300);
    ScratchedList list;
    list.pageCapacity = 7;
    list.open(format, kManyVertices, 2);
    EXPECT_TRUE(list.path().isNull());
    appendAll(list, model);
    for (int k = 0; k < 1000; ++k)
        exchangePosition(list, model, samples.number(300), samples.position());
    EXPECT_EQ(firstDifference(list, model, format), -1);
    list.close();
    EXPECT_EQ(filesInFolder(), 0U);
}

#ifndef _WIN32
TEST_F(VSplitListTest, AFullDiskKeepsPagesInMemory) {
    const VSplitFormat format{true, true};
    for (const std::size_t room : {0U, 1U, 5000U, 30000U}) {
        auto model = samples.next(400);
        ScratchedList list;
        list.pageCapacity = 9;
        list.open(format, kManyVertices, 2);
        std::int64_t difference = 0;
        {
            const test::FullDisk disk(room);
            appendAll(list, model);
            for (int k = 0; k < 500; ++k)
                exchangePosition(list, model, samples.number(400), samples.position());
            difference = firstDifference(list, model, format);
        }
        EXPECT_EQ(difference, -1) << room;
        // Once there is room again, stale pages on disk do not replace those in memory.
        for (int k = 0; k < 500; ++k)
            exchangePosition(list, model, samples.number(400), samples.position());
        EXPECT_EQ(firstDifference(list, model, format), -1) << room;
    }
}

TEST_F(VSplitListTest, ADiskThatFillsUpLaterKeepsItsPages) {
    auto model = samples.next(200);
    ScratchedList list;
    list.pageCapacity = 5;
    list.open({}, kManyVertices, 2);
    appendAll(list, {model.begin(), model.begin() + 100});
    std::int64_t difference = 0;
    {
        const test::FullDisk disk(1000);
        for (std::size_t i = 100; i < 200; ++i) {
            list.append(model[i]);
            list.spillIfFull();
        }
        for (int k = 0; k < 500; ++k)
            exchangePosition(list, model, samples.number(200), samples.position());
        difference = firstDifference(list, model, {});
    }
    EXPECT_EQ(difference, -1);
}

TEST_F(VSplitListTest, ALostScratchFileGivesBlankRecords) {
    for (const VSplitFormat format : kAllFormats) {
        ScratchedList list;
        list.pageCapacity = 5;
        list.open(format, kManyVertices, 2);
        appendAll(list, samples.next(53));
        std::filesystem::resize_file(test::pathOfUtf8(list.path().c_str()), 2000);
        std::size_t blank = 0;
        for (const std::int32_t i : {52, 30, 0, 4, 20, 47, 1}) {
            const VSplitView view = list.ensureLoaded(i);
            if (view.vertex() != kNone) continue;
            ++blank;
            EXPECT_TRUE(view.corners().empty());
            EXPECT_TRUE(view.removedTriangles().empty());
            EXPECT_EQ(view.savedUVCount(), 0U);
            EXPECT_TRUE(view.cornerUVIndices().empty());
            EXPECT_TRUE(view.uvIndexPairWords().empty());
        }
        EXPECT_GT(blank, 0U);
        EXPECT_LT(blank, 7U);
    }
}

TEST_F(VSplitListTest, GarbageInTheScratchFileIsNeverFollowed) {
    for (const char fill : {'\0', '\x01', '\x08', '\xFF'}) {
        ScratchedList list;
        list.pageCapacity = 5;
        list.open({true, true}, kManyVertices, 2);
        appendAll(list, samples.next(53));
        const auto size = std::filesystem::file_size(test::pathOfUtf8(list.path().c_str()));
        test::writeWhole(list.path().c_str(), std::string(size, fill));
        for (const std::int32_t i : {52, 30, 0, 4, 20, 47, 1})
            (void)list.ensureLoaded(i);
    }
}
#endif

TEST_F(VSplitListTest, RecordsAreSavedNewestFirst) {
    const VSplitFormat format{true, true};
    const auto splits = samples.next(10);
    ScratchedList list;
    list.pageCapacity = 3;
    list.open(format, kManyVertices, 2);
    appendAll(list, splits);
    const std::string path = folder / u8"splits";
    platform::File out = platform::File::open(path.c_str(), "wb");
    EXPECT_TRUE(list.saveTo(out));
    EXPECT_TRUE(out.close());

    std::vector<std::uint32_t> expected{10};
    for (std::size_t i = splits.size(); i-- > 0;) {
        const auto words = wordsOf(splits[i], format);
        expected.insert(expected.end(), words.begin(), words.end());
    }
    EXPECT_EQ(test::readWhole(path), test::bytesOf(expected));
}

#ifndef _WIN32
TEST_F(VSplitListTest, SavingToAFullDiskFails) {
    ScratchedList list;
    list.pageCapacity = VSplitList::kAllRecords;
    list.open({}, kManyVertices, 2);
    appendAll(list, samples.next(2000));
    platform::File out = platform::File::open((folder / u8"splits").c_str(), "wb");
    bool saved = true;
    {
        const test::FullDisk disk(1000);
        saved = list.saveTo(out);
    }
    EXPECT_FALSE(saved);
}
#endif

TEST_F(VSplitListTest, NoSplitsAreSavedAsFourZeroBytes) {
    ScratchedList list;
    const std::string path = folder / u8"splits";
    for (const bool isOpen : {false, true}) {
        if (isOpen) list.open({}, kManyVertices, 2);
        platform::File out = platform::File::open(path.c_str(), "wb");
        EXPECT_TRUE(list.saveTo(out));
        out.close();
        EXPECT_EQ(test::readWhole(path), std::string(4, '\0'));
    }
}

}  // namespace
}  // namespace korvalite::core
