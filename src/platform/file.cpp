// SPDX-License-Identifier: MIT
#include "platform/file.h"

#include "platform/platform.h"

#include <utility>

namespace korvalite::core::platform {

File::~File() {
    close();
}

File::File(File&& other) noexcept
    : stream_(std::exchange(other.stream_, nullptr)),
      writeFailed_(std::exchange(other.writeFailed_, false)) {}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        close();
        stream_ = std::exchange(other.stream_, nullptr);
        writeFailed_ = std::exchange(other.writeFailed_, false);
    }
    return *this;
}

File File::open(const char* path, const char* mode) {
    return File(openFile(path, mode));
}

File File::createExclusively(const char* path) {
    return File(platform::createExclusively(path));
}

std::size_t File::read(void* destination, std::size_t byteCount) {
    if (!isOpen() || byteCount == 0) return 0;
    return std::fread(destination, 1, byteCount, stream_);
}

bool File::write(const void* source, std::size_t byteCount) {
    if (!isOpen()) return false;
    if (byteCount == 0) return true;
    if (std::fwrite(source, 1, byteCount, stream_) == byteCount) return true;
    writeFailed_ = true;
    return false;
}

bool File::seek(std::int64_t offset, int whence) {
    return isOpen() && platform::seek(stream_, offset, whence);
}

std::int64_t File::tell() {
    return isOpen() ? platform::tell(stream_) : -1;
}

std::int64_t File::bytesLeft() {
    const std::int64_t position = tell();
    if (position < 0 || !seek(0, SEEK_END)) return -1;
    const std::int64_t end = tell();
    if (!seek(position, SEEK_SET) || end < 0) return -1;
    return end > position ? end - position : 0;
}

bool File::flush() {
    if (!isOpen()) return false;
    if (std::fflush(stream_) == 0) return true;
    writeFailed_ = true;
    return false;
}

bool File::close() {
    if (!isOpen()) return false;
    // A seek flushes buffered bytes too, and only the stream's error flag shows if that failed.
    const bool wasClean = !writeFailed_ && std::ferror(stream_) == 0;
    const bool closed = std::fclose(std::exchange(stream_, nullptr)) == 0;
    writeFailed_ = false;
    return closed && wasClean;
}

}  // namespace korvalite::core::platform
