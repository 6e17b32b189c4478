// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace korvalite {

/// The byte string of every path and message: an owned zero-terminated text, or null. Null and the
/// empty text are different states. A copy is always a deep copy of exactly length + 1 bytes;
/// nothing is shared, so threads may use their own strings freely. An allocation that fails throws.
///
/// The length is found by scanning: strings are short.
class HeapString {
public:
    /// Null.
    HeapString() = default;

    /// Null for a null text. Implicit, so that literals go wherever a string is asked for.
    HeapString(const char* text);  // NOLINT(google-explicit-constructor)

    /// Never null. The text ends at its first zero byte, if it holds one.
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
    /// Whether there are no characters: true for null too.
    [[nodiscard]] bool empty() const { return isNull() || text_[0] == '\0'; }
    /// Empty for null. Valid until the string changes.
    [[nodiscard]] std::string_view view() const;

    /// Index of the last character that is one of `set`, -1 if none.
    [[nodiscard]] std::int32_t FindLastOf(const char* set) const;

    /// Ends the text in front of character `index`; an index outside of the text does nothing.
    void cutAt(std::int32_t index);

    /// Whether the text ends in `suffix`, letter case ignored. A suffix without a leading "." is
    /// taken with one in front.
    [[nodiscard]] bool EndsWith(const char* suffix) const;

    /// Appends the suffix, with its leading ".", unless EndsWith it. True if it was appended.
    bool EnsureSuffix(const char* suffix);

    /// The name between the last `/` or `\` and the last "." behind it, or the end if there is
    /// none. Null instead of no characters, so ".hidden" gives null.
    [[nodiscard]] HeapString GetFileBaseName() const;

private:
    std::unique_ptr<char[]> text_;
};

/// If one side is null or empty, a copy of the other: two nulls give null.
HeapString operator+(const HeapString& left, const HeapString& right);

/// -1, 0 or 1. At most `limit` characters count; a limit below 1 is none. Null equals null and the
/// empty text, and is below all else. The first form folds ASCII a to z onto A to Z, the second
/// compares bytes as signed numbers.
int CompareNoCase(const char* left, const char* right, std::int32_t limit = 0);
int CompareExact(const char* left, const char* right, std::int32_t limit = 0);

/// ASCII a to z to A to Z, any other byte as it is: the folding of CompareNoCase.
constexpr unsigned char foldCase(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'a' && byte <= 'z' ? static_cast<unsigned char>(byte - 'a' + 'A') : byte;
}

}  // namespace korvalite
