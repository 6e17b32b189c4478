// SPDX-License-Identifier: MIT
//
// The two cases in which the rules of the level update do not lead back to the start, and what they
// give instead: vertices that lose their triangles, and UVs that two UVs merge into.
#include "formats/kvm_reader.h"
#include "formats/kvm_samples.h"
#include "formats/kvm_writer.h"
#include "progressive/level_update.h"
#include "support/decimation_run.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

namespace korvalite::core::test {
namespace {

// A torus, and separate triangles next to it. When one of their vertices collapses, the other two
// lose their only triangle: a driver drops them without splits of their own.
constexpr std::uint32_t kLoneTriangles = 5;
constexpr std::uint32_t kVertices = 80 + 3 * kLoneTriangles;

DMesh torusAndLoneTriangles() {
    const DMesh ring = torus(10, 8);
    Points points;
    for (const VertexRecord& vertex : ring.vertices)
        points.push_back(vertex.position());
    Faces faces;
    for (std::size_t c = 0; c < ring.triangles.size(); c += 3)
        faces.push_back({ring.triangles[c], ring.triangles[c + 1], ring.triangles[c + 2]});
    for (std::uint32_t i = 0; i < kLoneTriangles; ++i) {
        const auto first = static_cast<std::uint32_t>(points.size());
        const float x = 5.0F + 2.0F * static_cast<float>(i);
        points.insert(points.end(), {{x, 0, 0}, {x + 0.1F, 0, 0}, {x, 0.1F, 0}});
        faces.push_back({first, first + 1, first + 2});
    }
    return buildMesh(points, faces);
}

class StrayVertices : public DecimationTest {
protected:
    static MeshPtr decimatedTo(std::uint32_t target) {
        return decimated(torusAndLoneTriangles(), [target](ProgressiveMesh& pm) {
            pm.ProtectTopology = false;
            pm.TargetNumItem = target;
        });
    }
    MeshPtr loaded(std::int32_t wanted) const {
        auto pm = std::make_unique<ProgressiveMesh>();
        EXPECT_EQ(loadProgressiveMesh(*pm, path_.c_str(), wanted), 0);
        return pm;
    }

    std::string path_ = job.folder() / u8"mesh.kvm";
    MeshPtr lowest_ = decimatedTo(4);
    const std::uint32_t splits_ = lowest_->vsplitList.NumVtxSplit();
    // The vertices dropped without a split.
    const std::uint32_t strays_ = kVertices - 4 - splits_;
};

TEST_F(StrayVertices, NumberTwoForEachLoneTriangle) {
    EXPECT_EQ(lowest_->mesh.numActiveVertices, 4U);
    EXPECT_EQ(strays_, 2 * kLoneTriangles);
}

TEST_F(StrayVertices, ComeBackWithTheirTriangle) {
    goAllUp(*lowest_);
    EXPECT_EQ(lowest_->mesh.numActiveVertices, kVertices);
    EXPECT_TRUE(isSound(lowest_->mesh));
    EXPECT_TRUE(surfaceOf(lowest_->mesh) == surfaceOf(torusAndLoneTriangles()));
}

// Applying a collapse clears only its vertex, so vertices without a triangle stay.
TEST_F(StrayVertices, StayActiveOnTheWayDown) {
    const auto before = surfaceOf(lowest_->mesh);
    goAllUp(*lowest_);
    goAllDown(*lowest_);
    EXPECT_EQ(lowest_->mesh.numActiveVertices, 4 + strays_);
    EXPECT_TRUE(isSound(lowest_->mesh));
    EXPECT_TRUE(surfaceOf(lowest_->mesh) == before) << "no triangle names them";
}

// So a level reached from above has as many vertices as one reached from below, but fewer of them
// are in triangles.
TEST_F(StrayVertices, CountAsVerticesOfALevelReachedFromAbove) {
    constexpr std::int32_t kLevel = 40;
    const MeshPtr direct = decimatedTo(kLevel);
    updateMeshAtLevel(*lowest_, kLevel);
    EXPECT_EQ(lowest_->mesh.numActiveVertices, direct->mesh.numActiveVertices);
    EXPECT_TRUE(surfaceOf(lowest_->mesh) == surfaceOf(direct->mesh)) << "from below";
    goAllUp(*lowest_);
    updateMeshAtLevel(*lowest_, kLevel);
    EXPECT_EQ(lowest_->mesh.numActiveVertices, static_cast<std::uint32_t>(kLevel));
    EXPECT_LT(lowest_->mesh.numActiveTriangles, direct->mesh.numActiveTriangles) << "from above";
}

// A partial load counts one vertex for each split, and all others as part of the lowest level. The
// strays are among those, but are inactive until their triangle is back.
TEST_F(StrayVertices, KeepAPartialLoadShortOfItsLevel) {
    ASSERT_EQ(saveProgressiveMesh(*lowest_, path_.c_str()), 0);
    int shorter = 0;
    for (std::int32_t level = 1; level <= static_cast<std::int32_t>(kVertices) + 1; ++level) {
        const MeshPtr partial = loaded(level);
        const MeshPtr full = loaded(0);
        updateMeshAtLevel(*partial, level);
        updateMeshAtLevel(*full, level);
        const std::uint32_t reached = partial->mesh.numActiveVertices;
        if (reached < full->mesh.numActiveVertices) {
            ++shorter;
            EXPECT_EQ(partial->CurVtxSplitPos, 0) << "all splits that were read are used up";
            const MeshPtr lower = loaded(0);
            updateMeshAtLevel(*lower, static_cast<std::int32_t>(reached));
            EXPECT_TRUE(surfaceOf(partial->mesh) == surfaceOf(lower->mesh)) << level;
        } else {
            EXPECT_TRUE(surfaceOf(partial->mesh) == surfaceOf(full->mesh)) << level;
        }
        EXPECT_TRUE(isSound(partial->mesh)) << level;
    }
    EXPECT_GT(shorter, 0);
}

// Saved UVs are exchanged in the order of their pairs in both directions. If two pairs have the
// same new index, the second exchange does not undo the first: each step rotates three UVs.
TEST_F(DecimationTest, AUVMergedFromTwoIsRestoredAfterThreeRoundTrips) {
    KvmFile file = squareWithOneSplit();
    const UVCoord a{0.75F, 0};
    const UVCoord b{0.875F, 0};
    const UVCoord c = file.coordsUV[0];
    file.coordsUV.push_back({0.5F, 0.625F});
    file.splits[0].cornerUVIndices = {4, 4, 5, 5};
    file.splits[0].uvIndexPairs = {{4, 0}, {5, 0}};
    file.splits[0].savedUVs = {a, b};
    ProgressiveMesh pm;
    fillFrom(file, pm);
    const UVCoord& merged = pm.mesh.coordsUV[0];
    for (const UVCoord& expected : {b, a, c, b, a, c}) {
        updateMeshAtLevel(pm, pm.mesh.numActiveVertices == 4 ? 5 : 4);
        EXPECT_EQ(merged.u, expected.u);
    }
    EXPECT_EQ(kvmFileOf(pm).splits[0].savedUVs[0].u, a.u);
    EXPECT_EQ(kvmFileOf(pm).splits[0].savedUVs[1].u, b.u);
}

}  // namespace
}  // namespace korvalite::core::test
