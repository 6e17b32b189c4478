// SPDX-License-Identifier: MIT
//
// What a run does to corner UVs: charts never mix, seams keep their place, and UVs are the same bit
// for bit where nothing has moved.
#include "property/chart_cases.h"
#include "property/run_cases.h"

#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "support/level_walk.h"
#include "support/mesh_validator.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>

namespace korvalite::core::test {
namespace {

class CornerUVs : public DecimationTest {};

TEST_F(CornerUVs, NoTriangleMixesCharts) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        for (const float percent : {60.0F, 30.0F, 10.0F}) {
            const MeshPtr pm = decimatedInPlace(hillsOfTwoCharts(seed), percent);
            ASSERT_TRUE(pm->m_handleUVs_internal);
            std::array<int, 2> triangles{};
            for (std::int32_t t = 0; t < pm->mesh.triangleCount(); ++t) {
                if (!pm->mesh.triangleActive.Test(t)) continue;
                const std::size_t c = 3 * static_cast<std::size_t>(t);
                const int chart = chartAt(pm->mesh, c);
                ASSERT_TRUE(chart == 0 || chart == 1);
                EXPECT_EQ(chartAt(pm->mesh, c + 1), chart) << t;
                EXPECT_EQ(chartAt(pm->mesh, c + 2), chart) << t;
                ++triangles[static_cast<std::size_t>(chart)];
            }
            EXPECT_GT(triangles[0], 10);
            EXPECT_GT(triangles[1], 10);
        }
    }
}

// In a run that goes further down, seams reach the border of the mesh, which counts as a seam too,
// and may slide along it.
TEST_F(CornerUVs, SeamsStayOnTheSeam) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        for (const float percent : {80.0F, 60.0F, 30.0F}) {
            expectSeamsOnTheSeam(decimatedInPlace(hillsOfTwoCharts(seed), percent)->mesh);
        }
    }
}

TEST_F(CornerUVs, ChartsStayOnTheirSideOfTheSeam) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        expectChartsOnTheirSides(decimatedInPlace(hillsOfTwoCharts(seed), 25)->mesh);
    }
}

// Expects that off the seams, a vertex that has not moved still has its UV.
void expectKeptUVs(const DMesh& before, const ProgressiveMesh& pm, int atLeast) {
    const DMesh& mesh = pm.mesh;
    ASSERT_TRUE(pm.m_handleUVs_internal);
    DMesh seams = before;
    BuildUVCorners(seams);
    ComputeUVSeams(seams);
    int kept = 0;
    for (std::size_t c = 0; c < mesh.triangles.size(); ++c) {
        const std::uint32_t v = mesh.triangles[c];
        if (!mesh.triangleActive.Test(static_cast<std::int32_t>(c / 3)) ||
            before.triangles[c] != v || seams.uvSeamVertices.Test(static_cast<std::int32_t>(v)))
            continue;
        const FloatVec3 is = mesh.vertices[v].position();
        const FloatVec3 was = before.vertices[v].position();
        if (is.x != was.x || is.y != was.y || is.z != was.z) continue;
        ++kept;
        const UVCoord& uv = mesh.coordsUV[mesh.indicesUV[c]];
        const UVCoord& old = before.coordsUV[before.indicesUV[c]];
        EXPECT_TRUE(uv.u == old.u && uv.v == old.v) << c;
    }
    EXPECT_GE(kept, atLeast);
}

TEST_F(CornerUVs, CornersThatDidNotMoveKeepTheirUVsBitForBit) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        const DMesh before = welded(hillsOfTwoCharts(seed));
        for (const float percent : {95.0F, 85.0F})
            expectKeptUVs(before, *decimatedInPlace(hillsOfTwoCharts(seed), percent), 20);
    }
    for (const char* file : {"synth-seams.Vok", "spot.Vok"}) {
        const DMesh before = welded(sample(file));
        for (const float percent : {80.0F, 50.0F})
            expectKeptUVs(before, *decimatedInPlace(sample(file), percent), 200);
    }
}

// The planes of a cube meet at its corners, so many neighbours of a corner collapse onto it without
// moving it: its UV stays the same bit for bit.
TEST_F(CornerUVs, OfAKeptVertexThatDoesNotMoveAreKept) {
    const DMesh cube = buildMesh(
        {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {4, 4, 0}, {0, 0, 4}, {4, 0, 4}, {0, 4, 4}, {4, 4, 4}},
        {{0, 2, 3},
         {0, 3, 1},
         {4, 5, 7},
         {4, 7, 6},
         {0, 1, 5},
         {0, 5, 4},
         {2, 6, 7},
         {2, 7, 3},
         {0, 4, 6},
         {0, 6, 2},
         {1, 3, 7},
         {1, 7, 5}});
    DMesh fine = subdivided(subdivided(cube));
    ASSERT_TRUE(isClosedManifold(fine));
    // The sides are sheared into one plane, so no two corners have the same UV.
    for (const std::uint32_t v : fine.triangles) {
        const VertexRecord& vertex = fine.vertices[v];
        fine.coordsUV.push_back({vertex.x + vertex.z / 16.0F, vertex.y + vertex.z / 8.0F});
    }
    const MeshPtr pm = decimatedInPlace(fine, 9);
    ASSERT_TRUE(pm->m_handleUVs_internal);
    int kept = 0;
    for (auto i = static_cast<std::int32_t>(pm->vsplitList.NumVtxSplit()); i-- > 0;) {
        const VSplitView split = pm->vsplitList.ensureLoaded(i);
        const auto w = static_cast<std::size_t>(
            pm->mesh.vertices[static_cast<std::size_t>(split.vertex())].partner);
        const FloatVec3 is = pm->mesh.vertices[w].position();
        const FloatVec3 was = split.position();
        if (is.x == was.x && is.y == was.y && is.z == was.z) {
            ++kept;
            ASSERT_EQ(split.savedUVCount(), 1U);
            const auto pair = split.uvIndexPairWords();
            const UVCoord& uv = pm->mesh.coordsUV[static_cast<std::size_t>(pair[1])];
            EXPECT_TRUE(uv.u == split.savedUV(0).u && uv.v == split.savedUV(0).v) << i;
        }
        // Goes up by one record, so that the record before it is the last one applied.
        updateMeshAtLevel(*pm, static_cast<std::int32_t>(pm->mesh.numActiveVertices) + 1);
    }
    EXPECT_GT(kept, 2);
}

// Each UV of a seam vertex is in the chart of its corner, and close to its place in the plan: the
// UVs of a straight seam move along with the vertex.
TEST_F(CornerUVs, FollowTheSurface) {
    const MeshPtr pm = decimatedInPlace(hillsOfTwoCharts(1), 50);
    double sum = 0;
    int corners = 0;
    forEachActiveCorner(pm->mesh, [&](std::size_t c) {
        const VertexRecord& vertex = pm->mesh.vertices[pm->mesh.triangles[c]];
        const UVCoord& uv = pm->mesh.coordsUV[pm->mesh.indicesUV[c]];
        const float u = vertex.x / 16.0F + 4.0F * static_cast<float>(chartAt(pm->mesh, c));
        sum += std::hypot(double{uv.u} - u, double{uv.v} - vertex.y / 16.0F);
        ++corners;
    });
    EXPECT_LT(sum / corners, 0.25 / 16) << "a quarter of a grid square";
}

// UVs that cannot be welded (one pair too few) are dropped and have no effect.
TEST_F(CornerUVs, ThatDoNotFitTheTrianglesAreIgnored) {
    DMesh mesh = hillsOfTwoCharts(2);
    DMesh plain = mesh;
    plain.coordsUV.clear();
    mesh.coordsUV.pop_back();
    const MeshPtr with = decimatedInPlace(mesh, 30);
    const MeshPtr without = decimatedInPlace(plain, 30);
    EXPECT_FALSE(with->m_handleUVs_internal);
    EXPECT_TRUE(surfaceOf(with->mesh) == surfaceOf(without->mesh));
}

// If both ends are on a seam, the UVs of the removed vertex win, wherever on the edge the kept
// vertex moves to, even if it does not move.
TEST_F(CornerUVs, OfTheRemovedVertexWinOnASeam) {
    int seen = 0;
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        const MeshPtr pm = decimatedInPlace(hillsOfTwoCharts(seed), 30);
        for (auto i = static_cast<std::int32_t>(pm->vsplitList.NumVtxSplit()); i-- > 0;) {
            const VSplitView split = pm->vsplitList.ensureLoaded(i);
            const auto words = split.uvIndexPairWords();
            seen += words.size() == 4 ? 1 : 0;
            for (std::size_t k = 0; words.size() == 4 && k < 4; k += 2) {
                const UVCoord& removed = pm->mesh.coordsUV[static_cast<std::size_t>(words[k])];
                const UVCoord& kept = pm->mesh.coordsUV[static_cast<std::size_t>(words[k + 1])];
                EXPECT_TRUE(removed.u == kept.u && removed.v == kept.v) << i;
            }
            // Goes up by one record, so that the record before it is the last one applied.
            updateMeshAtLevel(*pm, static_cast<std::int32_t>(pm->mesh.numActiveVertices) + 1);
        }
    }
    EXPECT_GT(seen, 3);
}

}  // namespace
}  // namespace korvalite::core::test
