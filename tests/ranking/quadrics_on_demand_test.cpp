// SPDX-License-Identifier: MIT
#include "ranking/quadrics_on_demand.h"

#include "mesh/corner_lists.h"
#include "metric/metric.h"
#include "support/prepared_mesh.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace korvalite::core {
namespace {

struct CountingMetric : PlainMetric {
    static inline int triangles = 0;

    static Quadric triangleQuadric(const DMesh& mesh, const MetricRules& rules,
                                   std::int32_t triangle) {
        ++triangles;
        return PlainMetric::triangleQuadric(mesh, rules, triangle);
    }
};

struct QuadricsOnDemandTest : ::testing::Test {
    ProgressiveMesh pm;
    QuadricsOnDemand<CountingMetric> quadrics;
    // The order is arbitrary.
    const IndexList listed{9, 2, 31, 4, 18, 17, 3, 11, 24, 10, 0, 12};
    static constexpr std::uint32_t kSlots = 20;
    std::vector<std::uint32_t> slots;  // of the corners of these

    QuadricsOnDemandTest() {
        test::prepare(pm, test::grid(4, 4, test::hills));
        for (const std::int32_t triangle : listed) {
            for (const std::int32_t corner : cornersOf(triangle))
                slots.push_back(slotOf(vertexAt(pm.mesh, corner)));
        }
        CountingMetric::triangles = 0;
    }
    // The vertices from 20 on have none.
    static std::uint32_t slotOf(std::int32_t vertex) {
        const auto index = static_cast<std::uint32_t>(vertex);
        return index < kSlots ? kSlots - 1 - index : index;
    }
    void prepare() { quadrics.prepare(listed, slots, kSlots); }

    [[nodiscard]] std::vector<Quadric3D> summedAtOnce() const {
        std::vector<Quadric3D> sums(kSlots);
        for (const std::int32_t triangle : listed) {
            for (const std::int32_t corner : cornersOf(triangle)) {
                const std::uint32_t slot = slotOf(vertexAt(pm.mesh, corner));
                if (slot < kSlots) sums[slot] += ComputeTriangleQuadric(pm.mesh, pm, triangle);
            }
        }
        return sums;
    }
};

TEST_F(QuadricsOnDemandTest, MatchSummingAllAtOnceBitForBit) {
    const auto sums = summedAtOnce();
    prepare();
    constexpr std::array<std::uint32_t, 8> kOrder{19, 0, 7, 7, 3, 12, 1, 18};
    for (const std::uint32_t slot : kOrder)
        EXPECT_EQ(quadrics.of(pm.mesh, pm, slot).q, sums[slot].q) << slot;
}

TEST_F(QuadricsOnDemandTest, ComputeOnlyRequestedTrianglesAndOnlyOnce) {
    prepare();
    EXPECT_EQ(CountingMetric::triangles, 0);
    const std::uint32_t slotOfVertex0 = kSlots - 1;
    quadrics.of(pm.mesh, pm, slotOfVertex0);
    EXPECT_EQ(CountingMetric::triangles, 1);  // triangle 1, its other one, is not listed
    for (int round = 0; round < 3; ++round) {
        for (std::uint32_t slot = 0; slot < kSlots; ++slot)
            quadrics.of(pm.mesh, pm, slot);
    }
    EXPECT_LE(CountingMetric::triangles, static_cast<int>(listed.size()));
}

TEST_F(QuadricsOnDemandTest, AreSummedAgainForTheNextNeighbourhood) {
    prepare();
    for (std::uint32_t slot = 0; slot < kSlots; ++slot)
        quadrics.of(pm.mesh, pm, slot);
    for (VertexRecord& vertex : pm.mesh.vertices)
        vertex.z *= 3;
    const auto sums = summedAtOnce();
    prepare();
    for (std::uint32_t slot = 0; slot < kSlots; ++slot)
        EXPECT_EQ(quadrics.of(pm.mesh, pm, slot).q, sums[slot].q) << slot;
}

}  // namespace
}  // namespace korvalite::core
