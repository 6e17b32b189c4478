// SPDX-License-Identifier: MIT
#include "shell/input_files.h"

#include "formats/kvm_samples.h"
#include "progressive/progressive_mesh.h"
#include "support/scratch_folder.h"
#include "support/vok_builder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>

namespace korvalite::core {
namespace {

using test::VokBuilder;

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

class LoadInputTest : public testing::Test {
protected:
    /// Loads a file with these bytes under the name.
    FileContent load(const VokBuilder& file, const char8_t* name = u8"mesh.Vok") {
        settings_.InputFile = file.writeTo(folder_, name).c_str();
        return LoadInputInProgMesh(settings_, pm_);
    }
    static VokBuilder triangle(std::uint32_t lastIndex = 2) {
        VokBuilder file;
        file.points({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}).triangles({{0, 1, lastIndex}});
        return file;
    }

    test::ScratchFolder folder_;
    BatchSettings settings_;
    ProgressiveMesh pm_;
};

TEST_F(LoadInputTest, ReadsAVokFileWhateverTheCaseOfItsSuffix) {
    EXPECT_EQ(load(triangle().end()), FileContent::Mesh);
    EXPECT_EQ(pm_.mesh.vertices.size(), 3U);
    ProgressiveMesh other;
    settings_.InputFile = triangle().end().writeTo(folder_, u8"mesh.VOK").c_str();
    EXPECT_EQ(LoadInputInProgMesh(settings_, other), FileContent::Mesh);
}

TEST_F(LoadInputTest, OtherSuffixesLoadNothing) {
    for (const char8_t* name : {u8"mesh.obj", u8"mesh.stl", u8"mesh", u8"meshVok"}) {
        EXPECT_EQ(load(triangle(), name), FileContent::None);
        EXPECT_TRUE(pm_.mesh.vertices.empty());
    }
}

TEST_F(LoadInputTest, AMissingFileIsNotLoaded) {
    settings_.InputFile = "no such file.Vok";
    EXPECT_EQ(LoadInputInProgMesh(settings_, pm_), FileContent::None);
}

TEST_F(LoadInputTest, AnIndexOutOfRangeIsNotLoaded) {
    EXPECT_EQ(load(triangle(3)), FileContent::None);
    EXPECT_EQ(load(triangle(0xFFFFFFFF)), FileContent::None);
    EXPECT_EQ(load(triangle(2)), FileContent::Mesh);
}

TEST_F(LoadInputTest, AUniformMaskIsDropped) {
    EXPECT_EQ(load(triangle().mask("\x07\x07\x07")), FileContent::Mesh);
    EXPECT_TRUE(pm_.mesh.maskValues.empty());
}

TEST_F(LoadInputTest, AVaryingMaskIsKept) {
    EXPECT_EQ(load(triangle().mask("\x07\x07\x08")), FileContent::Mesh);
    EXPECT_EQ(pm_.mesh.maskValues.size(), 3U);
}

TEST_F(LoadInputTest, SettingsApplyEvenAfterAFailedLoad) {
    settings_.InputFile = "no such file.Vok";
    settings_.FreezeBorder = true;
    LoadInputInProgMesh(settings_, pm_);
    EXPECT_EQ(pm_.BorderMode, BORDERMODE_FREEZE);
}

using LoadProgressiveInput = test::KvmTest;

TEST_F(LoadProgressiveInput, ReadsNoMoreThanTheTargetNeeds) {
    test::writeWhole(path(), test::rowOfSplits(100, 80).bytes());
    BatchSettings settings;
    settings.InputFile = path().c_str();
    settings.DecimationTargetNum = 50;
    ProgressiveMesh pm;
    EXPECT_EQ(LoadInputInProgMesh(settings, pm), FileContent::ProgressiveMesh);
    // 30 splits lead from the 20 vertices of the lowest level to the target.
    EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 30U);
}

}  // namespace
}  // namespace korvalite::core
