// SPDX-License-Identifier: MIT
#include "shell/load_input.h"

#include "formats/kvm_samples.h"
#include "progressive/progressive_mesh.h"
#include "support/scratch_folder.h"
#include "support/vok_builder.h"

#include <gtest/gtest.h>
#include <limits>

namespace korvalite {
namespace {

using test::VokBuilder;

class LoadInputTest : public testing::Test {
protected:
    /// Loads a file with these bytes under the name.
    EntryFiles load(const VokBuilder& file, const char8_t* name = u8"mesh.Vok") {
        settings_.InputFile = file.writeTo(folder_, name).c_str();
        return LoadInputInProgMesh(settings_, pm_);
    }
    static VokBuilder triangle(std::uint32_t lastIndex = 2) {
        VokBuilder file;
        file.points({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}).triangles({{0, 1, lastIndex}});
        return file;
    }
    EntryFiles flagsForOutput(const char* output) {
        settings_.OutputFile = output;
        return LoadInputInProgMesh(settings_, pm_);
    }

    test::ScratchFolder folder_;
    BatchSettings settings_;
    ProgressiveMesh pm_;
};

TEST_F(LoadInputTest, ReadsAVokFileWhateverTheCaseOfItsSuffix) {
    EXPECT_TRUE(load(triangle().end()).inputMeshLoaded);
    EXPECT_EQ(pm_.mesh.vertices.size(), 3U);
    ProgressiveMesh other;
    settings_.InputFile = triangle().end().writeTo(folder_, u8"mesh.VOK").c_str();
    EXPECT_TRUE(LoadInputInProgMesh(settings_, other).inputMeshLoaded);
}

TEST_F(LoadInputTest, OtherSuffixesLoadNothing) {
    for (const char8_t* name : {u8"mesh.obj", u8"mesh.stl", u8"mesh", u8"meshVok"}) {
        const EntryFiles files = load(triangle(), name);
        EXPECT_FALSE(files.inputMeshLoaded);
        EXPECT_FALSE(files.inputProgressiveLoaded);
        EXPECT_TRUE(pm_.mesh.vertices.empty());
    }
}

TEST_F(LoadInputTest, AMissingFileIsNotLoaded) {
    settings_.InputFile = "no such file.Vok";
    EXPECT_FALSE(LoadInputInProgMesh(settings_, pm_).inputMeshLoaded);
}

TEST_F(LoadInputTest, AnIndexOutOfRangeIsNotLoaded) {
    EXPECT_FALSE(load(triangle(3)).inputMeshLoaded);
    EXPECT_FALSE(load(triangle(0xFFFFFFFF)).inputMeshLoaded);
    EXPECT_TRUE(load(triangle(2)).inputMeshLoaded);
}

TEST_F(LoadInputTest, AUniformMaskIsDropped) {
    EXPECT_TRUE(load(triangle().mask("\x07\x07\x07")).inputMeshLoaded);
    EXPECT_TRUE(pm_.mesh.maskValues.empty());
}

TEST_F(LoadInputTest, AVaryingMaskIsKept) {
    EXPECT_TRUE(load(triangle().mask("\x07\x07\x08")).inputMeshLoaded);
    EXPECT_EQ(pm_.mesh.maskValues.size(), 3U);
}

TEST_F(LoadInputTest, TheOutputsSuffixDeterminesItsKind) {
    EXPECT_TRUE(flagsForOutput("a.Vok").outputIsMesh);
    EXPECT_TRUE(flagsForOutput("a.VOK").outputIsMesh);
    EXPECT_TRUE(flagsForOutput("a.stl").outputIsMesh);
    EXPECT_FALSE(flagsForOutput("a.Vok").outputIsProgressive);
    for (const char* output : {"", "Vok", "a.ply", "a.Vok.txt"}) {
        EXPECT_FALSE(flagsForOutput(output).outputIsMesh) << output;
        EXPECT_FALSE(flagsForOutput(output).outputIsProgressive) << output;
    }
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
    EXPECT_TRUE(LoadInputInProgMesh(settings, pm).inputProgressiveLoaded);
    // 30 splits lead from the 20 vertices of the lowest level to the target.
    EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 30U);
}

TEST(ApplySettings, SymmetryChoosesAxisAndMode) {
    struct Row {
        std::int32_t choice, axis, mode;
        bool handled;
    };
    for (const Row& row : {Row{kSymmetryNone, -1, 0, false}, Row{kSymmetryX, 0, 1, true},
                           Row{kSymmetryY, 1, 1, true}, Row{kSymmetryZ, 2, 1, true},
                           Row{kSymmetryAuto, -1, -1, false}}) {
        BatchSettings settings;
        settings.Symmetry = row.choice;
        ProgressiveMesh pm;
        applySettings(settings, pm);
        EXPECT_EQ(pm.mesh.symmetryAxis, row.axis);
        EXPECT_EQ(pm.mesh.symmetryMode, row.mode);
        EXPECT_EQ(pm.handleSymmetry, row.handled);
    }
}

TEST(ApplySettings, NoSymmetryForgetsTheSymmetryOfTheMesh) {
    BatchSettings settings;
    settings.Symmetry = kSymmetryNone;
    ProgressiveMesh pm;
    pm.mesh.symmetryAxis = 2;
    pm.mesh.symmetryMode = 1;
    pm.handleSymmetry = true;
    applySettings(settings, pm);
    EXPECT_EQ(pm.mesh.symmetryAxis, -1);
    EXPECT_EQ(pm.mesh.symmetryMode, 0);
    EXPECT_FALSE(pm.handleSymmetry);
}

TEST(ApplySettings, OnlyTheNumberOfThreadsChoosesTheDriver) {
    BatchSettings settings;
    settings.MemSpeedTradeOff = 0;
    for (const std::int32_t one : {1, 0, -5}) {
        ProgressiveMesh pm;
        settings.NumThread = one;
        applySettings(settings, pm);
        EXPECT_EQ(pm.MemSpeedTradeOff, MEMSPEED_TRADEOFF_LOW_MEM);
        EXPECT_EQ(pm.NumThread, 2);
    }
    ProgressiveMesh pm;
    settings.NumThread = 6;
    applySettings(settings, pm);
    EXPECT_EQ(pm.MemSpeedTradeOff, MEMSPEED_TRADEOFF_LOW_MEM_MT);
    EXPECT_EQ(pm.NumThread, 6);
}

TEST(ApplySettings, JobDefaultsOverrideMeshDefaults) {
    ProgressiveMesh pm;
    applySettings(BatchSettings(), pm);
    EXPECT_EQ(pm.BorderMode, BORDERMODE_PROTECT);
    EXPECT_FALSE(pm.UseAreaWeighting);
    EXPECT_TRUE(pm.AvoidNormalReverse);
    EXPECT_TRUE(pm.ProtectTopology);
    EXPECT_FALSE(pm.AllowFinishStep);
    EXPECT_TRUE(pm.recordVSplits);
    EXPECT_TRUE(pm.DoReorder);
    EXPECT_NEAR(pm.colorWeight, 0.9545, 0.0001);
}

TEST(ApplySettings, PassesOnEachSwitch) {
    BatchSettings settings;
    settings.UseAreaWeighting = true;
    settings.AvoidNormalReverse = false;
    settings.ProtectTopology = false;
    settings.AllowFinishStep = true;
    settings.DoReorder = false;
    ProgressiveMesh pm;
    applySettings(settings, pm);
    EXPECT_TRUE(pm.UseAreaWeighting);
    EXPECT_FALSE(pm.AvoidNormalReverse);
    EXPECT_FALSE(pm.ProtectTopology);
    EXPECT_TRUE(pm.AllowFinishStep);
    EXPECT_FALSE(pm.DoReorder);
}

TEST(ColorWeightOf, IsZeroUpToOne) {
    for (const float c : {1.0F, 0.5F, 0.0F, -3.0F, -std::numeric_limits<float>::infinity()})
        EXPECT_EQ(colorWeightOf(c), 0.0F);
    EXPECT_EQ(colorWeightOf(std::numeric_limits<float>::quiet_NaN()), 0.0F);
}

TEST(ColorWeightOf, IsLogarithmicFromAHundredthToAHundred) {
    EXPECT_NEAR(colorWeightOf(1.0001F), 0.01, 1e-6);
    EXPECT_NEAR(colorWeightOf(50.0F), 0.9545, 0.0001);
    EXPECT_NEAR(colorWeightOf(50.5F), 1.0, 1e-6);
    EXPECT_EQ(colorWeightOf(100.0F), 100.0F);
    EXPECT_NEAR(colorWeightOf(199.0F), 1e6, 1.0);
}

}  // namespace
}  // namespace korvalite
