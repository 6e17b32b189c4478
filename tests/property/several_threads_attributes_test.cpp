// SPDX-License-Identifier: MIT
//
// What several threads together do to the attributes of vertices and corners, and to vertices that
// must not move.
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

namespace korvalite::core::test {
namespace {

constexpr std::int32_t kThreadCounts[] = {2, 3, 4, 8, 16};

class SeveralThreadsAttributes : public DecimationTest,
                                 public testing::WithParamInterface<std::int32_t> {
protected:
    template <typename Set>
    static MeshPtr inPlace(const DMesh& mesh, float percent, Set set) {
        return decimatedInPlace(mesh, percent, [&](ProgressiveMesh& pm) {
            askForThreads(pm, GetParam());
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

// The border is frozen because it counts as a seam too: where a seam meets it, the seam may slide
// along it, when the order of the collapses on several threads allows it.
TEST_P(SeveralThreadsAttributes, SeamsStayOnTheSeam) {
    for (const std::uint32_t seed : {1U, 2U, 3U})
        expectSeamsOnTheSeam(inPlace(hillsOfTwoCharts(seed), 30, freezeBorder)->mesh);
}

TEST_P(SeveralThreadsAttributes, ChartsStayOnTheirSideOfTheSeam) {
    for (const std::uint32_t seed : {1U, 2U, 3U})
        expectChartsOnTheirSides(inPlace(hillsOfTwoCharts(seed), 25, freezeBorder)->mesh);
}

TEST_P(SeveralThreadsAttributes, AFrozenBorderKeepsItsVerticesBitForBit) {
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        DMesh original = unevenHills(seed);
        if (seed > 1) addColors(original, redOrBlue);
        expectBorderKept(*inPlace(original, 0, freezeBorder), original);
    }
}

TEST_P(SeveralThreadsAttributes, AMaskOfZeroProtectsItsVertices) {
    for (const bool colored : {false, true}) {
        for (const int axis : {-1, 0}) {
            const DMesh original = maskedBelow(axis, 1, colored);
            const MeshPtr pm = inPlace(original, 0, [&](ProgressiveMesh& settings) {
                if (axis >= 0) askForSymmetry(settings, axis);
            });
            expectMaskedKept(*pm, original);
        }
    }
}

class SymmetryOnSeveralThreads : public SymmetryTest {};
INSTANTIATE_TEST_SUITE_P(Case, SymmetryOnSeveralThreads, testing::ValuesIn(symmetricMeshes()),
                         nameOfSymmetry);

TEST_P(SymmetryOnSeveralThreads, IsIntactAfterARun) {
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
}  // namespace korvalite::core::test
