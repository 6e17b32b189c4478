// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace korva {

/// A corner of a face as it is written: indices count from 1, negative ones from the last item
/// back.
struct ObjCorner {
    std::int64_t vertex = 0;
    std::int64_t uv = 0;
    bool hasUV = false;
    bool hasNormal = false;
};

/// A line of an OBJ file, taken word by word. Throws korvalite::Error(CannotRead), which names the
/// line, if a word is not what it should be. The path and the text must outlive it.
class ObjLine {
public:
    ObjLine(const std::filesystem::path& path, std::uint64_t number, std::string_view text)
        : path_(path), number_(number), at_(text.data()), end_(text.data() + text.size()) {}

    [[nodiscard]] std::uint64_t number() const { return number_; }

    /// Whether there is another word before the end of the line or a comment. The functions that
    /// take a word may only be called after this returned true.
    bool hasMore() {
        while (at_ != end_ && isBlank(*at_))
            ++at_;
        return at_ != end_ && *at_ != '#';
    }

    std::string_view takeWord();

    /// Like parseFloat.
    float takeFloat();

    /// Takes floats until `to` is full or the line ends, and returns their number.
    std::size_t takeFloats(std::span<float> to);

    ObjCorner takeCorner();

    [[noreturn]] void fail(const std::string& reason) const;

    static bool isBlank(char c) { return c == ' ' || c == '\t'; }

private:
    [[nodiscard]] std::string_view peekWord() const;
    std::int64_t takeIndex(const char* wordBegin);
    [[noreturn]] void failAtWord(const char* wordBegin, const char* reason);

    const std::filesystem::path& path_;
    std::uint64_t number_;
    const char* at_;
    const char* end_;
};

}  // namespace korva
