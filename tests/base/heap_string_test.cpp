// SPDX-License-Identifier: MIT
#include "base/heap_string.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace korvalite::core {
namespace {

std::string text(const HeapString& string) {
    return std::string(string.view());
}

TEST(HeapString, NullAndEmptyAreDifferentStates) {
    const HeapString null;
    const HeapString empty = "";
    EXPECT_TRUE(null.isNull());
    EXPECT_EQ(null.c_str(), nullptr);
    EXPECT_FALSE(empty.isNull());
    EXPECT_STREQ(empty.c_str(), "");
    EXPECT_EQ(null.length(), 0);
    EXPECT_EQ(empty.length(), 0);
    EXPECT_TRUE(null.empty());
    EXPECT_TRUE(empty.empty());
    EXPECT_TRUE(HeapString(static_cast<const char*>(nullptr)).isNull());
}

TEST(HeapString, CopiesAreDeepAndKeepTheState) {
    HeapString original = "mesh";
    const HeapString copy = original;
    original.cutAt(0);
    EXPECT_STREQ(copy.c_str(), "mesh");
    HeapString assigned = "old";
    assigned = copy;
    EXPECT_STREQ(assigned.c_str(), "mesh");
    EXPECT_NE(assigned.c_str(), copy.c_str());
    assigned = HeapString();
    EXPECT_TRUE(assigned.isNull());
}

TEST(HeapString, SelfAssignmentKeepsTheText) {
    HeapString string = "mesh";
    const HeapString& same = string;
    string = same;
    EXPECT_STREQ(string.c_str(), "mesh");
}

TEST(HeapString, AViewIsCopiedUpToItsFirstZeroByte) {
    using namespace std::string_view_literals;
    EXPECT_STREQ(HeapString("ab\0cd"sv).c_str(), "ab");
    EXPECT_FALSE(HeapString(std::string_view()).isNull());
}

TEST(HeapString, ConcatenationWithNullCopiesTheOtherSide) {
    const HeapString null;
    const HeapString empty = "";
    EXPECT_STREQ((HeapString("a") + "b").c_str(), "ab");
    EXPECT_STREQ(("a" + HeapString("b")).c_str(), "ab");
    EXPECT_STREQ((null + "b").c_str(), "b");
    EXPECT_STREQ(("a" + null).c_str(), "a");
    EXPECT_TRUE((null + null).isNull());
    EXPECT_TRUE((empty + null).isNull());
    EXPECT_FALSE((null + empty).isNull());
}

TEST(HeapString, FindLastOfFindsTheLastMemberOfTheSet) {
    EXPECT_EQ(HeapString("a/b\\c").FindLastOf("/\\"), 3);
    EXPECT_EQ(HeapString("a/b").FindLastOf("."), -1);
    EXPECT_EQ(HeapString("\xC3\xA4").FindLastOf("\xA4"), 1);
    EXPECT_EQ(HeapString("a").FindLastOf(""), -1);
    EXPECT_EQ(HeapString().FindLastOf("a"), -1);
}

TEST(HeapString, FindLastOfLooksAtTheFirstCharacterToo) {
    EXPECT_EQ(HeapString("/a").FindLastOf("/"), 0);
}

TEST(HeapString, CutAtIgnoresAnIndexOutOfRange) {
    HeapString string = "abc";
    string.cutAt(-1);
    string.cutAt(3);
    EXPECT_STREQ(string.c_str(), "abc");
    string.cutAt(1);
    EXPECT_STREQ(string.c_str(), "a");
    string.cutAt(0);
    EXPECT_STREQ(string.c_str(), "");
    HeapString null;
    null.cutAt(0);
    EXPECT_TRUE(null.isNull());
}

TEST(HeapString, EndsWithPrependsADotAndIgnoresCase) {
    EXPECT_TRUE(HeapString("x.Vok").EndsWith(".vOK"));
    EXPECT_TRUE(HeapString("x.Vok").EndsWith("Vok"));
    EXPECT_FALSE(HeapString("xVok").EndsWith("Vok"));
    EXPECT_FALSE(HeapString("Vok").EndsWith(".Vok"));
    EXPECT_FALSE(HeapString().EndsWith(".Vok"));
    EXPECT_TRUE(HeapString(".Vok").EndsWith(".Vok"));
}

TEST(HeapString, EnsureSuffixAppendsOnlyWhatIsMissing) {
    HeapString path = "x.KVM";
    EXPECT_FALSE(path.EnsureSuffix("kvm"));
    EXPECT_STREQ(path.c_str(), "x.KVM");
    EXPECT_TRUE(path.EnsureSuffix("obj"));
    EXPECT_STREQ(path.c_str(), "x.KVM.obj");
    HeapString null;
    EXPECT_TRUE(null.EnsureSuffix(".obj"));
    EXPECT_STREQ(null.c_str(), ".obj");
}

TEST(HeapString, GetFileBaseNameIsTheTextBetweenSeparatorAndDot) {
    EXPECT_EQ(text(HeapString("a.b/c").GetFileBaseName()), "c");
    EXPECT_EQ(text(HeapString("C:\\dir\\head.I.Vok").GetFileBaseName()), "head.I");
    EXPECT_EQ(text(HeapString("a/b\\c.d").GetFileBaseName()), "c");
    EXPECT_EQ(text(HeapString("plain").GetFileBaseName()), "plain");
}

TEST(HeapString, AnEmptyFileBaseNameIsNull) {
    EXPECT_TRUE(HeapString(".hidden").GetFileBaseName().isNull());
    EXPECT_TRUE(HeapString("folder/").GetFileBaseName().isNull());
    EXPECT_TRUE(HeapString("").GetFileBaseName().isNull());
    EXPECT_TRUE(HeapString().GetFileBaseName().isNull());
}

TEST(CompareNoCase, FoldsAsciiLettersOnly) {
    EXPECT_EQ(CompareNoCase("AbC", "aBc"), 0);
    EXPECT_EQ(CompareNoCase("a", "B"), -1);
    EXPECT_EQ(CompareNoCase("b", "A"), 1);
    EXPECT_EQ(CompareNoCase("ab", "a"), 1);
    EXPECT_NE(CompareNoCase("\xC3\xA4", "\xC3\x84"), 0);
    // '[' is between the upper and the lower case letters; letters compare as upper case.
    EXPECT_EQ(CompareNoCase("z", "["), -1);
}

TEST(CompareNoCase, ALimitBelowOneIsIgnored) {
    EXPECT_EQ(CompareNoCase("abX", "abY", 2), 0);
    EXPECT_EQ(CompareNoCase("abX", "abY", 3), -1);
    EXPECT_EQ(CompareNoCase("abX", "abY", 0), -1);
    EXPECT_EQ(CompareNoCase("abX", "abY", -5), -1);
    EXPECT_EQ(CompareNoCase("ab", "ab", 100), 0);
}

TEST(CompareNoCase, NullEqualsEmptyAndPrecedesAllElse) {
    EXPECT_EQ(CompareNoCase(nullptr, nullptr), 0);
    EXPECT_EQ(CompareNoCase(nullptr, ""), 0);
    EXPECT_EQ(CompareNoCase("", nullptr), 0);
    EXPECT_EQ(CompareNoCase(nullptr, "a"), -1);
    EXPECT_EQ(CompareNoCase("a", nullptr), 1);
}

TEST(CompareExact, ComparesSignedBytesWithCase) {
    EXPECT_EQ(CompareExact("a", "A"), 1);
    EXPECT_EQ(CompareExact(".kvc", ".kvc"), 0);
    EXPECT_EQ(CompareExact("\x80", "a"), -1);
    EXPECT_EQ(CompareExact(nullptr, "\x80"), -1);
    EXPECT_EQ(CompareExact("abc", "abd", 2), 0);
}

}  // namespace
}  // namespace korvalite::core
