// SPDX-License-Identifier: MIT
#include "korva/io/input_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace korva {

namespace {

/// The first LF or CR from `from` on, or `end`. Searches piece by piece, because in a file that has
/// only one of the two, a search for the other would go on to the end.
std::size_t findLineEnd(const char* text, std::size_t from, std::size_t end) {
    constexpr std::size_t kPiece = 512;
    for (; from < end; from += kPiece) {
        std::size_t length = std::min(kPiece, end - from);
        const void* lf = std::memchr(text + from, '\n', length);
        if (lf != nullptr)
            length = static_cast<std::size_t>(static_cast<const char*>(lf) - text) - from;
        const void* cr = std::memchr(text + from, '\r', length);
        if (cr != nullptr) return static_cast<std::size_t>(static_cast<const char*>(cr) - text);
        if (lf != nullptr) return from + length;
    }
    return end;
}

}  // namespace

std::string textOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::filesystem::path pathOf(const std::string& text) {
    return {std::u8string(text.begin(), text.end())};
}

void failToRead(const std::filesystem::path& path, const std::string& reason) {
    throw korvalite::Error(korvalite::ErrorCode::CannotRead,
                           "Cannot read " + textOf(path) + ": " + reason);
}

InputFile::InputFile(const std::filesystem::path& path, ByteProgress progress)
    : path_(path), progress_(std::move(progress)) {
    std::error_code failure;
    const std::filesystem::file_status status = std::filesystem::status(path, failure);
    if (!std::filesystem::exists(status)) failToRead(path, "there is no such file.");
    if (std::filesystem::is_directory(status)) failToRead(path, "it is a folder.");
    if (!std::filesystem::is_regular_file(status)) failToRead(path, "it is not a file.");
    size_ = std::filesystem::file_size(path, failure);
    if (!failure) stream_.open(path, std::ios::binary);
    if (failure || !stream_) failToRead(path, "it cannot be opened; is it protected?");
    buffer_.resize(kFileBlock);
}

std::size_t InputFile::read(void* to, std::size_t byteCount) {
    auto* bytes = static_cast<char*>(to);
    std::size_t got = 0;
    while (got < byteCount) {
        if (begin_ == end_ && !fill()) break;
        const std::size_t part = std::min(byteCount - got, end_ - begin_);
        std::memcpy(bytes + got, buffer_.data() + begin_, part);
        begin_ += part;
        got += part;
    }
    position_ += got;
    return got;
}

bool InputFile::readLine(std::string_view& line) {
    std::size_t scanned = begin_;
    for (;;) {
        const std::size_t end = findLineEnd(buffer_.data(), scanned, end_);
        // A CR at the end of the buffer may have its LF in the next block.
        if (end != end_ && (buffer_[end] == '\n' || end + 1 != end_ || loaded_ == size_)) {
            const bool isPair = buffer_[end] == '\r' && end + 1 < end_ && buffer_[end + 1] == '\n';
            takeLine(line, end, isPair ? 2 : 1);
            return true;
        }
        const std::size_t kept = end - begin_;
        if (!fill()) break;
        scanned = begin_ + kept;
    }
    if (begin_ == end_) return false;
    takeLine(line, end_, 0);
    return true;
}

void InputFile::takeLine(std::string_view& line, std::size_t end, std::size_t markBytes) {
    line = std::string_view(buffer_.data() + begin_, end - begin_);
    position_ += end - begin_ + markBytes;
    begin_ = end + markBytes;
}

void InputFile::rewind() {
    stream_.clear();
    stream_.seekg(0);
    position_ = loaded_ = 0;
    begin_ = end_ = 0;
}

bool InputFile::fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (buffer_.size() - end_ < kFileBlock / 2) buffer_.resize(2 * buffer_.size());
    stream_.read(buffer_.data() + end_, static_cast<std::streamsize>(buffer_.size() - end_));
    if (stream_.bad()) failToRead(path_, "a read failed.");
    const auto got = static_cast<std::size_t>(stream_.gcount());
    end_ += got;
    loaded_ = got > 0 ? std::min(loaded_ + got, size_) : size_;
    if (progress_) progress_(loaded_, size_);
    return got > 0;
}

}  // namespace korva
