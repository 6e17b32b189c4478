// SPDX-License-Identifier: MIT
#include "base/heap_string.h"

#include <algorithm>
#include <array>

namespace korvalite::core {

namespace {

std::unique_ptr<char[]> joined(std::string_view left, std::string_view right) {
    const std::size_t size = left.size() + right.size();
    auto text = std::make_unique<char[]>(size + 1);
    std::copy(right.begin(), right.end(), std::copy(left.begin(), left.end(), text.get()));
    return text;
}

HeapString withLeadingDot(const char* suffix) {
    if (suffix != nullptr && suffix[0] == '.') return suffix;
    return HeapString(".") + suffix;
}

int sign(int difference) {
    return (difference > 0) - (difference < 0);
}

using ByteValue = int (*)(char);

int compare(const char* left, const char* right, std::int32_t limit, ByteValue valueOf) {
    const bool leftEmpty = left == nullptr || *left == '\0';
    const bool rightEmpty = right == nullptr || *right == '\0';
    if (leftEmpty && rightEmpty) return 0;
    if (left == nullptr) return -1;
    if (right == nullptr) return 1;
    for (std::int32_t i = 0; limit < 1 || i < limit; ++i) {
        const int difference = valueOf(left[i]) - valueOf(right[i]);
        if (difference != 0) return sign(difference);
        if (left[i] == '\0') return 0;
    }
    return 0;
}

}  // namespace

HeapString::HeapString(const char* text)
    : text_(text != nullptr ? joined(std::string_view(text), {}) : nullptr) {}

HeapString::HeapString(std::string_view text)
    : text_(joined(text.substr(0, text.find('\0')), {})) {}

HeapString& HeapString::operator=(const HeapString& other) {
    if (this != &other) *this = HeapString(other);
    return *this;
}

std::int32_t HeapString::length() const {
    return static_cast<std::int32_t>(view().size());
}

std::string_view HeapString::view() const {
    return isNull() ? std::string_view() : std::string_view(text_.get());
}

std::int32_t HeapString::FindLastOf(const char* set) const {
    std::array<bool, 256> isMember{};
    for (const char c : std::string_view(set != nullptr ? set : ""))
        isMember[static_cast<unsigned char>(c)] = true;
    for (std::int32_t i = length() - 1; i >= 0; --i)
        if (isMember[static_cast<unsigned char>(text_[static_cast<std::size_t>(i)])]) return i;
    return -1;
}

void HeapString::cutAt(std::int32_t index) {
    if (index >= 0 && index < length()) text_[static_cast<std::size_t>(index)] = '\0';
}

bool HeapString::EndsWith(const char* suffix) const {
    const HeapString dotted = withLeadingDot(suffix);
    const std::int32_t start = length() - dotted.length();
    return start >= 0 && CompareNoCase(c_str() + start, dotted.c_str()) == 0;
}

bool HeapString::EnsureSuffix(const char* suffix) {
    if (EndsWith(suffix)) return false;
    *this = *this + withLeadingDot(suffix);
    return true;
}

HeapString HeapString::GetFileBaseName() const {
    std::string_view name = view();
    name.remove_prefix(name.find_last_of("/\\") + 1);
    name = name.substr(0, name.rfind('.'));
    return name.empty() ? HeapString() : HeapString(name);
}

HeapString operator+(const HeapString& left, const HeapString& right) {
    if (left.empty()) return right;
    if (right.empty()) return left;
    const std::unique_ptr<char[]> text = joined(left.view(), right.view());
    return text.get();
}

int CompareNoCase(const char* left, const char* right, std::int32_t limit) {
    return compare(left, right, limit, [](char c) -> int { return foldCase(c); });
}

int CompareExact(const char* left, const char* right, std::int32_t limit) {
    return compare(left, right, limit, [](char c) -> int { return static_cast<signed char>(c); });
}

}  // namespace korvalite::core
