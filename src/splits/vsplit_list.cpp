// SPDX-License-Identifier: MIT
#include "splits/vsplit_list.h"

#include <algorithm>

namespace korvalite::core {

namespace {

constexpr std::size_t kWordBytes = sizeof(std::uint32_t);
constexpr std::uint32_t kPageBytes = 100000;

// Room is reserved for at most this many records; a page that never fills grows as needed.
constexpr std::uint32_t kMaxReservedRecords = 4096;

// Words read from a .kvm file at a time.
constexpr std::size_t kReadWords = 65536;

constexpr std::uint32_t nominalRecordBytes(VSplitFormat format) {
    return (format.hasUVs ? 244U : 204U) + (format.hasColors ? 4U : 0U);
}

std::uint32_t recordsPerPageFor(std::uint32_t wanted, VSplitFormat format, std::uint32_t vertices) {
    if (wanted == 0) return kPageBytes / nominalRecordBytes(format) + 1;
    if (wanted == VSplitList::kAllRecords) return std::max(vertices, vertices + 1);
    return wanted;
}

// Finds the start of each record of a page and returns the index of the length word after the last;
// 0 if the words do not contain the whole page.
std::size_t findRecords(std::span<const std::uint32_t> page, VSplitFormat format,
                        std::vector<std::size_t>& starts) {
    starts.clear();
    if (page.empty()) return 0;
    std::size_t at = 1;
    for (std::uint32_t left = page[0]; left > 0; --left) {
        const std::uint64_t length = measureVSplit(page.subspan(at), format);
        if (length > page.size() - at) return 0;
        starts.push_back(at);
        at += static_cast<std::size_t>(length);
    }
    return at < page.size() ? at : 0;
}

// Compares signed numbers; a list has at most 2^31 - 1 positions.
std::uint32_t recordsToLoad(std::uint32_t total, std::int32_t limit) {
    if (limit != VSplitList::kNoLimit && limit < static_cast<std::int32_t>(total))
        return static_cast<std::uint32_t>(std::max(limit, 0));
    return std::min(total, std::uint32_t{std::numeric_limits<std::int32_t>::max()});
}

}  // namespace

void VSplitList::open(VSplitFormat format, std::uint32_t vertexCount,
                      std::uint32_t appendsBetweenSpills) {
    if (isOpen_) return;
    start(format, recordsPerPageFor(pageCapacity, format, vertexCount));
    const std::uint32_t records = std::min(recordsPerPage_, kMaxReservedRecords);
    reserveRecords(records + std::min(appendsBetweenSpills, kMaxReservedRecords));
}

void VSplitList::start(VSplitFormat format, std::uint32_t recordsPerPage) {
    isOpen_ = true;
    format_ = format;
    recordsPerPage_ = recordsPerPage;
    numVtxSplit_ = 0;
    pageFirst_ = 0;
    pageOffset_ = 0;
    clearPage();
    store_.open(scratchFolder);
}

void VSplitList::reserveRecords(std::uint32_t count) {
    recordStarts_.reserve(count);
    // Two extra words: the count before the records and the length after them.
    const std::size_t words = std::size_t{count} * nominalRecordBytes(format_) / kWordBytes + 2;
    pageWords_.reserve(words);
    fullPage_.reserve(words);
}

void VSplitList::clearPage() {
    pageWords_.assign(1, 0);
    recordStarts_.clear();
    dirty_ = false;
}

void VSplitList::close() {
    if (!isOpen_) return;
    isOpen_ = false;
    store_.close();
    numVtxSplit_ = 0;
    pageFirst_ = 0;
    pageOffset_ = 0;
    dirty_ = false;
    std::vector<std::uint32_t>().swap(pageWords_);
    std::vector<std::size_t>().swap(recordStarts_);
    std::vector<std::uint32_t>().swap(fullPage_);
    isStoring_ = false;
    std::vector<std::uint32_t>().swap(incomingWords_);
    std::vector<std::size_t>().swap(incomingStarts_);
}

std::int64_t VSplitList::pageBytes() const {
    return isOpen_ ? static_cast<std::int64_t>((pageWords_.size() + 1) * kWordBytes) : 0;
}

void VSplitList::append(const VSplit& split) {
    if (!isLastPage()) (void)ensureLoaded(static_cast<std::int32_t>(numVtxSplit_ - 1));
    const std::size_t begin = pageWords_.size();
    appendVSplit(pageWords_, split, format_);
    recordStarts_.push_back(begin);
    ++numVtxSplit_;
    dirty_ = true;
}

bool VSplitList::takeFullPage() {
    if (recordStarts_.empty() || pageCount() < recordsPerPage_ || !isLastPage()) return false;
    if (isStoring_.load(std::memory_order_acquire)) return false;
    const bool isToStore = dirty_;
    const std::int64_t bytes = pageBytes();
    fullPage_.reserve(pageWords_.capacity());
    completePage();
    fullPage_.swap(pageWords_);
    fullPageOffset_ = pageOffset_;
    pageFirst_ += static_cast<std::int32_t>(pageCount());
    pageOffset_ += bytes;
    clearPage();
    isStoring_.store(isToStore, std::memory_order_relaxed);
    return isToStore;
}

void VSplitList::storeFullPage() {
    store_.put(fullPageOffset_, fullPage_);
    isStoring_.store(false, std::memory_order_release);
}

/// Writes the count before the records and the length after them.
void VSplitList::completePage() {
    pageWords_[0] = pageCount();
    pageWords_.push_back(static_cast<std::uint32_t>(pageBytes()));
}

void VSplitList::writePageIfDirty() {
    if (!dirty_ || recordStarts_.empty()) return;
    completePage();
    store_.put(pageOffset_, pageWords_);
    pageWords_.pop_back();
    dirty_ = false;
}

VSplitView VSplitList::ensureLoaded(std::int32_t position) {
    while (position >= pageEnd()) {
        writePageIfDirty();
        if (!loadNextPage()) return blankRecord();
    }
    while (position < pageFirst_) {
        writePageIfDirty();
        if (!(position == 0 ? loadFirstPage() : loadPreviousPage())) return blankRecord();
    }
    const auto inPage = static_cast<std::size_t>(position - pageFirst_);
    return {pageWords_.data() + recordStarts_[inPage], format_};
}

bool VSplitList::loadNextPage() {
    const std::int64_t next = pageEnd();
    // Pages are of similar size: reading a little more than this one usually gets the whole next
    // one.
    const std::size_t expectedWords = pageWords_.size() + pageWords_.size() / 4 + 256;
    if (!loadPage(pageOffset_ + pageBytes(), expectedWords)) return false;
    pageFirst_ = static_cast<std::int32_t>(next);
    return true;
}

bool VSplitList::loadPreviousPage() {
    const std::int64_t length = store_.lengthOfPageBefore(pageOffset_);
    if (length <= 0 || length > pageOffset_) return false;
    if (!loadPage(pageOffset_ - length, static_cast<std::size_t>(length) / kWordBytes))
        return false;
    pageFirst_ -= static_cast<std::int32_t>(pageCount());
    return true;
}

bool VSplitList::loadFirstPage() {
    if (!loadPage(0, kPageBytes / kWordBytes)) return false;
    pageFirst_ = 0;
    return true;
}

// Replaces the page in memory by the one at `offset`, except for pageFirst_. If that cannot be
// read, keeps the current one.
bool VSplitList::loadPage(std::int64_t offset, std::size_t expectedWords) {
    incomingWords_.clear();
    std::size_t end = 0;
    for (std::size_t wanted = expectedWords; end == 0; wanted = incomingWords_.size()) {
        const std::size_t had = incomingWords_.size();
        incomingWords_.resize(had + wanted);
        const std::size_t got = store_.read(offset + static_cast<std::int64_t>(had * kWordBytes),
                                            std::span(incomingWords_).subspan(had));
        incomingWords_.resize(had + got);
        end = findRecords(incomingWords_, format_, incomingStarts_);
        if (end == 0 && got < wanted) return false;
    }
    if (incomingStarts_.empty()) return false;
    incomingWords_.resize(end);
    pageWords_.swap(incomingWords_);
    recordStarts_.swap(incomingStarts_);
    pageOffset_ = offset;
    return true;
}

VSplitView VSplitList::blankRecord() {
    blank_.fill(0);
    VSplitView record(blank_.data(), format_);
    record.setVertex(kNone);
    return record;
}

bool VSplitList::saveTo(platform::File& file) {
    // COMPAT: newest first, the reverse of the list; .kvm files have it so.
    bool written = file.write(&numVtxSplit_, sizeof numVtxSplit_);
    for (auto i = static_cast<std::int32_t>(numVtxSplit_) - 1; i >= 0 && written; --i) {
        const std::span<const std::uint32_t> words = ensureLoaded(i).words();
        written = file.write(words.data(), words.size_bytes());
    }
    return written;
}

bool VSplitList::loadFrom(platform::File& file, VSplitFormat format, std::int32_t limit) {
    std::uint32_t total = 0;
    const bool hasTotal = file.read(&total, sizeof total) == sizeof total;
    const std::uint32_t wanted = hasTotal ? recordsToLoad(total, limit) : 0;

    close();
    start(format, wanted + 1);
    readRecords(file, wanted);
    numVtxSplit_ = pageCount();
    dirty_ = true;
    return hasTotal && pageCount() == wanted;
}

// Fills the page with up to `wanted` records of a .kvm file without reserving more memory than the
// rest of the file can fill.
void VSplitList::readRecords(platform::File& file, std::uint32_t wanted) {
    const std::int64_t bytesLeft = std::max(file.bytesLeft(), std::int64_t{0});
    auto unread = static_cast<std::uint64_t>(bytesLeft) / kWordBytes;
    const std::uint64_t most = std::min<std::uint64_t>(wanted, unread / minVSplitWords(format_));
    const std::uint64_t nominalWords = most * nominalRecordBytes(format_) / kWordBytes;
    recordStarts_.reserve(static_cast<std::size_t>(most));
    pageWords_.reserve(static_cast<std::size_t>(std::min(unread, nominalWords)) + 2);

    std::size_t at = 1;
    while (recordStarts_.size() < most) {
        const std::size_t inMemory = pageWords_.size() - at;
        const std::uint64_t length = measureVSplit(std::span(pageWords_).subspan(at), format_);
        if (length <= inMemory) {
            recordStarts_.push_back(at);
            at += static_cast<std::size_t>(length);
            continue;
        }
        if (length - inMemory > unread) break;
        const auto asked = static_cast<std::size_t>(std::min<std::uint64_t>(unread, kReadWords));
        pageWords_.resize(at + inMemory + asked);
        const std::size_t got =
            file.read(pageWords_.data() + at + inMemory, asked * kWordBytes) / kWordBytes;
        pageWords_.resize(at + inMemory + got);
        unread = got == asked ? unread - got : 0;
    }
    pageWords_.resize(at);
    reverseRecords();
}

// Reverses the order of the records in the page, in place: first the words of the whole page, then
// those of each record to put them in order again.
void VSplitList::reverseRecords() {
    const std::size_t end = pageWords_.size();
    std::reverse(pageWords_.begin() + 1, pageWords_.end());
    for (std::size_t k = 0; k < recordStarts_.size(); ++k) {
        const std::size_t recordEnd = k + 1 < recordStarts_.size() ? recordStarts_[k + 1] : end;
        const std::size_t newEnd = end - recordStarts_[k] + 1;
        const std::size_t newStart = end - recordEnd + 1;
        std::reverse(pageWords_.begin() + static_cast<std::ptrdiff_t>(newStart),
                     pageWords_.begin() + static_cast<std::ptrdiff_t>(newEnd));
        recordStarts_[k] = newStart;
    }
    std::reverse(recordStarts_.begin(), recordStarts_.end());
}

}  // namespace korvalite::core
