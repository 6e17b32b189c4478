// SPDX-License-Identifier: MIT
#include "metric/metric.h"
#include "support/prepared_mesh.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace korvalite::core {
namespace {

struct CountingMetric : PlainMetric {
    static inline int summed = 0;

    static void addVertexQuadric(const DMesh& mesh, const MetricRules& rules, Quadric& inOut,
                                 std::int32_t vertex) {
        ++summed;
        PlainMetric::addVertexQuadric(mesh, rules, inOut, vertex);
    }
};

struct KeptQuadricsTest : ::testing::Test {
    ProgressiveMesh pm;
    KeptQuadrics<CountingMetric> kept;

    KeptQuadricsTest() {
        test::prepare(pm, test::grid(4, 4, test::hills));
        CountingMetric::summed = 0;
    }
    [[nodiscard]] Quadric3D quadricOf(std::int32_t vertex) const {
        Quadric3D sum;
        ComputeVertexQuadricFromTriangles(pm.mesh, pm, sum, vertex);
        return sum;
    }
};

TEST_F(KeptQuadricsTest, RefusalsOntoOneVertexSumItsQuadricOnce) {
    for (int refusal = 0; refusal < 300; ++refusal)
        EXPECT_EQ(kept.of(pm.mesh, pm, 12).q, quadricOf(12).q);
    EXPECT_EQ(CountingMetric::summed, 1);
}

TEST_F(KeptQuadricsTest, HoldsTheQuadricsOfAMirroredPair) {
    for (int refusal = 0; refusal < 300; ++refusal) {
        EXPECT_EQ(kept.of(pm.mesh, pm, 11).q, quadricOf(11).q);
        EXPECT_EQ(kept.of(pm.mesh, pm, 13).q, quadricOf(13).q);
    }
    EXPECT_EQ(CountingMetric::summed, 2);
}

TEST_F(KeptQuadricsTest, ForgetsChangedQuadrics) {
    kept.of(pm.mesh, pm, 11);
    kept.of(pm.mesh, pm, 12);
    pm.mesh.vertices[12].z += 1;
    kept.forget();
    EXPECT_EQ(kept.of(pm.mesh, pm, 11).q, quadricOf(11).q);
    EXPECT_EQ(kept.of(pm.mesh, pm, 12).q, quadricOf(12).q);
}

TEST_F(KeptQuadricsTest, StartsEachSumFromZero) {
    for (std::int32_t vertex = 0; vertex < pm.mesh.vertexCount(); ++vertex)
        EXPECT_EQ(kept.of(pm.mesh, pm, vertex).q, quadricOf(vertex).q) << vertex;
}

}  // namespace
}  // namespace korvalite::core
