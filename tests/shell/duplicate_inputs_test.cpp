// SPDX-License-Identifier: MIT
#include "shell/duplicate_inputs.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>

namespace korvalite {
namespace {

std::string linesFor(std::initializer_list<const char*> inputs) {
    std::forward_list<BatchEntry> entries;
    for (const char* input : inputs) {
        entries.emplace_front();
        entries.front().settings.InputFile = input;
    }
    entries.reverse();
    return duplicateInputLines(entries);
}

TEST(DuplicateInputs, DifferentInputsGiveNoLine) {
    EXPECT_EQ(linesFor({}), "");
    EXPECT_EQ(linesFor({"a.Vok"}), "");
    EXPECT_EQ(linesFor({"a.Vok", "b.Vok", "x/a.Vok"}), "");
}

TEST(DuplicateInputs, LetterCaseDoesNotDistinguishInputs) {
    EXPECT_EQ(linesFor({"dir/Head.Vok", "DIR/head.VOK"}), "   - head\n");
}

TEST(DuplicateInputs, EachLaterDuplicateHasOneLine) {
    EXPECT_EQ(linesFor({"a.Vok", "b.Vok", "a.Vok", "B.Vok", "A.Vok"}), "   - a\n   - B\n   - A\n");
}

TEST(DuplicateInputs, NamesAreCutAtTheLastDotThenSeparator) {
    EXPECT_EQ(linesFor({"a.b/c", "a.b/c"}), "   - a\n");
    EXPECT_EQ(linesFor({"C:\\t\\x.I.Vok", "C:\\t\\x.I.Vok"}), "   - x.I\n");
    EXPECT_EQ(linesFor({"plain", "plain"}), "   - plain\n");
    EXPECT_EQ(linesFor({"", ""}), "   - \n");
}

TEST(DuplicateInputs, HandlesAHundredThousandEntriesQuickly) {
    std::forward_list<BatchEntry> entries(100'000);
    int number = 0;
    for (BatchEntry& entry : entries) {
        entry.settings.InputFile = ("mesh" + std::to_string(number++ / 2) + ".Vok").c_str();
    }
    const std::string lines = duplicateInputLines(entries);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 50'000);
}

}  // namespace
}  // namespace korvalite
