// SPDX-License-Identifier: MIT
//
// Corner UVs in charts: hills with two charts, and the chart that a corner or a UV belongs to.
#pragma once

#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numeric>
#include <set>
#include <vector>

namespace korvalite::core::test {

inline constexpr std::uint32_t kColumns = 24;
inline constexpr std::uint32_t kRows = 16;
inline constexpr std::uint32_t kSeamColumn = 11;

// Hills with two charts that meet at a straight line of the plan, x = kSeamColumn.
inline DMesh hillsOfTwoCharts(std::uint32_t seed) {
    DMesh mesh = grid(kColumns, kRows, hills);
    Random random(seed);
    for (VertexRecord& vertex : mesh.vertices) {
        const bool onSeam = vertex.x == static_cast<float>(kSeamColumn);
        const FloatVec3 move{onSeam ? 0 : random.around(0.2F), random.around(0.2F),
                             random.around(0.2F)};
        vertex.setPosition(vertex.position() + move);
    }
    recomputeBoundingBox(mesh);
    addCornerUVs(
        mesh, [](std::uint32_t triangle) { return triangle / 2 % kColumns < kSeamColumn ? 0 : 1; });
    return mesh;
}

// addCornerUVs puts each chart four to the right of the previous one.
inline int chartAt(const DMesh& mesh, std::size_t corner) {
    return static_cast<int>(std::floor((mesh.coordsUV[mesh.indicesUV[corner]].u + 1.0F) / 4.0F));
}

template <typename Visit>
void forEachActiveCorner(const DMesh& mesh, Visit visit) {
    for (std::size_t c = 0; c < mesh.triangles.size(); ++c) {
        if (mesh.triangleActive.Test(static_cast<std::int32_t>(c / 3))) visit(c);
    }
}

// The UV indices at the active corners of each vertex.
inline std::vector<std::set<std::uint32_t>> uvsOf(const DMesh& mesh) {
    std::vector<std::set<std::uint32_t>> uvs(mesh.vertices.size());
    forEachActiveCorner(mesh,
                        [&](std::size_t c) { uvs[mesh.triangles[c]].insert(mesh.indicesUV[c]); });
    return uvs;
}

// For each UV, the chart that it belongs to: the UVs that triangles connect. A chart is identified
// by one of its UVs.
inline std::vector<std::uint32_t> chartsOf(const DMesh& mesh) {
    std::vector<std::uint32_t> next(mesh.coordsUV.size());
    std::iota(next.begin(), next.end(), 0U);
    const auto chart = [&](std::uint32_t uv) {
        for (; next[uv] != uv; uv = next[uv])
            next[uv] = next[next[uv]];
        return uv;
    };
    for (std::size_t c = 0; c < mesh.indicesUV.size(); ++c)
        next[chart(mesh.indicesUV[c])] = chart(mesh.indicesUV[c / 3 * 3]);
    for (std::uint32_t uv = 0; uv < next.size(); ++uv)
        next[uv] = chart(uv);
    return next;
}

// The UVs of each active triangle belong to one chart of `before`, the initial welded mesh.
inline testing::AssertionResult noTriangleMixesChartsOf(const DMesh& before, const DMesh& mesh) {
    const auto charts = chartsOf(before);
    auto result = testing::AssertionSuccess();
    forEachActiveCorner(mesh, [&](std::size_t c) {
        if (charts[mesh.indicesUV[c]] != charts[mesh.indicesUV[c / 3 * 3]])
            result = testing::AssertionFailure() << "triangle " << c / 3;
    });
    return result;
}

// Expects that the seam vertices left of hillsOfTwoCharts are still on the seam, with a UV of each
// chart.
inline void expectSeamsOnTheSeam(const DMesh& mesh) {
    const auto uvs = uvsOf(mesh);
    std::uint32_t onSeam = 0;
    for (std::size_t v = 0; v < uvs.size(); ++v) {
        if (uvs[v].size() < 2) continue;
        ++onSeam;
        // Samples between two points with the same x may be off it by rounding.
        EXPECT_NEAR(mesh.vertices[v].x, static_cast<float>(kSeamColumn), 1e-5F) << v;
        EXPECT_EQ(uvs[v].size(), 2U) << v;
    }
    EXPECT_GT(onSeam, 2U);
    EXPECT_LT(onSeam, kRows + 2);
}

// Expects that each chart stays on its side of the seam.
inline void expectChartsOnTheirSides(const DMesh& mesh) {
    forEachActiveCorner(mesh, [&](std::size_t c) {
        const float x = mesh.vertices[mesh.triangles[c]].x - kSeamColumn;
        if (chartAt(mesh, c) == 0) {
            EXPECT_LE(x, 1e-5F) << c;
        } else {
            EXPECT_GE(x, -1e-5F) << c;
        }
    });
}

}  // namespace korvalite::core::test
