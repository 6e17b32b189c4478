// SPDX-License-Identifier: MIT
#include "decimation/high_speed_driver.h"

#include "decimation/collapse_loop.h"
#include "decimation/driver_preparation.h"
#include "decimation/high_speed_costs.h"
#include "decimation/initial_edges.h"
#include "decimation/metric.h"
#include "decimation/vertex_cost.h"
#include "shell/base/job_paths.h"

namespace korvalite {

namespace {

/// The hooks of PairCollapse and CollapseLoop.
class HighSpeedDriver {
public:
    using Metric = PlainMetric;
    static constexpr bool kRecordsSplits = true;

    explicit HighSpeedDriver(ProgressiveMesh& pm) : pm_(pm) {
        scratch_.inRing.Resize(pm.mesh.vertexCount(), false);
    }

    [[nodiscard]] EdgeEvaluation place(std::int32_t v, std::int32_t /*u*/,
                                       KeptQuadrics<Metric>& /*keptQuadrics*/) const {
        EdgeEvaluation evaluation;
        evaluation.position = pm_.bestPositions[at(v)];
        return evaluation;
    }

    static void carryAttributes(CollapseRecord& /*collapse*/, std::int32_t /*removed*/,
                                std::int32_t /*kept*/, const EdgeEvaluation& /*evaluation*/) {}

    void updateCosts(std::int32_t kept, const CollapseRecord& /*collapse*/) {
        UpdateNeighbourCosts(pm_, kept, scratch_);
    }

    // What this ranks still collapses to the place stored before.
    void refreshCosts(const CollapseRecord& collapse) { RefreshRingCosts(pm_, collapse.split); }

    // No edge has ever found a place for a slave: it goes to where its partner stands.
    void rankFreedSlave(std::int32_t vertex) {
        RecomputeVertexCostFromStored(pm_, vertex, ring_);
        const std::int32_t partner = pm_.mesh.vertices[at(vertex)].partner;
        if (partner != kNone) pm_.bestPositions[at(vertex)] = position(partner);
        pm_.costQueue.Insert(vertex);
    }
    void rankForFinishStep(std::int32_t vertex) { RecomputeVertexCost(pm_, vertex, ring_); }

    void showProgress(std::int32_t done) {
        const auto active = static_cast<std::int32_t>(pm_.mesh.numActiveVertices);
        progressChannel().SetSubTaskText(HeapString("processing (") + FormatCount(active) + "/" +
                                         FormatCount(pm_.mesh.vertexCount()) + " vertices)");
        progressChannel().SetSubTaskProgress(done);
    }

private:
    static std::size_t at(std::int32_t index) { return static_cast<std::size_t>(index); }
    [[nodiscard]] FloatVec3 position(std::int32_t vertex) const {
        return pm_.mesh.vertices[at(vertex)].position();
    }

    ProgressiveMesh& pm_;
    RingScratch scratch_;
    IndexList ring_;
};

}  // namespace

int doDecimation_HS(ProgressiveMesh& pm) {
    prepareInMemoryDriver(pm, true);
    progressChannel().BeginSubTask("analysing mesh", -1);
    InitVerticesCost(pm);
    fillQueue(pm);
    progressChannel().EndSubTask();
    pm.reportStep(9);
    openVSplitList(pm);
    HighSpeedDriver driver(pm);
    CollapseLoop(pm, driver).run();
    progressChannel().EndMainTask();
    pm.reportStep(12);
    return 0;
}

}  // namespace korvalite
