// SPDX-License-Identifier: MIT
#include "platform/command_line.h"

#include <gtest/gtest.h>

#include <string>

namespace korvalite::core::platform {
namespace {

TEST(CommandLine, TheTailFollowsTheNameAndWhiteSpace) {
    EXPECT_EQ(commandTailOf("korvalite scene.kvc"), "scene.kvc");
    EXPECT_EQ(commandTailOf("korvalite \t \r\n scene.kvc"), "scene.kvc");
    EXPECT_EQ(commandTailOf("C:\\tools\\korvalite.exe C:\\jobs\\scene.kvc"), "C:\\jobs\\scene.kvc");
}

TEST(CommandLine, AQuotedNameMayContainBlanks) {
    EXPECT_EQ(commandTailOf("\"C:\\Program Files\\korvalite.exe\" scene.kvc"), "scene.kvc");
    EXPECT_EQ(commandTailOf("C:\\\"Program Files\"\\korvalite.exe scene.kvc"), "scene.kvc");
}

TEST(CommandLine, TheTailKeepsItsBlanksAndQuotes) {
    EXPECT_EQ(commandTailOf("korvalite my scene.kvc"), "my scene.kvc");
    EXPECT_EQ(commandTailOf("korvalite a  b\tc.kvc"), "a  b\tc.kvc");
    EXPECT_EQ(commandTailOf("korvalite \"my scene.kvc\""), "\"my scene.kvc\"");
    EXPECT_EQ(commandTailOf("korvalite scene.kvc  "), "scene.kvc  ");
}

TEST(CommandLine, EveryCharacterBelow33IsWhiteSpace) {
    for (int c = 1; c < 33; ++c) {
        const std::string line = std::string("korvalite") + static_cast<char>(c) + "!.kvc";
        EXPECT_EQ(commandTailOf(line), "!.kvc") << "character " << c;
    }
    EXPECT_EQ(commandTailOf("korvalite ! x"), "! x");
}

TEST(CommandLine, BytesAbove127AreNotWhiteSpace) {
    EXPECT_EQ(commandTailOf("dossier\xC3\xA9\x74\xC3\xA9/korvalite \xC3\xA9.kvc"), "\xC3\xA9.kvc");
    EXPECT_EQ(commandTailOf("\xE6\x97\xA5 \xE6\x9C\xAC.kvc"), "\xE6\x9C\xAC.kvc");
}

TEST(CommandLine, WithoutATailTheResultIsEmpty) {
    EXPECT_EQ(commandTailOf(""), "");
    EXPECT_EQ(commandTailOf("korvalite"), "");
    EXPECT_EQ(commandTailOf("korvalite   "), "");
    EXPECT_EQ(commandTailOf("\"C:\\Program Files\\korvalite.exe\""), "");
}

TEST(CommandLine, AnUnclosedQuoteTakesTheWholeLineAsTheName) {
    EXPECT_EQ(commandTailOf("\"korvalite scene.kvc"), "");
}

TEST(CommandLine, AfterAnEmptyNameTheTailFollowsTheFirstWhiteSpace) {
    EXPECT_EQ(commandTailOf(" scene.kvc"), "scene.kvc");
    EXPECT_EQ(commandTailOf("\"\" scene.kvc"), "scene.kvc");
}

}  // namespace
}  // namespace korvalite::core::platform
