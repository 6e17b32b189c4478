// SPDX-License-Identifier: MIT
//
// All splits of a decimation in order of collapse, as a random-access array. One page of them is in
// memory; full pages go to a scratch file, "VSplitList.data".
//
// A page in memory has the on-disk form, an array of 32-bit words, plus the start of each record:
// appending copies words, a page is written with one call, and records need no allocation. This
// works because applying a record only swaps values and never changes the length of a list, so a
// page can be written back where it came from.
//
// Pages keep the size of their first spill. There is no index of pages: the length at the end of
// each page leads to the previous one, and the page's own length to the next.
//
// Thread safety: none, except that a full page may be stored while other calls continue
// (takeFullPage). Failures of the scratch file are not reported: pages that it does not accept stay
// in memory, so the list is still complete. Throws std::bad_alloc if out of memory.
#pragma once

#include "base/heap_string.h"
#include "platform/file.h"
#include "splits/vsplit_page_store.h"
#include "splits/vsplit_record.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace korvalite::core {

class VSplitList {
public:
    /// For pageCapacity: a page that never fills, which keeps all records in memory.
    static constexpr std::uint32_t kAllRecords = std::numeric_limits<std::uint32_t>::max();
    /// For the limit of loadFrom.
    static constexpr std::int32_t kNoLimit = -1;

    VSplitList() = default;
    ~VSplitList() { close(); }
    VSplitList(const VSplitList&) = delete;
    VSplitList& operator=(const VSplitList&) = delete;

    /// The number of records that a page may hold before it spills, used by the next open(): a
    /// number, kAllRecords, or 0 for a page of about 100,000 bytes.
    std::uint32_t pageCapacity = 0;

    /// Where the next open() creates the scratch file; the current folder if empty.
    HeapString scratchFolder;

    /// Starts an empty list; does nothing if one is open. `vertexCount` is the number of vertex
    /// records, an upper bound for the splits. `appendsBetweenSpills`: 2 per thread.
    void open(VSplitFormat format, std::uint32_t vertexCount, std::uint32_t appendsBetweenSpills);

    /// Deletes the scratch file and frees everything; does nothing if not open.
    void close();

    [[nodiscard]] bool isOpen() const { return isOpen_; }

    /// The number of records in the whole list, on disk and in memory.
    [[nodiscard]] std::uint32_t NumVtxSplit() const { return numVtxSplit_; }

    /// Appends a copy of the record. REQUIRES: isOpen().
    void append(const VSplit& split);

    /// Spills the page if it holds pageCapacity records. Call after each collapse or mirrored pair.
    void spillIfFull() {
        if (takeFullPage()) storeFullPage();
    }

    /// The two halves of spillIfFull, so that other threads need not wait for the disk. If the
    /// first returns true, the caller must run the second; other threads may append and take
    /// meanwhile, and a page that fills up before the second has finished grows beyond its
    /// capacity.
    [[nodiscard]] bool takeFullPage();
    void storeFullPage();

    /// The record at a list position. REQUIRES: 0 <= position < NumVtxSplit(). The view is valid
    /// until the next append, spillIfFull, ensureLoaded, saveTo or close. A record that the scratch
    /// file has lost is blank.
    [[nodiscard]] VSplitView ensureLoaded(std::int32_t position);

    /// Declares that the record last requested has been or is about to be changed.
    void markDirty() { dirty_ = true; }

    /// Writes the count and all records, newest first: the last section of a .kvm file. False if a
    /// write failed.
    bool saveTo(platform::File& file);

    /// Replaces the list by the newest `limit` records, or all records, of the last section of a
    /// .kvm file, in one page that never fills. If the file is short or a record is incomplete,
    /// keeps the records before it, which are the newest, and returns false.
    bool loadFrom(platform::File& file, VSplitFormat format, std::int32_t limit);

    /// The path of the scratch file; null if there is none.
    [[nodiscard]] const HeapString& path() const { return store_.path(); }

    /// The page in memory: the list position of its first record, its number of records, its
    /// capacity, and its offset and length in the scratch file in bytes.
    [[nodiscard]] std::int32_t pageFirst() const { return pageFirst_; }
    [[nodiscard]] std::uint32_t pageCount() const {
        return static_cast<std::uint32_t>(recordStarts_.size());
    }
    [[nodiscard]] std::uint32_t recordsPerPage() const { return recordsPerPage_; }
    [[nodiscard]] std::int64_t pageOffset() const { return pageOffset_; }
    [[nodiscard]] std::int64_t pageBytes() const;
    /// Whether the page in memory differs from its copy on disk.
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

    // While open: room for the count word, then the records in their on-disk form.
    std::vector<std::uint32_t> pageWords_;
    std::vector<std::size_t> recordStarts_;  // ascending indices into pageWords_

    // The page being stored. While isStoring_ is true, this page and the store belong to the thread
    // that took the page.
    std::vector<std::uint32_t> fullPage_;
    std::int64_t fullPageOffset_ = 0;
    std::atomic<bool> isStoring_ = false;

    // The page being loaded. It replaces the current page only once it is complete.
    std::vector<std::uint32_t> incomingWords_;
    std::vector<std::size_t> incomingStarts_;

    std::array<std::uint32_t, kMaxEmptyVSplitWords> blank_{};
    VSplitPageStore store_;
};

}  // namespace korvalite::core
