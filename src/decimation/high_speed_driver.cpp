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

    // A vertex that was ranked without a position, as by the hooks below, collapses to the one
    // stored before. If it has none, such as a slave, it collapses to its partner's position.
    [[nodiscard]] EdgeEvaluation place(std::int32_t v, std::int32_t u,
                                       KeptQuadrics<Metric>& /*keptQuadrics*/) const {
        EdgeEvaluation evaluation;
        evaluation.position = pm_.hasBestPosition.Test(v) ? pm_.bestPositions[at(v)]
                                                          : pm_.mesh.vertices[at(u)].position();
        return evaluation;
    }

    // Colours do not change, but after an earlier run that used them the splits still store one.
    void carryAttributes(CollapseRecord& collapse, std::int32_t /*removed*/, std::int32_t kept,
                         const EdgeEvaluation& /*evaluation*/) const {
        if (!pm_.m_useVertexColors_internal || !pm_.mesh.hasColors()) return;
        collapse.split.savedColor = pm_.mesh.vertexColors[at(kept)];
    }

    void updateCosts(std::int32_t kept, const CollapseRecord& /*collapse*/) {
        UpdateNeighbourCosts(pm_, kept, scratch_);
    }

    void refreshCosts(const CollapseRecord& collapse) { RefreshRingCosts(pm_, collapse.split); }

    void rankFreedSlave(std::int32_t vertex) {
        RecomputeVertexCostFromStored(pm_, vertex, ring_);
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
