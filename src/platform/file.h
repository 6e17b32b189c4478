// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace korvalite::platform {

// Owns one open file and closes it. Every call on a closed File fails and does nothing else. Used
// by one thread at a time.
//
// Writes are buffered: a full disk may show at write, flush or close, whichever comes to move the
// bytes. Once a write has failed, close reports it too, so a writer may write everything and look
// at the result of close alone.
//
// A file open for both directions needs a seek or flush between reading and writing, as std::FILE.
class File {
public:
    // Closed.
    File() = default;
    ~File();

    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // As openFile and createExclusively of platform.h; the result is closed if that failed.
    static File open(const char* path, const char* mode);
    static File createExclusively(const char* path);

    bool isOpen() const { return stream_ != nullptr; }
    explicit operator bool() const { return isOpen(); }

    // The bytes read: less than asked for at the end of the file or after an error.
    std::size_t read(void* destination, std::size_t byteCount);

    // True if all bytes were taken. No bytes always are, on an open file.
    bool write(const void* source, std::size_t byteCount);

    // `whence` is SEEK_SET, SEEK_CUR or SEEK_END. Seeking beyond the end is allowed.
    bool seek(std::int64_t offset, int whence);

    // The position from the start in bytes; -1 if closed or not seekable.
    std::int64_t tell();

    // The bytes between the position and the end of the file, 0 at or beyond the end; -1 if closed
    // or not seekable (a pipe). The position stays. A seek in disguise, so it costs the read
    // buffer: for use before an allocation, not for each byte.
    std::int64_t bytesLeft();

    // True if the system took everything that was written so far.
    bool flush();

    // Closes. True if everything that was ever written reached the system.
    bool close();

    // For the formatting calls of the library; null if closed. Still owned here.
    std::FILE* stream() const { return stream_; }

private:
    explicit File(std::FILE* stream) : stream_(stream) {}

    std::FILE* stream_ = nullptr;
    bool writeFailed_ = false;
};

}  // namespace korvalite::platform
