// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace korva {

/// A file on its way: it is written under another name in the folder of `path` and takes its own
/// name when it is complete, so a file that was there before survives a failure. Unless it was
/// committed, the destructor deletes it.
class PartialFile {
public:
    explicit PartialFile(const std::filesystem::path& path);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    /// Where to write. Nothing is there yet.
    [[nodiscard]] const std::filesystem::path& partialPath() const { return partialPath_; }

    /// Gives the file its name; it must be closed. Throws Error(CannotWrite) if that fails.
    void commit();

    /// Throws Error(CannotWrite): "Cannot write PATH: REASON".
    [[noreturn]] void fail(const char* reason) const;

    /// Deletes every file that is not committed, and lets no other be committed: for a process that
    /// is about to end without destructors. Any thread may call it.
    static void abandonAll();

private:
    std::filesystem::path path_;
    std::filesystem::path partialPath_;
    bool isCommitted_ = false;
};

}  // namespace korva
