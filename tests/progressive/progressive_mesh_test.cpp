// SPDX-License-Identifier: MIT
#include "progressive/progressive_mesh.h"

#include "support/mesh_builder.h"

#include <gtest/gtest.h>

namespace korvalite::core {
namespace {

void expectDefaultSettings(const ProgressiveMesh& pm) {
    EXPECT_TRUE(pm.UseAreaWeighting);
    EXPECT_EQ(pm.TargetNumItem, 4U);
    EXPECT_TRUE(pm.targetCountsVertices);
    EXPECT_TRUE(pm.AvoidNormalReverse);
    EXPECT_TRUE(pm.ProtectTopology);
    EXPECT_FALSE(pm.handleSymmetry);
    EXPECT_FALSE(pm.AllowFinishStep);
    EXPECT_EQ(pm.colorWeight, 1.0F);
    EXPECT_TRUE(pm.DoReorder);
    EXPECT_TRUE(pm.useDegeneracySearch);
    EXPECT_EQ(pm.numPositionSamples, 8);
    EXPECT_FALSE(pm.recordVSplits);
    EXPECT_TRUE(pm.tryStoreDoubleMat);
    EXPECT_TRUE(pm.tryStoreFloatMat);
    EXPECT_EQ(pm.BorderMode, 1);
    EXPECT_EQ(pm.MemSpeedTradeOff, 2);
    EXPECT_EQ(pm.NumThread, 2);
}

void expectNoResults(const ProgressiveMesh& pm) {
    EXPECT_EQ(pm.CurVtxSplitPos, -1);
    EXPECT_EQ(pm.askedNumItem, -1);
    EXPECT_EQ(pm.finalDecimNumItem, -1);
    EXPECT_EQ(pm.decimationFinishTriangleCount, -1);
    EXPECT_FALSE(pm.IsReordered);
    EXPECT_FALSE(pm.IsCleaned);
    EXPECT_EQ(pm.vsplitList.NumVtxSplit(), 0U);
}

TEST(ProgressiveMesh, StartsWithTheDefaultsThatTheJobOverwrites) {
    const ProgressiveMesh pm;
    expectDefaultSettings(pm);
    expectNoResults(pm);
    EXPECT_FALSE(pm.m_handleSymmetry_internal);
    EXPECT_FALSE(pm.m_handleUVs_internal);
    EXPECT_FALSE(pm.m_useVertexColors_internal);
    EXPECT_EQ(pm.colorScale, 0.0);
    EXPECT_FALSE(pm.finishStepStarted);
    EXPECT_FALSE(pm.inFinishStep);
    EXPECT_EQ(pm.costQueue.vertexCount(), 0);
}

TEST(ProgressiveMesh, UsesTheMaskIfThereIsOne) {
    ProgressiveMesh pm;
    pm.mesh = test::oneTriangle();
    EXPECT_FALSE(pm.mesh.hasMask());
    pm.mesh.maskValues.assign(3, 255);
    EXPECT_TRUE(pm.mesh.hasMask());
}

TEST(ProgressiveMesh, ResetClearsTheMeshAndEverySetting) {
    ProgressiveMesh pm;
    pm.mesh = test::grid(2, 2);
    pm.mesh.symmetryAxis = 2;
    pm.UseAreaWeighting = false;
    pm.TargetNumItem = 77;
    pm.targetCountsVertices = false;
    pm.AvoidNormalReverse = false;
    pm.ProtectTopology = false;
    pm.handleSymmetry = true;
    pm.AllowFinishStep = true;
    pm.colorWeight = 5;
    pm.DoReorder = false;
    pm.useDegeneracySearch = false;
    pm.numPositionSamples = 2;
    pm.recordVSplits = true;
    pm.tryStoreDoubleMat = false;
    pm.tryStoreFloatMat = false;
    pm.BorderMode = 2;
    pm.MemSpeedTradeOff = 1;
    pm.NumThread = 9;
    ResetProgressiveMeshSettings(pm);
    expectDefaultSettings(pm);
    EXPECT_EQ(pm.mesh.vertexCount(), 0);
    EXPECT_EQ(pm.mesh.numActiveTriangles, 0U);
    EXPECT_EQ(pm.mesh.symmetryAxis, -1);
    EXPECT_TRUE(pm.mesh.boundingBox.isEmpty());
}

TEST(ProgressiveMesh, ClearingDropsAnEarlierRunButKeepsMeshAndSettings) {
    ProgressiveMesh pm;
    pm.mesh = test::oneTriangle();
    pm.TargetNumItem = 77;
    pm.CurVtxSplitPos = 1;
    pm.askedNumItem = 2;
    pm.finalDecimNumItem = 3;
    pm.decimationFinishTriangleCount = 4;
    pm.IsReordered = true;
    pm.IsCleaned = true;
    pm.symmetryPaired.Resize(3, true);
    pm.symmetryInterior.Resize(3, true);
    pm.symmetrySlaves.Resize(3, true);
    pm.vsplitList.pageCapacity = VSplitList::kAllRecords;
    pm.vsplitList.open({}, 3, 2);
    pm.vsplitList.append(VSplit());
    ClearDecimationState(pm);
    expectNoResults(pm);
    EXPECT_EQ(pm.symmetryPaired.count(), 0);
    EXPECT_EQ(pm.symmetryInterior.count(), 0);
    EXPECT_EQ(pm.symmetrySlaves.count(), 0);
    EXPECT_EQ(pm.mesh.vertexCount(), 3);
    EXPECT_EQ(pm.TargetNumItem, 77U);
}

TEST(ProgressiveMesh, TheTargetCountsVerticesOrTriangles) {
    ProgressiveMesh pm;
    pm.mesh = test::tetrahedron();
    pm.mesh.numActiveTriangles = 3;
    EXPECT_EQ(pm.activeCount(), 4U);
    pm.targetCountsVertices = false;
    EXPECT_EQ(pm.activeCount(), 3U);
}

TEST(ProgressiveMesh, SlavesExistOnlyWhileSymmetryIsHandled) {
    ProgressiveMesh pm;
    pm.symmetrySlaves.Resize(2, true);
    EXPECT_FALSE(pm.isSymmetrySlave(1));
    pm.m_handleSymmetry_internal = true;
    EXPECT_TRUE(pm.isSymmetrySlave(1));
    EXPECT_FALSE(pm.isSymmetrySlave(2));
}

TEST(ProgressiveMesh, NamesItsDriversAndBorderModesForTheLog) {
    EXPECT_STREQ(memSpeedTradeOffText(0), "MEMSPEED_TRADEOFF_HIGH_SPEED");
    EXPECT_STREQ(memSpeedTradeOffText(1), "MEMSPEED_TRADEOFF_LOW_MEM (SingleThread)");
    EXPECT_STREQ(memSpeedTradeOffText(2), "MEMSPEED_TRADEOFF_LOW_MEM_MT");
    EXPECT_STREQ(memSpeedTradeOffText(3), "MEMSPEED_TRADEOFF_HEC");
    EXPECT_STREQ(memSpeedTradeOffText(4), "MEMSPEED_TRADEOFF_MELAX");
    EXPECT_STREQ(memSpeedTradeOffText(5), "MEMSPEED_TRADEOFF_AUTO");
    EXPECT_STREQ(memSpeedTradeOffText(6), "MEMSPEED_TRADEOFF_UNKNOWN");
    EXPECT_STREQ(memSpeedTradeOffText(-1), "MEMSPEED_TRADEOFF_UNKNOWN");
    EXPECT_STREQ(borderModeText(0), "BORDER_MODE_NONE");
    EXPECT_STREQ(borderModeText(1), "BORDERMODE_PROTECT");
    EXPECT_STREQ(borderModeText(2), "BORDERMODE_FREEZE");
    EXPECT_STREQ(borderModeText(3), "BORDER_MODE_UNKNOWN");
}

}  // namespace
}  // namespace korvalite::core
