// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace korvalite::core::platform {

// Owns one open file and closes it. Every call on a closed File fails and does nothing else. For
// one thread at a time.
//
// Writes are buffered: a full disk may show at write, flush or close, whichever moves the bytes.
// Once a write has failed, close fails too, so a writer may write everything and check only the
// result of close.
//
// A file open for both reading and writing needs a seek or flush between the two, like std::FILE.
class File {
public:
    // A closed File.
    File() = default;
    ~File();

    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // Like openFile and createExclusively in platform.h; on failure the result is closed.
    static File open(const char* path, const char* mode);
    static File createExclusively(const char* path);

    bool isOpen() const { return stream_ != nullptr; }
    explicit operator bool() const { return isOpen(); }

    // Returns the bytes read: fewer than requested at the end of the file or after an error.
    std::size_t read(void* destination, std::size_t byteCount);

    // True if all bytes were accepted. Writing zero bytes to an open file always succeeds.
    bool write(const void* source, std::size_t byteCount);

    // `whence` is SEEK_SET, SEEK_CUR or SEEK_END. Seeking beyond the end is allowed.
    bool seek(std::int64_t offset, int whence);

    // The position from the start in bytes; -1 if closed or not seekable.
    std::int64_t tell();

    // The bytes between the position and the end of the file, 0 at or beyond the end; -1 if closed
    // or not seekable (a pipe). Leaves the position unchanged. It seeks, which discards the read
    // buffer: call it before an allocation, not for each byte.
    std::int64_t bytesLeft();

    // True if the system accepted everything written so far.
    bool flush();

    // True if everything ever written reached the system.
    bool close();

    // For the library's formatting calls; null if closed. Still owned by this object.
    std::FILE* stream() const { return stream_; }

private:
    explicit File(std::FILE* stream) : stream_(stream) {}

    std::FILE* stream_ = nullptr;
    bool writeFailed_ = false;
};

}  // namespace korvalite::core::platform
