// SPDX-License-Identifier: MIT
//
// The metric that ranks vertices one by one in a mesh with colours, where the plain and the colour
// metric differ.
#include "collapse/sharing.h"
#include "drivers/preparation.h"
#include "ranking/vertex_cost.h"
#include "support/decimation_run.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace korvalite::core {
namespace {

class SingleVertexMetric : public test::DecimationTest {
protected:
    SingleVertexMetric() : pm(test::prepared(test::colorfulBall())) {
        pm->m_useVertexColors_internal = true;
        prepareLowMemoryRun<ColorMetric>(*pm, {});
        GetVertexCorners(pm->mesh, 7, split.corners);
        gatherRingOfSplit(pm->mesh, split, around);
    }
    template <typename Metric>
    [[nodiscard]] std::vector<float> costsBy() const {
        std::vector<float> costs;
        IndexList ring;
        for (const std::int32_t vertex : around)
            costs.push_back(rankVertex<Metric>(*pm, vertex, ring).cost);
        return costs;
    }

    test::MeshPtr pm;
    VSplit split;
    IndexList around;
};

TEST_F(SingleVertexMetric, OfOneThreadIsPlain) {
    Alone alone(*pm);
    RefreshRingCosts<ColorMetric>(*pm, split, alone);
    std::vector<float> costs;
    for (const std::int32_t vertex : around)
        costs.push_back(pm->mesh.vertices[vertex].cost);
    EXPECT_EQ(costs, costsBy<PlainMetric>());
    EXPECT_NE(costs, costsBy<ColorMetric>());
}

TEST_F(SingleVertexMetric, OfOneOfManyIsThatOfTheRun) {
    ThreadWorkRecord record;
    CriticalSections sections;
    Shared shared(*pm, record, sections);
    RefreshRingCosts<ColorMetric>(*pm, split, shared);
    EXPECT_EQ(record.updateVertices, around);
    EXPECT_EQ(record.updateCosts, costsBy<ColorMetric>());
    EXPECT_NE(record.updateCosts, costsBy<PlainMetric>());
}

}  // namespace
}  // namespace korvalite::core
