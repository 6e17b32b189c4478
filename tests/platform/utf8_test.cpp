// SPDX-License-Identifier: MIT
#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace korvalite::core::platform {
namespace {

using namespace std::string_view_literals;

std::string bytesOf(std::u8string_view text) {
    return {text.begin(), text.end()};
}

// Unicode's rule for the bytes of a code point, applied to surrogates and excessive values too.
std::string encoded(std::uint32_t codePoint) {
    const auto tail = [&](unsigned shift) {
        return static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU));
    };
    const auto lead = [&](std::uint32_t mark, unsigned shift) {
        return static_cast<char>(mark | (codePoint >> shift));
    };
    if (codePoint < 0x80) return {lead(0, 0)};
    if (codePoint < 0x800) return {lead(0xC0, 6), tail(0)};
    if (codePoint < 0x10000) return {lead(0xE0, 12), tail(6), tail(0)};
    return {lead(0xF0, 18), tail(12), tail(6), tail(0)};
}

TEST(Utf8, AcceptsAllOfUnicodeExceptSurrogates) {
    for (std::uint32_t codePoint = 0; codePoint < 0x110000; ++codePoint) {
        const bool surrogate = codePoint >= 0xD800 && codePoint < 0xE000;
        ASSERT_EQ(isUtf8(encoded(codePoint)), !surrogate) << codePoint;
    }
    for (std::uint32_t codePoint = 0x110000; codePoint < 0x200000; ++codePoint)
        ASSERT_FALSE(isUtf8(encoded(codePoint))) << codePoint;
}

TEST(Utf8, ChecksTheWholeText) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("C:\\temp\\scene.kvc"));
    EXPECT_TRUE(isUtf8(bytesOf(u8"größe 大 𝄞.Vok")));
    EXPECT_FALSE(isUtf8(bytesOf(u8"größe ") + '\xFF'));
    EXPECT_FALSE(isUtf8('\xFF' + bytesOf(u8"größe ")));
}

TEST(Utf8, RefusesNamesInOtherCodePages) {
    EXPECT_FALSE(isUtf8("gr\xF6\xDF\x65.Vok"));    // Latin 1
    EXPECT_FALSE(isUtf8("\x8B\x9F\x93s.Vok"));     // Shift-JIS
    EXPECT_FALSE(isUtf8("\xEC\xEE\xE4\xE5.Vok"));  // Cyrillic
}

TEST(Utf8, RefusesATruncatedCharacter) {
    const std::string clef = bytesOf(u8"𝄞");
    for (std::size_t length = 1; length < clef.size(); ++length) {
        EXPECT_FALSE(isUtf8(clef.substr(0, length))) << length;
        EXPECT_FALSE(isUtf8(clef.substr(0, length) + "abc")) << length;
    }
    EXPECT_FALSE(isUtf8("\x9D"));
}

TEST(Utf8, RefusesOverlongForms) {
    EXPECT_FALSE(isUtf8("\xC0\x80"));
    EXPECT_FALSE(isUtf8("\xC1\xBF"));
    EXPECT_FALSE(isUtf8("\xE0\x80\xAF"));
    EXPECT_FALSE(isUtf8("\xE0\x9F\xBF"));
    EXPECT_FALSE(isUtf8("\xF0\x8F\xBF\xBF"));
    EXPECT_FALSE(isUtf8("\xF8\x88\x80\x80\x80"));
}

TEST(Utf8, CutsBetweenTwoCharacters) {
    const std::string text = bytesOf(u8"aé大𝄞");
    ASSERT_EQ(text.size(), 10U);
    constexpr std::size_t kEnds[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 10};
    for (std::size_t byteCount = 0; byteCount < std::size(kEnds); ++byteCount)
        EXPECT_EQ(cutAtCharacter(text, byteCount), text.substr(0, kEnds[byteCount])) << byteCount;
}

TEST(Utf8, CutsOtherTextAtAnyByte) {
    EXPECT_EQ(cutAtCharacter("\xC3\xA9\xC3\xA9\xFF"sv, 3), "\xC3\xA9\xC3"sv);
    EXPECT_EQ(cutAtCharacter("\x80\x80\x80"sv, 2), "\x80\x80"sv);
    EXPECT_EQ(cutAtCharacter("\x80"sv, 2), "\x80"sv);
}

}  // namespace
}  // namespace korvalite::core::platform
