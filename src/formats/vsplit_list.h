// SPDX-License-Identifier: MIT
//
// All splits of a decimation, in order of collapse: an array with random access. One page of them
// is in memory; full pages go to a scratch file, "VSplitList.data", in the job's folder.
//
// A page in memory is the on-disk form itself, an array of 32-bit words, with the place where each
// record begins: appending copies words, a page is written with one call, and nothing is allocated
// for a record. That works since applying a record only exchanges values and leaves every list
// length as it is: a page goes back to the place it came from.
//
// The pages keep the sizes of their first spill. There is no index of them: the length at the end
// of each page leads to the one before, and its own length to the one behind.
//
// Thread safety: none, but that a full page may be stored beside the rest (takeFullPage). Failures
// of the scratch file are not reported: pages that it does not take stay in memory, so that the
// list is right all the same. Lack of memory throws std::bad_alloc.
#pragma once

#include "formats/vsplit_page_store.h"
#include "formats/vsplit_record.h"
#include "platform/file.h"
#include "shell/base/heap_string.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace korvalite {

class VSplitList {
public:
    /// For pageCapacity: a page that never fills, so that all records stay in memory.
    static constexpr std::uint32_t kAllRecords = std::numeric_limits<std::uint32_t>::max();
    /// For the limit of loadFrom.
    static constexpr std::int32_t kNoLimit = -1;

    VSplitList() = default;
    ~VSplitList() { close(); }
    VSplitList(const VSplitList&) = delete;
    VSplitList& operator=(const VSplitList&) = delete;

    /// Records a page may hold before it spills, taken up by the next open(): 0 for a page of about
    /// 100,000 bytes, kAllRecords, or a number.
    std::uint32_t pageCapacity = 0;

    /// Starts an empty list; does nothing if one is open. `vertexCount` is the number of vertex
    /// records, an upper bound of the splits. `appendsBetweenSpills`: 2, or 2 for each thread.
    void open(VSplitFormat format, std::uint32_t vertexCount, std::uint32_t appendsBetweenSpills);

    /// Deletes the scratch file and releases everything; does nothing if not open.
    void close();

    [[nodiscard]] bool isOpen() const { return isOpen_; }

    /// Records in the whole list, on disk and in memory.
    [[nodiscard]] std::uint32_t NumVtxSplit() const { return numVtxSplit_; }

    /// Puts a copy of the record behind the last one. REQUIRES: isOpen().
    void append(const VSplit& split);

    /// Lets the page go if it holds pageCapacity records. Call after each collapse or mirrored
    /// pair.
    void spillIfFull() {
        if (takeFullPage()) storeFullPage();
    }

    /// The two halves of spillIfFull, so that nobody need wait for the disk. After true the caller
    /// must run the second, and other threads may append and take meanwhile; a page that fills up
    /// before that is over grows beyond its capacity.
    [[nodiscard]] bool takeFullPage();
    void storeFullPage();

    /// The record at a list position. REQUIRES: 0 <= position < NumVtxSplit(). The view is valid
    /// until the next append, spillIfFull, ensureLoaded, saveTo or close. A record that the scratch
    /// file has lost is blank.
    [[nodiscard]] VSplitView ensureLoaded(std::int32_t position);

    /// The record last asked for has been or is about to be changed.
    void markDirty() { dirty_ = true; }

    /// Writes the count and all records, newest first: the last section of a .kvm file. False if a
    /// write failed.
    bool saveTo(platform::File& file);

    /// Replaces the list by the newest `limit` records, or all, of the last section of a .kvm file;
    /// they lie in one page that never fills. Where the file is short or a record cannot be whole,
    /// the records before it are the list: they are the newest ones. False in that case.
    bool loadFrom(platform::File& file, VSplitFormat format, std::int32_t limit);

    /// The scratch file; null if there is none.
    [[nodiscard]] const HeapString& path() const { return store_.path(); }

    /// The page in memory: the list position of its first record, its number of records, how many
    /// it takes, and where it begins and how long it is in the scratch file, in bytes.
    [[nodiscard]] std::int32_t pageFirst() const { return pageFirst_; }
    [[nodiscard]] std::uint32_t pageCount() const {
        return static_cast<std::uint32_t>(recordStarts_.size());
    }
    [[nodiscard]] std::uint32_t recordsPerPage() const { return recordsPerPage_; }
    [[nodiscard]] std::int64_t pageOffset() const { return pageOffset_; }
    [[nodiscard]] std::int64_t pageBytes() const;
    /// It differs from its copy on disk.
    [[nodiscard]] bool dirty() const { return dirty_; }

private:
    void start(VSplitFormat format, std::uint32_t recordsPerPage);
    void reserveRecords(std::uint32_t count);
    void clearPage();
    [[nodiscard]] std::int64_t pageEnd() const { return pageFirst_ + std::int64_t{pageCount()}; }
    [[nodiscard]] bool isLastPage() const { return pageEnd() == std::int64_t{numVtxSplit_}; }

    void completePage();
    void writePageIfDirty();
    bool loadNextPage();
    bool loadPreviousPage();
    bool loadFirstPage();
    bool loadPage(std::int64_t offset, std::size_t expectedWords);
    VSplitView blankRecord();

    void readRecords(platform::File& file, std::uint32_t wanted);
    void reverseRecords();

    VSplitFormat format_;
    bool isOpen_ = false;
    bool dirty_ = false;
    std::uint32_t numVtxSplit_ = 0;
    std::uint32_t recordsPerPage_ = 0;
    std::int32_t pageFirst_ = 0;
    std::int64_t pageOffset_ = 0;

    // While open: room for the count word, then the records as they stand on disk.
    std::vector<std::uint32_t> pageWords_;
    std::vector<std::size_t> recordStarts_;  // ascending indices into pageWords_

    // The page that is being stored: its taker's, as is the store, until isStoring_ is false again.
    std::vector<std::uint32_t> fullPage_;
    std::int64_t fullPageOffset_ = 0;
    std::atomic<bool> isStoring_ = false;

    // The page that is being loaded: it replaces the other only when it has come whole.
    std::vector<std::uint32_t> incomingWords_;
    std::vector<std::size_t> incomingStarts_;

    std::array<std::uint32_t, kMaxEmptyVSplitWords> blank_{};
    VSplitPageStore store_;
};

}  // namespace korvalite
