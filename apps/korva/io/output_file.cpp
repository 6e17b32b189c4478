// SPDX-License-Identifier: MIT
#include "korva/io/output_file.h"

#include <utility>

namespace korva {

OutputFile::OutputFile(const std::filesystem::path& path, ByteProgress progress)
    : file_(path), progress_(std::move(progress)) {
    stream_.open(file_.partialPath(), std::ios::binary | std::ios::trunc);
    if (!stream_) file_.fail("the folder does not exist or is protected.");
    buffer_.reserve(kFileBlock);
}

void OutputFile::write(const void* bytes, std::size_t byteCount) {
    const char* from = static_cast<const char*>(bytes);
    if (buffer_.size() + byteCount > kFileBlock) flush();
    while (byteCount > kFileBlock) {
        writeOut(from, kFileBlock);
        from += kFileBlock;
        byteCount -= kFileBlock;
    }
    buffer_.insert(buffer_.end(), from, from + byteCount);
}

void OutputFile::finish() {
    if (isFinished_) return;
    flush();
    stream_.close();
    if (!stream_) file_.fail("the disk is full.");
    isFinished_ = true;
}

void OutputFile::commit() {
    finish();
    file_.commit();
}

void OutputFile::flush() {
    writeOut(buffer_.data(), buffer_.size());
    buffer_.clear();
}

void OutputFile::writeOut(const char* bytes, std::size_t byteCount) {
    if (!stream_.write(bytes, static_cast<std::streamsize>(byteCount)))
        file_.fail("the disk is full.");
    written_ += byteCount;
    if (progress_) progress_(written_, 0);
}

}  // namespace korva
