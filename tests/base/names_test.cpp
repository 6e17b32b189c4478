// SPDX-License-Identifier: MIT
#include "base/names.h"

#include "support/scratch_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <limits>

namespace korvalite::core {
namespace {

std::string incremented(const char* path) {
    return std::string(IncrementFileName(path).view());
}

std::string formatted(std::int32_t count) {
    return std::string(FormatCount(count).view());
}

TEST(GetFreeFilePath, WithoutAFolderIsTheName) {
    EXPECT_STREQ(GetFreeFilePath(HeapString(), "no such file.data").c_str(), "no such file.data");
}

TEST(GetFreeFilePath, SkipsOnlyRegularFiles) {
    const test::ScratchFolder folder;
    EXPECT_EQ(GetFreeFilePath(folder.path().c_str(), "VSplitList.data").view(),
              folder / u8"VSplitList.data");
    test::writeWhole(folder / u8"VSplitList.data", "in use");
    test::writeWhole(folder / u8"VSplitList1.data", "in use");
    EXPECT_EQ(GetFreeFilePath(folder.path().c_str(), "VSplitList.data").view(),
              folder / u8"VSplitList2.data");
    std::filesystem::create_directory(test::pathOfUtf8(folder / u8"VSplitList2.data"));
    EXPECT_EQ(GetFreeFilePath(folder.path().c_str(), "VSplitList.data").view(),
              folder / u8"VSplitList2.data");
}

TEST(IncrementFileName, IncrementsTheDigitsAtTheEndOfTheStem) {
    EXPECT_EQ(incremented("VSplitList.data"), "VSplitList1.data");
    EXPECT_EQ(incremented("VSplitList1.data"), "VSplitList2.data");
    EXPECT_EQ(incremented("VSplitList9.data"), "VSplitList10.data");
    EXPECT_EQ(incremented("VSplitList19.data"), "VSplitList20.data");
    EXPECT_EQ(incremented("VSplitList1999.data"), "VSplitList2000.data");
    EXPECT_EQ(incremented("VSplitList999.data"), "VSplitList1000.data");
}

TEST(IncrementFileName, IncrementsAZeroToo) {
    EXPECT_EQ(incremented("VSplitList10.data"), "VSplitList11.data");
    EXPECT_EQ(incremented("VSplitList09.data"), "VSplitList10.data");
    EXPECT_EQ(incremented("0"), "1");
}

TEST(IncrementFileName, PrependsAOneWhenAllDigitsOverflow) {
    EXPECT_EQ(incremented("99"), "100");
    EXPECT_EQ(incremented("9.data"), "10.data");
    EXPECT_EQ(incremented(".data"), "1.data");
    EXPECT_EQ(incremented(""), "1");
    EXPECT_EQ(incremented(nullptr), "1");
}

TEST(IncrementFileName, ADotInAFolderDoesNotStartASuffix) {
    EXPECT_EQ(incremented("a.b/list"), "a.b/list1");
    EXPECT_EQ(incremented("a.b\\list9"), "a.b\\list10");
    EXPECT_EQ(incremented("9/9"), "9/10");
    EXPECT_EQ(incremented("a/.data"), "a/1.data");
}

TEST(FormatCount, TruncatesToOneDecimal) {
    EXPECT_EQ(formatted(0), "0");
    EXPECT_EQ(formatted(999), "999");
    EXPECT_EQ(formatted(1000), "1.0k");
    EXPECT_EQ(formatted(12345), "12.3k");
    EXPECT_EQ(formatted(999999), "999.9k");
    EXPECT_EQ(formatted(1000000), "1.0m");
    EXPECT_EQ(formatted(1050000), "1.0m");
    EXPECT_EQ(formatted(1234567), "1.2m");
    EXPECT_EQ(formatted(std::numeric_limits<std::int32_t>::max()), "2147.4m");
}

TEST(FormatCount, ShowsOnlyTheLastThousandOfANegativeNumber) {
    EXPECT_EQ(formatted(-5), "-5");
    EXPECT_EQ(formatted(-1234567), "-567");
    EXPECT_EQ(formatted(std::numeric_limits<std::int32_t>::min()), "-648");
}

}  // namespace
}  // namespace korvalite::core
