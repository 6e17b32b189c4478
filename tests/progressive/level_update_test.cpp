// SPDX-License-Identifier: MIT
//
// The level update on small hand-made meshes, and what it shows to the host. The tests in
// tests/property take whole meshes and files through their levels.
#include "progressive/level_update.h"

#include "formats/kvm_samples.h"
#include "host/host_monitor.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/step_recorder.h"
#include "support/stop_request.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace korvalite::core {
namespace {

using test::KvmFile;
using test::rowOfSplits;
using test::squareWithOneSplit;

using Indices = std::vector<std::uint32_t>;

class LevelUpdate : public test::DecimationTest {
protected:
    void start(const KvmFile& file) {
        test::fillFrom(file, pm);
        pm.monitor = &hostMonitor();
    }
    std::string bytes() { return test::kvmFileOf(pm).bytes(); }

    ProgressiveMesh pm;
};

TEST_F(LevelUpdate, UpUndoesACollapse) {
    start(squareWithOneSplit());
    EXPECT_EQ(updateMeshAtLevel(pm, 5), 0);
    const DMesh& mesh = pm.mesh;
    EXPECT_EQ(pm.CurVtxSplitPos, 0);
    EXPECT_EQ(mesh.numActiveVertices, 5U);
    EXPECT_EQ(mesh.numActiveTriangles, 4U);
    EXPECT_TRUE(test::isSound(mesh));
    EXPECT_EQ(mesh.triangles, (Indices{1, 2, 4, 2, 3, 4, 3, 0, 4, 0, 1, 4}));
    EXPECT_EQ(mesh.indicesUV, (Indices{1, 2, 4, 2, 3, 4, 3, 0, 4, 0, 1, 4}));
    EXPECT_EQ(mesh.vertices[0].x, 0.0F);
    EXPECT_EQ(mesh.vertexColors[0], 0x00010203U);
    EXPECT_EQ(mesh.coordsUV[0].u, 0.0F);
    // The record now holds the data that the mesh had.
    const VSplitView split = pm.vsplitList.ensureLoaded(0);
    EXPECT_EQ(split.position().x, 0.25F);
    EXPECT_EQ(split.savedColor(), 0x00112233U);
    EXPECT_EQ(split.savedUV(0).u, 0.125F);
    EXPECT_TRUE(pm.vsplitList.dirty());
}

TEST_F(LevelUpdate, DownAppliesACollapseAgain) {
    start(squareWithOneSplit());
    updateMeshAtLevel(pm, 5);
    EXPECT_EQ(updateMeshAtLevel(pm, 4), 0);
    KvmFile expected = squareWithOneSplit();
    expected.indicesUV = {1, 2, 0, 2, 3, 0, 3, 0, 0, 0, 1, 0};  // dead triangles are updated too
    EXPECT_EQ(bytes(), expected.bytes());
}

TEST_F(LevelUpdate, ArraysOfUnhandledColorsAndUVsAreKept) {
    KvmFile file = squareWithOneSplit();
    file.switches[KvmFile::kUseColors] = 0;
    file.switches[KvmFile::kHandleUVs] = 0;
    start(file);
    updateMeshAtLevel(pm, 5);
    EXPECT_EQ(pm.mesh.vertexColors, file.colors);
    EXPECT_EQ(pm.mesh.indicesUV, file.indicesUV);
    EXPECT_EQ(pm.mesh.vertices[0].x, 0.0F);
}

TEST_F(LevelUpdate, OnlyCornersWithThePairsFirstUVFollow) {
    // One corner of the vertex has its own UV without a pair.
    KvmFile file = squareWithOneSplit();
    file.coordsUV.push_back({0.75F, 0.75F});
    file.splits[0].cornerUVIndices = {4, 5, 4, 4};
    start(file);
    updateMeshAtLevel(pm, 5);
    EXPECT_EQ(pm.mesh.indicesUV, (Indices{1, 2, 4, 2, 3, 5, 3, 0, 4, 0, 1, 4}));
    updateMeshAtLevel(pm, 4);
    EXPECT_EQ(pm.mesh.indicesUV, (Indices{1, 2, 0, 2, 3, 5, 3, 0, 0, 0, 1, 0}));
}

TEST_F(LevelUpdate, AReturningTriangleActivatesItsVerticesForGood) {
    KvmFile file = squareWithOneSplit();
    file.triangles = {1, 2, 0, 1, 2, 0, 3, 0, 0, 0, 1, 0};
    file.vertexActive[3] = false;  // nothing else refers to it
    file.countActive();
    start(file);
    updateMeshAtLevel(pm, 5);
    EXPECT_TRUE(pm.mesh.vertexActive.Test(3));
    EXPECT_EQ(pm.mesh.numActiveVertices, 5U);
    updateMeshAtLevel(pm, 4);
    EXPECT_TRUE(pm.mesh.vertexActive.Test(3));
    EXPECT_EQ(pm.mesh.numActiveVertices, 4U);
    EXPECT_TRUE(test::isSound(pm.mesh));
}

TEST_F(LevelUpdate, ExchangedDataReachesTheRecordsOfEveryPage) {
    ProgressiveMesh paged;
    paged.vsplitList.pageCapacity = 7;
    test::fillFrom(rowOfSplits(100, 80), paged);
    ASSERT_LT(paged.vsplitList.pageCount(), 80U);
    start(rowOfSplits(100, 80));
    for (const std::int32_t level : {100, 20, 63, 21, 100, 20}) {
        updateMeshAtLevel(pm, level);
        updateMeshAtLevel(paged, level);
        EXPECT_EQ(test::kvmFileOf(paged).bytes(), bytes()) << level;
    }
}

TEST_F(LevelUpdate, APositionOutsideTheListChangesNothing) {
    start(rowOfSplits(30, 20));
    const test::Words before = test::arraysOf(pm.mesh, test::Part::All);
    for (const std::int32_t position : {-1, 21, std::numeric_limits<std::int32_t>::max()}) {
        pm.CurVtxSplitPos = position;
        updateMeshAtLevel(pm, 30);
        updateMeshAtLevel(pm, 5);
        EXPECT_EQ(pm.CurVtxSplitPos, position);
        EXPECT_EQ(test::arraysOf(pm.mesh, test::Part::All), before);
    }
}

TEST_F(LevelUpdate, ATargetEqualToTheCurrentCountChangesNothing) {
    start(rowOfSplits(100, 80));
    updateMeshAtLevel(pm, 50);
    const std::string before = bytes();
    const test::HostedProgress host;
    EXPECT_EQ(updateMeshAtLevel(pm, 50), 0);
    EXPECT_EQ(bytes(), before);
    EXPECT_FALSE(progressChannel().EndMainTask()) << "no task was started";
}

TEST_F(LevelUpdate, StartsAMainTaskAndEndsItsStep) {
    start(rowOfSplits(100, 80));
    const test::HostedProgress host;
    updateMeshAtLevel(pm, 50);
    EXPECT_FALSE(progressChannel().EndSubTask()) << "the step has been ended";
    EXPECT_TRUE(progressChannel().EndMainTask()) << "the caller has to end the task";
}

TEST_F(LevelUpdate, ReportsItsEndToAnObserverEvenWithNothingToDo) {
    start(rowOfSplits(100, 80));
    test::StepRecorder steps;
    pm.monitor = &steps;
    updateMeshAtLevel(pm, 50);
    EXPECT_EQ(steps.numbers, std::vector<int>{14});
    updateMeshAtLevel(pm, 50);
    EXPECT_EQ(steps.numbers, (std::vector<int>{14, 14}));
}

TEST_F(LevelUpdate, IgnoresStopRequests) {
    start(rowOfSplits(100, 80));
    const test::StopRequest request;
    updateMeshAtLevel(pm, 90);
    EXPECT_EQ(pm.mesh.numActiveVertices, 90U);
    updateMeshAtLevel(pm, 30);
    EXPECT_EQ(pm.mesh.numActiveVertices, 30U);
    progressChannel().EndMainTask();
}

TEST_F(LevelUpdate, EveryLevelIsReachableFromEveryOther) {
    start(rowOfSplits(30, 20));
    for (std::int32_t from = 10; from <= 30; ++from) {
        for (std::int32_t to = 10; to <= 30; ++to) {
            updateMeshAtLevel(pm, from);
            updateMeshAtLevel(pm, to);
            EXPECT_EQ(pm.mesh.numActiveVertices, static_cast<std::uint32_t>(to));
            EXPECT_EQ(pm.CurVtxSplitPos, 30 - to);
        }
    }
    test::goAllDown(pm);
    EXPECT_EQ(bytes(), rowOfSplits(30, 20).bytes());
}

TEST_F(LevelUpdate, ATargetAboveTheFullCountUndoesEveryCollapse) {
    start(rowOfSplits(30, 20));
    for (const std::int32_t target : {31, 1000, std::numeric_limits<std::int32_t>::max()}) {
        updateMeshAtLevel(pm, target);
        EXPECT_EQ(pm.CurVtxSplitPos, 0);
        EXPECT_EQ(pm.mesh.numActiveVertices, 30U);
        // The last collapse onto vertex 9 was that of vertex 10, at position 19 of the list.
        EXPECT_EQ(pm.mesh.vertices[9].x, 19.0F);
        updateMeshAtLevel(pm, 15);
    }
}

TEST_F(LevelUpdate, ATargetBelowTheLowestLevelAppliesEveryCollapse) {
    start(rowOfSplits(30, 20));
    for (const std::int32_t target : {9, 0, -1, std::numeric_limits<std::int32_t>::min()}) {
        updateMeshAtLevel(pm, 25);
        updateMeshAtLevel(pm, target);
        EXPECT_EQ(pm.CurVtxSplitPos, 20);
        EXPECT_EQ(bytes(), rowOfSplits(30, 20).bytes());
    }
}

TEST_F(LevelUpdate, ASplitWithoutTrianglesChangesOnlyTheVertexCount) {
    KvmFile file = squareWithOneSplit();
    file.splits[0].corners.clear();
    file.splits[0].removedTriangles.clear();
    file.splits[0].cornerUVIndices.clear();
    start(file);
    updateMeshAtLevel(pm, 5);
    EXPECT_EQ(pm.mesh.numActiveVertices, 5U);
    EXPECT_EQ(pm.mesh.numActiveTriangles, 2U);
    EXPECT_EQ(pm.mesh.triangles, file.triangles);
    updateMeshAtLevel(pm, 4);
    EXPECT_EQ(pm.mesh.numActiveVertices, 4U);
    EXPECT_EQ(pm.mesh.numActiveTriangles, 2U);
}

TEST_F(LevelUpdate, TheTargetCanCountTriangles) {
    start(squareWithOneSplit());
    pm.targetCountsVertices = false;
    updateMeshAtLevel(pm, 4);
    EXPECT_EQ(pm.mesh.numActiveTriangles, 4U);
    updateMeshAtLevel(pm, 3);
    EXPECT_EQ(pm.mesh.numActiveTriangles, 2U) << "the nearest level below";
    updateMeshAtLevel(pm, 3);
    EXPECT_EQ(pm.mesh.numActiveTriangles, 4U) << "the nearest level above";
}

TEST_F(LevelUpdate, AMeshWithoutSplitsNeverChanges) {
    start(rowOfSplits(8, 0));
    for (const std::int32_t target : {-1, 0, 4, 8, 100}) {
        updateMeshAtLevel(pm, target);
        EXPECT_EQ(bytes(), rowOfSplits(8, 0).bytes()) << target;
    }
}

TEST_F(LevelUpdate, ATriangleNamedRepeatedlyIsCountedOnce) {
    KvmFile file = squareWithOneSplit();
    file.splits[0].corners = {2, 5, 8, 11, 8, 11};
    file.splits[0].cornerUVIndices = {4, 4, 4, 4, 4, 4};
    start(file);
    for (int round = 0; round < 3; ++round) {
        updateMeshAtLevel(pm, 5);
        EXPECT_EQ(pm.mesh.numActiveTriangles, 4U);
        updateMeshAtLevel(pm, 4);
        EXPECT_EQ(pm.mesh.numActiveTriangles, 2U);
        EXPECT_TRUE(test::isSound(pm.mesh));
    }
}

TEST_F(LevelUpdate, EndsWhereTheScratchFileWasLost) {
    pm.vsplitList.pageCapacity = 10;
    start(rowOfSplits(100, 80));
    ASSERT_LT(pm.vsplitList.pageCount(), 11U);
    std::filesystem::resize_file(test::pathOfUtf8(pm.vsplitList.path().c_str()), 0);
    EXPECT_EQ(updateMeshAtLevel(pm, 100), 0);
    EXPECT_LT(pm.mesh.numActiveVertices, 100U);
    EXPECT_TRUE(test::isSound(pm.mesh));
}

// A run without splits, because its target is too high.
test::MeshPtr withNothingToDo(bool reorder) {
    return test::decimated(test::torus(6, 5), [reorder](ProgressiveMesh& mesh) {
        mesh.TargetNumItem = 1000;
        mesh.DoReorder = reorder;
    });
}

TEST_F(LevelUpdate, WithoutSplitsReorderingKeepsTheOrder) {
    const test::MeshPtr ordered = withNothingToDo(true);
    EXPECT_EQ(ordered->vsplitList.NumVtxSplit(), 0U);
    EXPECT_TRUE(ordered->IsReordered);
    EXPECT_TRUE(ordered->IsCleaned);
    EXPECT_EQ(test::arraysOf(ordered->mesh, test::Part::All),
              test::arraysOf(test::torus(6, 5), test::Part::All));
}

TEST_F(LevelUpdate, WithoutReorderingTheWorkingDataIsStillReleased) {
    const test::MeshPtr unordered = test::decimated(test::torus(6, 5), [](ProgressiveMesh& mesh) {
        mesh.TargetNumItem = 10;
        mesh.DoReorder = false;
    });
    EXPECT_FALSE(unordered->IsReordered);
    EXPECT_TRUE(unordered->IsCleaned);
    EXPECT_TRUE(unordered->mesh.vertexCorners.areBuiltFor(0, 0)) << "released";
    EXPECT_EQ(unordered->mesh.borderVertices.count(), 0);
    EXPECT_GT(unordered->vsplitList.NumVtxSplit(), 0U) << "the splits are not working data";
}

}  // namespace
}  // namespace korvalite::core
