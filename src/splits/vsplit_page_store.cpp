// SPDX-License-Identifier: MIT
#include "splits/vsplit_page_store.h"

#include "base/names.h"
#include "platform/platform.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <utility>

namespace korvalite::core {

namespace {

constexpr std::int64_t kOffsetPerWord = sizeof(std::uint32_t);

// How many names to try if a free name turns out not to be: another process was faster, or it is
// the name of a folder.
constexpr int kMaxNames = 100;

std::int64_t byteLength(std::span<const std::uint32_t> page) {
    return static_cast<std::int64_t>(page.size_bytes());
}

}  // namespace

void VSplitPageStore::open(const HeapString& folder) {
    HeapString candidate = GetFreeFilePath(folder, "VSplitList.data");
    for (int i = 0; i < kMaxNames; ++i) {
        file_ = platform::File::createExclusively(candidate.c_str());
        if (file_) {
            path_ = std::move(candidate);  // cannot fail: the path is needed to delete the file
            break;
        }
        candidate = IncrementFileName(candidate);
    }
    // Pages are read and written whole. A buffer would gain nothing, and could keep bytes that a
    // full disk has refused and return them to later reads.
    if (file_) std::setvbuf(file_.stream(), nullptr, _IONBF, 0);
}

void VSplitPageStore::close() {
    file_.close();
    if (platform::isRegularFile(path_.c_str())) platform::deleteFile(path_.c_str());
    path_ = HeapString();
    kept_.clear();
}

void VSplitPageStore::put(std::int64_t offset, std::span<const std::uint32_t> page) {
    const auto kept = kept_.find(offset);
    if (kept != kept_.end()) {
        kept->second.assign(page.begin(), page.end());
        return;
    }
    // The length word of a longer page would overflow.
    const bool hasLengthWord = byteLength(page) <= std::numeric_limits<std::uint32_t>::max();
    if (hasLengthWord && writeToFile(offset, page)) return;
    kept_.emplace(offset, std::vector<std::uint32_t>(page.begin(), page.end()));
}

std::size_t VSplitPageStore::read(std::int64_t offset, std::span<std::uint32_t> words) {
    const auto kept = keptPageAt(offset);
    if (kept != kept_.end()) {
        const auto from = static_cast<std::size_t>((offset - kept->first) / kOffsetPerWord);
        const std::size_t count = std::min(words.size(), kept->second.size() - from);
        std::copy_n(kept->second.data() + from, count, words.data());
        return count;
    }
    if (!file_.seek(offset, SEEK_SET)) return 0;
    return file_.read(words.data(), words.size_bytes()) / static_cast<std::size_t>(kOffsetPerWord);
}

std::int64_t VSplitPageStore::lengthOfPageBefore(std::int64_t offset) {
    if (offset < kOffsetPerWord) return 0;
    const auto kept = keptPageAt(offset - kOffsetPerWord);
    if (kept != kept_.end()) return offset - kept->first;
    std::uint32_t length = 0;
    return read(offset - kOffsetPerWord, {&length, 1}) == 1 ? length : 0;
}

VSplitPageStore::KeptPages::const_iterator VSplitPageStore::keptPageAt(std::int64_t offset) const {
    auto page = kept_.upper_bound(offset);
    if (page == kept_.begin()) return kept_.end();
    --page;
    return offset < page->first + byteLength(page->second) ? page : kept_.end();
}

bool VSplitPageStore::writeToFile(std::int64_t offset, std::span<const std::uint32_t> page) {
    return file_.seek(offset, SEEK_SET) && file_.write(page.data(), page.size_bytes()) &&
           file_.flush() && fileHolds(offset, page);
}

bool VSplitPageStore::fileHolds(std::int64_t offset, std::span<const std::uint32_t> page) {
    if (!file_.seek(offset, SEEK_SET)) return false;
    std::array<std::uint32_t, 4096> chunk{};
    while (!page.empty()) {
        const auto expected = page.first(std::min(page.size(), chunk.size()));
        if (file_.read(chunk.data(), expected.size_bytes()) != expected.size_bytes() ||
            !std::equal(expected.begin(), expected.end(), chunk.begin()))
            return false;
        page = page.subspan(expected.size());
    }
    return true;
}

}  // namespace korvalite::core
