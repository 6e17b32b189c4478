// SPDX-License-Identifier: MIT
#include "shell/apply_settings.h"

#include "progressive/progressive_mesh.h"

#include <gtest/gtest.h>
#include <limits>

namespace korvalite::core {
namespace {

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

std::int32_t percentOf(float percent, std::uint32_t vertexCount) {
    BatchSettings settings;
    settings.DecimationTargetNum = 77;
    settings.DecimationTargetPourcent = percent;
    return targetVertexCount(settings, vertexCount);
}

TEST(TargetVertexCount, IsTheNumberWithoutAPercentage) {
    EXPECT_EQ(percentOf(-1.0F, 1000), 77);
}

TEST(TargetVertexCount, APercentageWinsOverTheNumber) {
    EXPECT_EQ(percentOf(50.0F, 1001), 500);
    EXPECT_EQ(percentOf(0.0F, 1000), 0);
    EXPECT_EQ(percentOf(200.0F, 1000), 2000);
    EXPECT_EQ(percentOf(-2.0F, 1000), -20);
}

TEST(TargetVertexCount, IsComputedInSinglePrecisionAndTruncated) {
    EXPECT_EQ(percentOf(20.0F, 1018), 203);
    // 0.7F is below seven tenths, but the product rounds up to 7.
    EXPECT_EQ(percentOf(70.0F, 10), 7);
    // 0.53F is below 53 hundredths, and so is its product.
    EXPECT_EQ(percentOf(53.0F, 100), 52);
    // The count itself passes through a float.
    EXPECT_EQ(percentOf(100.0F, 16777217), 16777216);
}

TEST(TargetVertexCount, IsTheLowestNumberIfItDoesNotFit) {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(percentOf(std::numeric_limits<float>::quiet_NaN(), 10), kLowest);
    EXPECT_EQ(percentOf(std::numeric_limits<float>::infinity(), 10), kLowest);
    EXPECT_EQ(percentOf(1e30F, 10), kLowest);
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
}  // namespace korvalite::core
