// SPDX-License-Identifier: MIT
//
// What several threads at once do to what a vertex or corner has beside its position, and to
// vertices that must not move.
#include "property/chart_cases.h"
#include "property/kept_vertices.h"
#include "property/run_cases.h"
#include "property/symmetry_cases.h"

#include "support/level_walk.h"
#include "support/mesh_validator.h"
#include "support/thread_run.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace korvalite::test {
namespace {

constexpr std::int32_t kThreadCounts[] = {2, 3, 4, 8, 16};

class SeveralThreadsAttributes : public DecimationTest,
                                 public testing::WithParamInterface<std::int32_t> {
protected:
    template <typename Set>
    static MeshPtr inPlace(const DMesh& mesh, float percent, Set set) {
        return decimated(mesh, [&](ProgressiveMesh& pm) {
            askForThreads(pm, GetParam());
            targetPercent(pm, percent);
            pm.DoReorder = false;
            set(pm);
        });
    }
    static MeshPtr inPlace(const DMesh& mesh, float percent) {
        return inPlace(mesh, percent, [](ProgressiveMesh&) {});
    }
};

INSTANTIATE_TEST_SUITE_P(Threads, SeveralThreadsAttributes, testing::ValuesIn(kThreadCounts),
                         [](const auto& row) { return std::to_string(row.param); });

TEST_P(SeveralThreadsAttributes, NoTriangleMixesCharts) {
    for (const DMesh& original :
         {hillsOfTwoCharts(1), sample("synth-seams.Vok"), sample("spot-everything.Vok")}) {
        const DMesh before = welded(original);
        for (const float percent : {40.0F, 8.0F}) {
            const MeshPtr pm = inPlace(original, percent);
            ASSERT_TRUE(pm->m_handleUVs_internal);
            EXPECT_TRUE(noTriangleMixesChartsOf(before, pm->mesh)) << percent;
        }
    }
}

// Further down they meet the border of the mesh, which counts as a seam too, and may slide along
// it.
TEST_P(SeveralThreadsAttributes, SeamsStayOnTheSeam) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        const MeshPtr pm = inPlace(hillsOfTwoCharts(seed), 60);
        const auto uvs = uvsOf(pm->mesh);
        std::uint32_t onSeam = 0;
        for (std::size_t v = 0; v < uvs.size(); ++v) {
            if (uvs[v].size() < 2) continue;
            ++onSeam;
            // Samples between two points of one x may be off it by the rounding.
            EXPECT_NEAR(pm->mesh.vertices[v].x, static_cast<float>(kSeamColumn), 1e-5F) << v;
            EXPECT_EQ(uvs[v].size(), 2U) << v;
        }
        EXPECT_GT(onSeam, 2U);
        EXPECT_LT(onSeam, kRows + 2);
    }
}

TEST_P(SeveralThreadsAttributes, ChartsStayOnTheirSideOfTheSeam) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        const MeshPtr pm = inPlace(hillsOfTwoCharts(seed), 50);
        forEachActiveCorner(pm->mesh, [&](std::size_t c) {
            const float x = pm->mesh.vertices[pm->mesh.triangles[c]].x - kSeamColumn;
            if (chartAt(pm->mesh, c) == 0) {
                EXPECT_LE(x, 1e-5F) << c;
            } else {
                EXPECT_GE(x, -1e-5F) << c;
            }
        });
    }
}

TEST_P(SeveralThreadsAttributes, AFrozenBorderKeepsEachOfItsVerticesBitForBit) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        DMesh original = unevenHills(seed);
        if (seed > 1) addColors(original, redOrBlue);
        const auto border = borderOf(original);
        ASSERT_EQ(border.size(), 2U * (22 + 18));
        const MeshPtr pm = inPlace(original, 0, [](ProgressiveMesh& settings) {
            settings.BorderMode = BORDERMODE_FREEZE;
        });
        EXPECT_LT(pm->mesh.numActiveVertices, original.vertices.size() * 2 / 3);
        for (const std::int32_t v : border)
            EXPECT_TRUE(isUntouched(pm->mesh, original, v));
    }
}

TEST_P(SeveralThreadsAttributes, AMaskOfZeroKeepsItsVerticesUntouched) {
    for (const bool colored : {false, true}) {
        for (const int axis : {-1, 0}) {
            DMesh original = axis < 0 ? unevenSphere(1) : unevenMirrored(axis, 1);
            if (colored) addColors(original, redOrBlue);
            addMask(original, [](const FloatVec3& p) { return p.y < -0.2F ? 0 : 255; });
            const MeshPtr pm = inPlace(original, 0, [&](ProgressiveMesh& settings) {
                if (axis >= 0) askForSymmetry(settings, axis);
            });
            EXPECT_LT(pm->mesh.numActiveVertices, original.vertices.size() * 3 / 4);
            int masked = 0;
            for (std::int32_t v = 0; v < original.vertexCount(); ++v) {
                if (original.maskValues[static_cast<std::size_t>(v)] != 0) continue;
                ++masked;
                EXPECT_TRUE(isUntouched(pm->mesh, original, v));
            }
            EXPECT_GT(masked, 30);
        }
    }
}

class SymmetryOnSeveralThreads : public SymmetryTest {};
INSTANTIATE_TEST_SUITE_P(Case, SymmetryOnSeveralThreads, testing::ValuesIn(symmetricMeshes()),
                         nameOfSymmetry);

TEST_P(SymmetryOnSeveralThreads, PairsUpAgainAfterARun) {
    const auto& [name, axis, original] = GetParam();
    float percent = 70;
    for (const std::int32_t threads : kThreadCounts) {
        const MeshPtr pm = decimated(original, [&, axis = axis](ProgressiveMesh& settings) {
            askForThreads(settings, threads);
            askForSymmetry(settings, axis);
            targetPercent(settings, percent);
        });
        EXPECT_LE(pm->activeCount(), pm->TargetNumItem);
        const DMesh result = compacted(pm->mesh);
        EXPECT_EQ(pairsOf(result, axis, original).pairedCount, result.vertexCount())
            << threads << " threads, " << percent << '%';
        EXPECT_TRUE(isClosedManifold(result));
        percent /= 2;
    }
}

}  // namespace
}  // namespace korvalite::test
