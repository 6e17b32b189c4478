// SPDX-License-Identifier: MIT
//
// Where the pages of a split list go that are not in use: to a scratch file in the job's folder,
// and whatever that file does not take stays in memory. Pages lie one behind the other from offset
// 0, in the file and in memory alike:
//
//   u32 number of records | the records | u32 length of the page in bytes, these two words included
//
// Thread safety: none.
#pragma once

#include "platform/file.h"
#include "shell/base/heap_string.h"

#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace korvalite {

class VSplitPageStore {
public:
    VSplitPageStore() = default;
    ~VSplitPageStore() { close(); }
    VSplitPageStore(const VSplitPageStore&) = delete;
    VSplitPageStore& operator=(const VSplitPageStore&) = delete;

    /// Creates the scratch file under the first free name from "VSplitList.data" on. A file that
    /// exists, another process's among them, is never touched. If none can be created, every page
    /// stays in memory. REQUIRES: closed.
    void open();

    /// Closes and deletes the scratch file, and forgets all pages.
    void close();

    /// Stores a page, with its count and length words, at an offset in bytes. A page that is there
    /// already is replaced, and must be as long unless it is the last. It counts as stored on disk
    /// only when it has been read back, and stays in memory otherwise.
    void put(std::int64_t offset, std::span<const std::uint32_t> page);

    /// Reads words from an offset that lies in a stored page; the number of words that came. What
    /// is read behind the end of that page means nothing.
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
    KeptPages kept_;  // by offset: the pages that are not in the file
};

}  // namespace korvalite
