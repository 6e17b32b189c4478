// SPDX-License-Identifier: MIT
#include "korva/io/partial_file.h"

#include "korva/io/input_file.h"

#include <korvalite/korvalite.h>

#include <mutex>
#include <set>
#include <string>
#include <system_error>

namespace korva {

namespace {

/// The files that are neither committed nor deleted.
struct Pending {
    std::mutex mutex;
    std::set<const PartialFile*> files;
};

/// Never destroyed: another thread may abandon files while the process ends.
Pending& pending() {
    static Pending& instance = *new Pending;
    return instance;
}

/// A name that nothing has yet. Two processes that write the same file at once get the same one at
/// worst, and then one of the files.
std::filesystem::path partialNameFor(const std::filesystem::path& path) {
    std::error_code ignored;
    for (int i = 0;; ++i) {
        std::filesystem::path name = path;
        name += ".part" + (i == 0 ? std::string() : std::to_string(i));
        if (!std::filesystem::exists(name, ignored)) return name;
    }
}

}  // namespace

PartialFile::PartialFile(const std::filesystem::path& path)
    : path_(path), partialPath_(partialNameFor(path)) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) fail("it is a folder.");
    const std::lock_guard lock(pending().mutex);
    pending().files.insert(this);
}

PartialFile::~PartialFile() {
    const std::lock_guard lock(pending().mutex);
    pending().files.erase(this);
    if (isCommitted_) return;
    std::error_code ignored;
    std::filesystem::remove(partialPath_, ignored);
}

void PartialFile::commit() {
    const std::lock_guard lock(pending().mutex);
    std::error_code failure;
    std::filesystem::rename(partialPath_, path_, failure);
    if (failure) fail("a file of that name exists and is protected or in use.");
    isCommitted_ = true;
    pending().files.erase(this);
}

void PartialFile::fail(const char* reason) const {
    throw korvalite::Error(korvalite::ErrorCode::CannotWrite,
                           "Cannot write " + textOf(path_) + ": " + reason);
}

void PartialFile::abandonAll() {
    // Kept for good, so that whoever would commit waits for the end of the process.
    pending().mutex.lock();
    std::error_code ignored;
    for (const PartialFile* file : pending().files)
        std::filesystem::remove(file->partialPath_, ignored);
}

}  // namespace korva
