// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace korva {

/// How much of a file is read or written at once.
inline constexpr std::size_t kFileBlock = std::size_t{1} << 20U;

/// Called for every block that is read: the bytes so far, and the size of the file. May throw to
/// cancel.
using ByteProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// A regular file, read from its start to its end through a buffer. Throws
/// korvalite::Error(CannotRead) if it cannot be opened or a read fails.
class InputFile {
public:
    explicit InputFile(const std::filesystem::path& path, ByteProgress progress = {});

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::uint64_t size() const { return size_; }

    /// The bytes that are left.
    [[nodiscard]] std::uint64_t left() const { return size_ > position_ ? size_ - position_ : 0; }

    /// Returns the number of bytes read, which is less than `byteCount` only at the end of the
    /// file.
    std::size_t read(void* to, std::size_t byteCount);

    /// Takes the next line, without its end (LF, CR LF or CR). The view is valid until the next
    /// call. False at the end. A line may be of any length.
    bool readLine(std::string_view& line);

    /// Goes back to the start.
    void rewind();

private:
    /// Keeps what is not taken yet and reads on. False at the end.
    bool fill();
    void takeLine(std::string_view& line, std::size_t end, std::size_t markBytes);

    std::filesystem::path path_;
    ByteProgress progress_;
    std::ifstream stream_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;  // of what was taken
    std::uint64_t loaded_ = 0;    // bytes of the file that the buffer has seen
    std::vector<char> buffer_;
    std::size_t begin_ = 0;  // of what is not taken yet
    std::size_t end_ = 0;
};

/// Throws korvalite::Error(CannotRead): "Cannot read NAME: REASON".
[[noreturn]] void failToRead(const std::filesystem::path& path, const std::string& reason);

/// A path as text for people, in UTF-8, and back.
[[nodiscard]] std::string textOf(const std::filesystem::path& path);
[[nodiscard]] std::filesystem::path pathOf(const std::string& text);

}  // namespace korva
