// SPDX-License-Identifier: MIT
#include "collapse/carry_attributes.h"

#include "collapse/collapse.h"
#include "collapse/sharing.h"
#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "progressive/progressive_mesh.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace korvalite::core {
namespace {

constexpr std::int32_t kColumns = 4;
std::int32_t at(std::int32_t column, std::int32_t row) {
    return (kColumns + 1) * row + column;
}

// A flat grid of 4 by 4 squares. The UVs are the position divided by 16 in chart 0, and shifted by
// 4 in the next chart, which starts at a column of squares.
struct Charted {
    ProgressiveMesh pm;
    DMesh& mesh = pm.mesh;
    CollapseRecord collapse;

    explicit Charted(std::uint32_t seamColumn = 99) {
        mesh = test::grid(kColumns, 4);
        test::addCornerUVs(mesh, [&](std::uint32_t triangle) {
            return triangle / 2 % static_cast<std::uint32_t>(kColumns) >= seamColumn ? 1 : 0;
        });
        BuildVertexCorners(mesh);
        ComputeBorderVertices(mesh);
        WeldCornerUVs(mesh);
        BuildUVCorners(mesh);
        ComputeUVSeams(mesh);
        pm.costQueue.Init(mesh.vertexCount());
    }

    // Collapses v onto u at `position`, then updates the UVs.
    const VSplit& run(std::int32_t v, std::int32_t u, const FloatVec3& position) {
        CollapseScratch scratch;
        IndexList list;
        EXPECT_EQ(CollapseEdge(pm, v, u, position, collapse, scratch, Alone(pm)),
                  CollapseResult::Done);
        UpdateUVsAfterCollapse(mesh, v, u, collapse.split, list, Alone(pm));
        return collapse.split;
    }

    // The u of all UVs at the corners of a vertex, times 16.
    [[nodiscard]] std::vector<float> us(std::int32_t vertex) const {
        std::vector<float> all;
        forEachCorner(mesh, vertex, [&](std::int32_t corner) {
            const float u = 16 * mesh.coordsUV[static_cast<std::size_t>(uvIndexAt(mesh, corner))].u;
            if (std::find(all.begin(), all.end(), u) == all.end()) all.push_back(u);
        });
        std::sort(all.begin(), all.end());
        return all;
    }
};

// The rim of a chart is a seam too, so only inner vertices are off every seam.

TEST(UpdateUVs, OffTheSeamMakesOnePairAndInterpolatesTheUV) {
    Charted m;
    const VSplit& split = m.run(at(1, 2), at(2, 2), {1.25F, 2, 0});
    EXPECT_EQ(split.uvIndexPairs.size(), 1U);
    EXPECT_EQ(m.us(at(2, 2)), std::vector<float>{1.25F});
}

TEST(UpdateUVs, BeyondAnEndTakesTheUVOfThatEnd) {
    for (const auto& [x, u] : {std::pair{2.0F, 2.0F}, {2.5F, 2.0F}, {0.5F, 1.0F}, {1.0F, 1.0F}}) {
        Charted m;
        m.pm.AvoidNormalReverse = false;
        m.run(at(1, 2), at(2, 2), {x, 2, 0});
        EXPECT_EQ(m.us(at(2, 2)), std::vector<float>{u}) << x;
    }
}

TEST(UpdateUVs, AnEdgeOfZeroLengthKeepsTheUV) {
    Charted m;
    m.pm.AvoidNormalReverse = false;
    m.mesh.vertices[static_cast<std::size_t>(at(1, 2))].x = 2;
    m.run(at(1, 2), at(2, 2), {7, 2, 0});
    EXPECT_EQ(m.us(at(2, 2)), std::vector<float>{2});
}

TEST(UpdateUVs, InwardFromTheSeamTheRemovedUVAndTheSeamMove) {
    Charted m(2);  // the seam runs along column 2
    ASSERT_TRUE(m.mesh.uvSeamVertices.Test(at(2, 2)));
    ASSERT_FALSE(m.mesh.uvSeamVertices.Test(at(1, 2)));
    m.run(at(2, 2), at(1, 2), {1.5F, 2, 0});
    EXPECT_TRUE(m.mesh.uvSeamVertices.Test(at(1, 2)));
    const std::vector<float> us = m.us(at(1, 2));
    EXPECT_NE(std::find(us.begin(), us.end(), 2.0F), us.end());  // the seam's UV in chart 0
    EXPECT_EQ(std::find(us.begin(), us.end(), 1.0F), us.end());
}

TEST(UpdateUVs, OntoTheSeamKeepsTheKeptUV) {
    Charted m(2);
    m.run(at(1, 2), at(2, 2), {1.5F, 2, 0});
    EXPECT_EQ(m.us(at(2, 2)), (std::vector<float>{2, 66}));
}

TEST(UpdateUVs, AlongTheSeamMakesAPairForEachChart) {
    Charted m(2);
    const VSplit& split = m.run(at(2, 1), at(2, 2), {2, 1.5F, 0});
    EXPECT_EQ(split.uvIndexPairs.size(), 2U);
    EXPECT_EQ(split.savedUVs.size(), 2U);
    EXPECT_EQ(m.us(at(2, 2)), (std::vector<float>{2, 66}));
}

TEST(UpdateUVs, OffTheSeamOnlyTheFirstOfSeveralUVsMoves) {
    // Along a seam that is not marked as a seam.
    Charted m(2);
    m.mesh.uvSeamVertices.Clear(at(2, 1));
    const VSplit& split = m.run(at(2, 1), at(2, 2), {2, 1.5F, 0});
    ASSERT_EQ(split.uvIndexPairs.size(), 1U);
    EXPECT_EQ(split.uvIndexPairs[0].oldIndex, split.cornerUVIndices.front());
    EXPECT_NE(std::count(split.cornerUVIndices.begin(), split.cornerUVIndices.end(),
                         split.cornerUVIndices.front()),
              static_cast<std::ptrdiff_t>(split.cornerUVIndices.size()));
}

TEST(UpdateUVs, MakesNoPairWithoutACornerNextToTheKeptVertex) {
    Charted m;
    // The first corner gets its own UV, in a triangle without the kept vertex.
    IndexList corners;
    GetVertexCorners(m.mesh, at(1, 2), corners);
    const std::int32_t first = corners.front();
    ASSERT_NE(vertexAt(m.mesh, nextCorner(first)), at(2, 2));
    ASSERT_NE(vertexAt(m.mesh, previousCorner(first)), at(2, 2));
    const auto alone = static_cast<std::int32_t>(m.mesh.coordsUV.size());
    m.mesh.coordsUV.push_back({0.5F, 0.5F});
    m.mesh.indicesUV[static_cast<std::size_t>(first)] = static_cast<std::uint32_t>(alone);
    BuildUVCorners(m.mesh);
    const std::vector<UVCoord> before = m.mesh.coordsUV;
    const VSplit& split = m.run(at(1, 2), at(2, 2), {1.5F, 2, 0});
    EXPECT_TRUE(split.uvIndexPairs.empty());
    EXPECT_TRUE(split.savedUVs.empty());
    EXPECT_EQ(split.cornerUVIndices.size(), split.corners.size());
    EXPECT_EQ(split.cornerUVIndices.front(), alone);
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(m.mesh.coordsUV[i].u, before[i].u);
}

// Expects each corner of a living triangle to be on the list of its UV once, and no other corner on
// any list.
void expectSoundUVLists(const DMesh& mesh) {
    std::vector<int> met(mesh.triangles.size());
    IndexList corners;
    for (std::int32_t uv = 0; uv < static_cast<std::int32_t>(mesh.coordsUV.size()); ++uv) {
        GetUVCorners(mesh, uv, corners);
        for (const std::int32_t corner : corners) {
            ++met[static_cast<std::size_t>(corner)];
            EXPECT_EQ(uvIndexAt(mesh, corner), uv);
        }
    }
    for (std::int32_t corner = 0; corner < mesh.cornerCount(); ++corner) {
        EXPECT_EQ(met[static_cast<std::size_t>(corner)],
                  mesh.triangleActive.Test(corner / 3) ? 1 : 0)
            << corner;
    }
}

TEST(UpdateUVs, UVListsHoldEachCornerOfALivingTriangleOnce) {
    Charted along(2);
    along.run(at(2, 1), at(2, 2), {2, 1.5F, 0});
    expectSoundUVLists(along.mesh);
    Charted inside;
    inside.run(at(1, 2), at(2, 2), {1.5F, 2, 0});
    expectSoundUVLists(inside.mesh);
}

TEST(UpdateUVs, AUVOfADyingTriangleAloneStillGetsAPair) {
    Charted m(2);
    const std::int32_t v = at(2, 1);
    const std::int32_t u = at(2, 2);
    IndexList corners;
    GetVertexCorners(m.mesh, v, corners);
    std::int32_t last = kNone;  // the last one next to u, so that another pair precedes it
    for (const std::int32_t corner : corners) {
        if (vertexAt(m.mesh, nextCorner(corner)) == u ||
            vertexAt(m.mesh, previousCorner(corner)) == u)
            last = corner;
    }
    const auto alone = static_cast<std::int32_t>(m.mesh.coordsUV.size());
    m.mesh.coordsUV.push_back({0.75F, 0.5F});
    m.mesh.indicesUV[static_cast<std::size_t>(last)] = static_cast<std::uint32_t>(alone);
    BuildUVCorners(m.mesh);
    const VSplit& split = m.run(v, u, {2, 1.5F, 0});
    ASSERT_EQ(split.uvIndexPairs.size(), 2U);
    ASSERT_EQ(split.uvIndexPairs[1].oldIndex, alone);
    const auto survivor = static_cast<std::size_t>(split.uvIndexPairs[1].newIndex);
    EXPECT_EQ(m.mesh.coordsUV[survivor].u, 0.75F);
    expectSoundUVLists(m.mesh);
}

TEST(UpdateUVs, PairsTheNextCornerIfBothHoldTheKeptVertex) {
    Charted m;
    const std::int32_t v = at(1, 2);
    const std::int32_t u = at(2, 2);
    const auto first = static_cast<std::int32_t>(m.mesh.coordsUV.size());
    for (const std::int32_t vertex : {v, u, u}) {
        m.mesh.triangles.push_back(static_cast<std::uint32_t>(vertex));
        m.mesh.indicesUV.push_back(static_cast<std::uint32_t>(m.mesh.coordsUV.size()));
        m.mesh.coordsUV.push_back({0.5F, 0.5F});
    }
    test::completeMesh(m.mesh);
    BuildVertexCorners(m.mesh);
    BuildUVCorners(m.mesh);
    m.pm.ProtectTopology = false;
    const VSplit& split = m.run(v, u, {1.5F, 2, 0});
    ASSERT_EQ(split.uvIndexPairs.size(), 1U);
    EXPECT_EQ(split.uvIndexPairs[0].oldIndex, first);
    EXPECT_EQ(split.uvIndexPairs[0].newIndex, first + 1);
    expectSoundUVLists(m.mesh);
}

TEST(UpdateUVs, ASeamCornerMarkMovesWithOrWithoutASeam) {
    Charted m;
    m.mesh.uvSeamCorners.Set(at(1, 2));
    ASSERT_FALSE(m.mesh.uvSeamVertices.Test(at(1, 2)));
    m.run(at(1, 2), at(2, 2), {1.5F, 2, 0});
    EXPECT_TRUE(m.mesh.uvSeamCorners.Test(at(2, 2)));
    EXPECT_FALSE(m.mesh.uvSeamVertices.Test(at(2, 2)));
}

TEST(UpdateUVs, OnThreadsASeamCornerMarkNeedsASeam) {
    Charted m;
    m.mesh.uvSeamCorners.Set(at(1, 2));
    CollapseScratch scratch;
    IndexList list;
    CriticalSections sections;
    const FloatVec3 place = m.mesh.vertices[static_cast<std::size_t>(at(2, 2))].position();
    ThreadWorkRecord record;
    const Shared shared(m.pm, record, sections);
    ASSERT_EQ(CollapseEdge(m.pm, at(1, 2), at(2, 2), place, m.collapse, scratch, shared),
              CollapseResult::Done);
    UpdateUVsAfterCollapse(m.mesh, at(1, 2), at(2, 2), m.collapse.split, list, shared);
    EXPECT_FALSE(m.mesh.uvSeamCorners.Test(at(2, 2)));
}

}  // namespace
}  // namespace korvalite::core
