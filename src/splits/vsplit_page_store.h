// SPDX-License-Identifier: MIT
//
// Stores the pages of a split list that are not in use in a scratch file; pages
// that the file does not accept stay in memory. Pages are contiguous from offset 0, both in the
// file and in memory:
//
//   u32 number of records | the records | u32 length of the page in bytes, including both words
//
// Thread safety: none.
#pragma once

#include "base/heap_string.h"
#include "platform/file.h"

#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace korvalite::core {

class VSplitPageStore {
public:
    VSplitPageStore() = default;
    ~VSplitPageStore() { close(); }
    VSplitPageStore(const VSplitPageStore&) = delete;
    VSplitPageStore& operator=(const VSplitPageStore&) = delete;

    /// Creates the scratch file in a folder (if empty, the current one) under the first free name,
    /// starting with "VSplitList.data". Never
    /// touches an existing file, such as another process's. If no file can be created, every page
    /// stays in memory. REQUIRES: closed.
    void open(const HeapString& folder);

    /// Closes and deletes the scratch file, and forgets all pages.
    void close();

    /// Stores a page, with its count and length words, at an offset in bytes. Replaces a page that
    /// is already there, which must have the same length unless it is the last. A page that cannot
    /// be read back from disk stays in memory.
    void put(std::int64_t offset, std::span<const std::uint32_t> page);

    /// Reads words from an offset in a stored page and returns the number of words read. Those past
    /// the end of that page are meaningless.
    std::size_t read(std::int64_t offset, std::span<std::uint32_t> words);

    /// The length in bytes of the page that ends at an offset; 0 if it cannot be read.
    std::int64_t lengthOfPageBefore(std::int64_t offset);

    /// Null if there is no scratch file.
    [[nodiscard]] const HeapString& path() const { return path_; }

private:
    using KeptPages = std::map<std::int64_t, std::vector<std::uint32_t>>;

    /// The page in memory that holds the byte at an offset.
    [[nodiscard]] KeptPages::const_iterator keptPageAt(std::int64_t offset) const;
    bool writeToFile(std::int64_t offset, std::span<const std::uint32_t> page);
    bool fileHolds(std::int64_t offset, std::span<const std::uint32_t> page);

    platform::File file_;
    HeapString path_;
    KeptPages kept_;  // the pages that are not in the file, by offset
};

}  // namespace korvalite::core
