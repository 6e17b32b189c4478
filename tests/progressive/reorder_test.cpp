// SPDX-License-Identifier: MIT
#include "progressive/reorder.h"

#include "progressive/level_update.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"
#include "support/threads_of.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>

namespace korvalite::core {
namespace {

using test::MeshPtr;
using test::Part;

DMesh attributedHills() {
    DMesh mesh = test::grid(12, 10, test::hills);
    test::jitter(mesh, 0.1F, 8);
    test::addColors(mesh, [](const FloatVec3& p) {
        const auto channel = [](float x) {
            return static_cast<std::uint32_t>(20 * x + 100) & 0xFFU;
        };
        return test::packColor(channel(p.x), 7, channel(p.y));
    });
    test::addMask(mesh, [](const FloatVec3& p) { return 200 + static_cast<int>(4 * p.x); });
    test::addCornerUVs(mesh, [](std::uint32_t triangle) { return triangle / 120; });
    return mesh;
}

class Reorder : public test::DecimationTest {
protected:
    static MeshPtr run(DMesh mesh, bool reorder, std::uint32_t target) {
        return test::decimated(std::move(mesh), [&](ProgressiveMesh& pm) {
            pm.TargetNumItem = target;
            pm.DoReorder = reorder;
        });
    }
};

TEST_F(Reorder, EachLevelIsAPrefixOfTheArrays) {
    const MeshPtr pm = run(attributedHills(), true, 50);
    for (std::int32_t level = 50; level <= 143; level += 3) {
        updateMeshAtLevel(*pm, level);
        const auto vertices = static_cast<std::int32_t>(pm->mesh.numActiveVertices);
        const auto triangles = static_cast<std::int32_t>(pm->mesh.numActiveTriangles);
        for (std::int32_t v = 0; v < pm->mesh.vertexCount(); ++v)
            EXPECT_EQ(pm->mesh.vertexActive.Test(v), v < vertices) << level << ' ' << v;
        for (std::int32_t t = 0; t < pm->mesh.triangleCount(); ++t)
            EXPECT_EQ(pm->mesh.triangleActive.Test(t), t < triangles) << level << ' ' << t;
    }
}

TEST_F(Reorder, SurvivorsKeepTheirOrder) {
    DMesh input = test::sphere(3);
    for (std::size_t v = 0; v < input.vertices.size(); ++v)
        input.maskValues.push_back(static_cast<std::uint8_t>(v < 128 ? 1 + v : 254));
    const MeshPtr off = run(input, false, 150);
    const MeshPtr on = run(input, true, 150);
    std::vector<std::uint8_t> survivors;
    for (std::int32_t v = 0; v < off->mesh.vertexCount(); ++v) {
        if (off->mesh.vertexActive.Test(v))
            survivors.push_back(off->mesh.maskValues[static_cast<std::size_t>(v)]);
    }
    EXPECT_TRUE(std::equal(survivors.begin(), survivors.end(), on->mesh.maskValues.begin()));
}

TEST_F(Reorder, OnAndOffGiveTheSameSurfaceAtEveryLevel) {
    const MeshPtr off = run(attributedHills(), false, 50);
    const MeshPtr on = run(attributedHills(), true, 50);
    for (const std::int32_t level : {50, 51, 77, 120, 143}) {
        updateMeshAtLevel(*off, level);
        updateMeshAtLevel(*on, level);
        EXPECT_EQ(test::surfaceOf(on->mesh), test::surfaceOf(off->mesh)) << level;
    }
}

TEST_F(Reorder, WithoutRecordsTheOrderStays) {
    const DMesh input = attributedHills();
    MeshPtr pm = test::prepared(input);
    ReorderAndClean(*pm, true);
    EXPECT_TRUE(pm->IsReordered);
    EXPECT_EQ(test::arraysOf(pm->mesh, Part::All), test::arraysOf(input, Part::All));
    EXPECT_EQ(pm->mesh.vertexColors, input.vertexColors);
}

TEST_F(Reorder, OffLeavesTheFlagUnsetButReleasesTheWorkingData) {
    for (const bool reorder : {false, true}) {
        for (const std::int32_t driver : {MEMSPEED_TRADEOFF_HIGH_SPEED, MEMSPEED_TRADEOFF_LOW_MEM,
                                          MEMSPEED_TRADEOFF_LOW_MEM_MT, MEMSPEED_TRADEOFF_MELAX}) {
            const MeshPtr pm = test::decimated(attributedHills(), [&](ProgressiveMesh& settings) {
                settings.MemSpeedTradeOff = driver;
                settings.DoReorder = reorder;
                settings.TargetNumItem = 50;
                test::askForSymmetry(settings, 0);
            });
            EXPECT_EQ(pm->IsReordered, reorder);
            EXPECT_TRUE(pm->IsCleaned);
            EXPECT_TRUE(pm->mesh.vertexCorners.areBuiltFor(0, 0)) << "released";
            EXPECT_TRUE(pm->mesh.uvCornerHead.empty() && pm->mesh.uvCornerNext.empty());
            EXPECT_TRUE(pm->mesh.symmetryCache.pairing.empty());
            EXPECT_EQ(pm->mesh.borderVertices.count() + pm->mesh.uvSeamVertices.count(), 0);
            EXPECT_EQ(pm->symmetryPaired.count() + pm->symmetryInterior.count() +
                          pm->symmetrySlaves.count(),
                      0);
            EXPECT_EQ(pm->costQueue.vertexCount(), 0);
            EXPECT_EQ(test::threadsOf(*pm).lockedVertices.count(), 0);
        }
    }
}

TEST_F(Reorder, PartnersAndRecordsFollowTheirVertices) {
    const MeshPtr pm = run(attributedHills(), true, 50);
    const auto records = static_cast<std::int32_t>(pm->vsplitList.NumVtxSplit());
    ASSERT_GT(records, 0);
    std::int32_t lastTriangle = pm->mesh.triangleCount();
    for (std::int32_t i = 0; i < records; ++i) {
        const VSplitView split = pm->vsplitList.ensureLoaded(i);
        // The vertex of the first collapse is now the last one.
        EXPECT_EQ(split.vertex(), pm->mesh.vertexCount() - 1 - i);
        const auto v = static_cast<std::size_t>(split.vertex());
        EXPECT_LT(pm->mesh.vertices[v].partner, split.vertex());
        for (const std::int32_t triangle : split.removedTriangles())
            EXPECT_EQ(triangle, --lastTriangle);
    }
}

TEST_F(Reorder, RecordsOfEveryPageAreRewritten) {
    const MeshPtr whole = run(attributedHills(), true, 50);
    const MeshPtr paged = test::decimated(attributedHills(), [](ProgressiveMesh& pm) {
        pm.TargetNumItem = 50;
        pm.vsplitList.pageCapacity = 7;
    });
    ASSERT_LT(paged->vsplitList.pageCount(), paged->vsplitList.NumVtxSplit());
    test::goAllUp(*whole);
    test::goAllUp(*paged);
    EXPECT_EQ(test::arraysOf(paged->mesh, Part::All), test::arraysOf(whole->mesh, Part::All));
}

TEST_F(Reorder, RecordsLostFromTheScratchFileAreSkipped) {
    const MeshPtr pm = test::decimated(attributedHills(), [](ProgressiveMesh& settings) {
        settings.TargetNumItem = 50;
        settings.DoReorder = false;
        settings.vsplitList.pageCapacity = 7;
    });
    const auto surface = test::surfaceOf(pm->mesh);
    std::filesystem::resize_file(test::pathOfUtf8(pm->vsplitList.path().c_str()), 0);
    ReorderAndClean(*pm, true);
    EXPECT_TRUE(test::isSound(pm->mesh));
    EXPECT_EQ(test::surfaceOf(pm->mesh), surface);
}

}  // namespace
}  // namespace korvalite::core
