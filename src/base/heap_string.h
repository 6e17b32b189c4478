// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace korvalite::core {

/// The byte string for all paths and messages: an owned zero-terminated text, or null. Null and the
/// empty text are different states. A copy is always a deep copy of exactly length + 1 bytes;
/// nothing is shared, so threads may use their own strings freely. A failed allocation throws.
///
/// The length is found by scanning, since strings are short.
class HeapString {
public:
    /// A null string.
    HeapString() = default;

    /// Null for a null text. Implicit, so literals can be passed as strings.
    HeapString(const char* text);  // NOLINT(google-explicit-constructor)

    /// Never null. The text ends at its first zero byte, if it has one.
    explicit HeapString(std::string_view text);

    HeapString(const HeapString& other) : HeapString(other.c_str()) {}
    HeapString(HeapString&& other) noexcept = default;
    HeapString& operator=(const HeapString& other);
    HeapString& operator=(HeapString&& other) noexcept = default;
    ~HeapString() = default;

    /// Null if the string is.
    [[nodiscard]] const char* c_str() const { return text_.get(); }
    /// 0 for null.
    [[nodiscard]] std::int32_t length() const;
    [[nodiscard]] bool isNull() const { return text_ == nullptr; }
    /// Whether there are no characters; also true for null.
    [[nodiscard]] bool empty() const { return isNull() || text_[0] == '\0'; }
    /// Empty for null. Valid until the string changes.
    [[nodiscard]] std::string_view view() const;

    /// The index of the last character that is in `set`; -1 if there is none.
    [[nodiscard]] std::int32_t FindLastOf(const char* set) const;

    /// Cuts the text before character `index`; no effect if that is out of range.
    void cutAt(std::int32_t index);

    /// Whether the text ends in `suffix`, ignoring case. A missing leading "." is added to the
    /// suffix.
    [[nodiscard]] bool EndsWith(const char* suffix) const;

    /// Appends the suffix, with its leading ".", unless EndsWith it. True if it was appended.
    bool EnsureSuffix(const char* suffix);

    /// The name from the last `/` or `\` to the last "." after it, or to the end if there is none.
    /// Null instead of an empty name, so ".hidden" gives null.
    [[nodiscard]] HeapString GetFileBaseName() const;

private:
    std::unique_ptr<char[]> text_;
};

/// If one side is null or empty, returns a copy of the other: two nulls give null.
HeapString operator+(const HeapString& left, const HeapString& right);

/// Return -1, 0 or 1. Compare at most `limit` characters; a limit below 1 means no limit. Null
/// equals null and the empty text, and is less than anything else. The first form maps ASCII a to z
/// to A to Z, the second compares bytes as signed numbers.
int CompareNoCase(const char* left, const char* right, std::int32_t limit = 0);
int CompareExact(const char* left, const char* right, std::int32_t limit = 0);

/// Maps ASCII a to z to A to Z and leaves other bytes unchanged, like CompareNoCase.
constexpr unsigned char foldCase(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'a' && byte <= 'z' ? static_cast<unsigned char>(byte - 'a' + 'A') : byte;
}

}  // namespace korvalite::core
