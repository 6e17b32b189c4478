// SPDX-License-Identifier: MIT
#include "korva/io/output_file.h"

#include "korva/io/input_file.h"

#include <korvalite/korvalite.h>

#include <string>
#include <system_error>

namespace korva {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20U;

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

OutputFile::OutputFile(const std::filesystem::path& path)
    : path_(path), partialPath_(partialNameFor(path)) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) fail("it is a folder.");
    stream_.open(partialPath_, std::ios::binary | std::ios::trunc);
    if (!stream_) fail("the folder does not exist or is protected.");
    buffer_.reserve(kBlock);
}

OutputFile::~OutputFile() {
    if (isCommitted_) return;
    stream_.close();
    std::error_code ignored;
    std::filesystem::remove(partialPath_, ignored);
}

void OutputFile::write(const void* bytes, std::size_t byteCount) {
    const char* from = static_cast<const char*>(bytes);
    if (buffer_.size() + byteCount > kBlock) flush();
    if (byteCount > kBlock) {
        if (!stream_.write(from, static_cast<std::streamsize>(byteCount)))
            fail("the disk is full.");
        return;
    }
    buffer_.insert(buffer_.end(), from, from + byteCount);
}

void OutputFile::finish() {
    if (isFinished_) return;
    flush();
    stream_.close();
    if (!stream_) fail("the disk is full.");
    isFinished_ = true;
}

void OutputFile::commit() {
    finish();
    std::error_code failure;
    std::filesystem::rename(partialPath_, path_, failure);
    if (failure) fail("a file of that name is there, and is protected or in use.");
    isCommitted_ = true;
}

void OutputFile::flush() {
    if (!stream_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size())))
        fail("the disk is full.");
    buffer_.clear();
}

void OutputFile::fail(const char* reason) const {
    throw korvalite::Error(korvalite::ErrorCode::CannotWrite,
                           "Cannot write " + textOf(path_) + ": " + reason);
}

}  // namespace korva
