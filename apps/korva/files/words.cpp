// SPDX-License-Identifier: MIT
#include "korva/files/words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <system_error>

namespace korva {

namespace {

bool isBlank(char c) {
    return static_cast<unsigned char>(c) <= ' ';
}

/// The value of a number that no float can hold: 0 or infinity.
float beyondFloats(std::string_view word) {
    double value = 0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), value);
    if (result.ec == std::errc()) return static_cast<float>(value);
    const std::size_t digits = word[0] == '-' ? 1 : 0;
    const std::size_t exponent = word.find_first_of("eE");
    const bool isSmall = exponent == std::string_view::npos
                             ? word[digits] == '0' || word[digits] == '.'
                             : word[exponent + 1] == '-';
    const float size = isSmall ? 0.0F : std::numeric_limits<float>::infinity();
    return digits == 1 ? -size : size;
}

char smallLetter(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

}  // namespace

void skipByteOrderMark(std::string_view& text) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
}

std::string_view takeWord(std::string_view& line) {
    std::size_t begin = 0;
    while (begin < line.size() && isBlank(line[begin]))
        ++begin;
    std::size_t end = begin;
    while (end < line.size() && !isBlank(line[end]))
        ++end;
    const std::string_view word = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return word;
}

std::string_view Words::next() {
    for (;;) {
        const std::string_view word = takeWord(rest_);
        if (!word.empty()) return word;
        if (!nextLine()) return {};
    }
}

bool Words::nextLine() {
    rest_ = {};
    if (!file_.readLine(rest_)) return false;
    ++line_;
    if (line_ == 1) skipByteOrderMark(rest_);
    if (hasComments_) rest_ = rest_.substr(0, rest_.find('#'));
    return true;
}

void Words::fail(const std::string& reason) const {
    failToRead(file_.path(), "line " + std::to_string(line_) + ": " + reason);
}

std::string_view withoutPlus(std::string_view word) {
    if (word.size() > 1 && word[0] == '+' && word[1] != '-') word.remove_prefix(1);
    return word;
}

bool parseFloat(std::string_view word, float& value) {
    word = withoutPlus(word);
    const char* end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, value);
    if (result.ptr != end || result.ec == std::errc::invalid_argument) return false;
    if (result.ec == std::errc::result_out_of_range) value = beyondFloats(word);
    return true;
}

bool parseCount(std::string_view word, std::size_t& value) {
    word = withoutPlus(word);
    const char* end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, value);
    return result.ptr == end && result.ec == std::errc();
}

bool isWord(std::string_view word, std::string_view small) {
    return std::equal(word.begin(), word.end(), small.begin(), small.end(),
                      [](char a, char b) { return smallLetter(a) == b; });
}

std::string quoted(std::string_view word) {
    constexpr std::size_t kMost = 24;
    std::string text = "'";
    for (const char c : word.substr(0, kMost))
        text += c > ' ' && c <= '~' ? c : '?';
    return text + (word.size() > kMost ? "...'" : "'");
}

std::string printable(std::string_view name) {
    constexpr std::size_t kLongest = 60;
    std::string text(name.substr(0, kLongest));
    for (char& c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20 || code > 0x7E) c = '?';
    }
    if (name.size() > kLongest) text += "...";
    return text;
}

}  // namespace korva
