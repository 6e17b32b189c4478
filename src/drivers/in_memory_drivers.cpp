// SPDX-License-Identifier: MIT
#include "drivers/in_memory_drivers.h"

#include "base/names.h"
#include "drivers/collapse_loop.h"
#include "drivers/preparation.h"
#include "metric/metric.h"
#include "ranking/high_speed_costs.h"
#include "ranking/initial_edges.h"
#include "ranking/melax_costs.h"
#include "ranking/vertex_cost.h"

namespace korvalite::core {

namespace {

/// The hooks of PairCollapse and CollapseLoop.
class HighSpeedDriver {
public:
    using Metric = PlainMetric;
    static constexpr bool kRecordsSplits = true;

    HighSpeedDriver(ProgressiveMesh& pm, HighSpeedState& state, Alone& alone)
        : pm_(pm), state_(state), alone_(alone) {}

    // A vertex that was ranked without a position, as by the hooks below, collapses to the one
    // stored before. If it has none, such as a slave, it collapses to its partner's position.
    [[nodiscard]] EdgeEvaluation place(std::int32_t removed, std::int32_t kept,
                                       KeptQuadrics<Metric>& /*keptQuadrics*/) const {
        EdgeEvaluation evaluation;
        evaluation.position = state_.hasBestPosition.Test(removed)
                                  ? state_.bestPositions[removed]
                                  : pm_.mesh.vertices[kept].position();
        return evaluation;
    }

    // Colours do not change, but after an earlier run that used them the splits still store one.
    void carryAttributes(CollapseRecord& collapse, std::int32_t /*removed*/, std::int32_t kept,
                         const EdgeEvaluation& /*evaluation*/) const {
        if (!pm_.m_useVertexColors_internal || !pm_.mesh.hasColors()) return;
        collapse.split.savedColor = pm_.mesh.vertexColors[kept];
    }

    void updateCosts(std::int32_t kept, const CollapseRecord& /*collapse*/) {
        UpdateNeighbourCosts(pm_, state_, kept);
    }

    void refreshCosts(const CollapseRecord& collapse) {
        RefreshRingCosts<Metric>(pm_, collapse.split, alone_);
    }

    void rankFreedSlave(std::int32_t vertex) {
        RecomputeVertexCostFromStored(pm_, state_, vertex, ring_);
        pm_.costQueue.Insert(vertex);
    }
    void rankForFinishStep(std::int32_t vertex) { RecomputeVertexCost(pm_, vertex, ring_); }

    void showProgress(std::int32_t done) {
        const auto active = static_cast<std::int32_t>(pm_.mesh.numActiveVertices);
        pm_.monitor->SetSubTaskText(HeapString("processing (") + FormatCount(active) + "/" +
                                    FormatCount(pm_.mesh.vertexCount()) + " vertices)");
        pm_.monitor->SetSubTaskProgress(done);
    }

private:
    ProgressiveMesh& pm_;
    HighSpeedState& state_;
    Alone& alone_;
    IndexList ring_;
};

/// The hooks of PairCollapse and CollapseLoop.
class MelaxDriver {
public:
    using Metric = PlainMetric;  // quadrics place the mirror image
    static constexpr bool kRecordsSplits = false;

    explicit MelaxDriver(ProgressiveMesh& pm) : pm_(pm) {}

    [[nodiscard]] EdgeEvaluation place(std::int32_t /*removed*/, std::int32_t kept,
                                       KeptQuadrics<Metric>& /*keptQuadrics*/) const {
        EdgeEvaluation evaluation;
        evaluation.position = pm_.mesh.vertices[kept].position();
        return evaluation;
    }

    static void carryAttributes(CollapseRecord& /*collapse*/, std::int32_t /*removed*/,
                                std::int32_t /*kept*/, const EdgeEvaluation& /*evaluation*/) {}

    void updateCosts(std::int32_t kept, const CollapseRecord& collapse) {
        UpdateRingMelax(pm_, kept, collapse.ringCorners, collapse.neighbours, state_);
    }

    // COMPAT: costs around a kept vertex without triangles stay as they are; outputs depend on it.
    static void refreshCosts(const CollapseRecord& /*collapse*/) {}

    void rankFreedSlave(std::int32_t vertex) {
        ComputeVertexCostMelax(pm_, vertex, state_);
        pm_.costQueue.Insert(vertex);
    }
    void rankForFinishStep(std::int32_t vertex) { ComputeVertexCostMelax(pm_, vertex, state_); }

    // This driver reports no progress; only an observer can follow its runs.
    static void showProgress(std::int32_t /*done*/) {}

    MelaxState& state() { return state_; }

private:
    ProgressiveMesh& pm_;
    MelaxState state_;
};

}  // namespace

int doDecimation_HS(ProgressiveMesh& pm) {
    prepareInMemoryDriver(pm, true);
    pm.monitor->BeginSubTask("analysing mesh", -1);
    HighSpeedState state;
    InitVerticesCost(pm, state);
    fillQueue(pm);
    pm.monitor->EndSubTask();
    pm.monitor->step(RunStep::VerticesQueued);
    openVSplitList(pm);
    Alone alone(pm);
    HighSpeedDriver driver(pm, state, alone);
    CollapseLoop(pm, driver, alone).run();
    pm.monitor->EndMainTask();
    pm.monitor->step(RunStep::LoopEnded);
    return 0;
}

int doDecimation_Melax(ProgressiveMesh& pm) {
    MelaxDriver driver(pm);
    prepareInMemoryDriver(pm, false);
    pm.monitor->BeginSubTask("analysing mesh", -1);
    InitVerticesCostMelax(pm, driver.state());
    pm.monitor->EndSubTask();
    openVSplitList(pm);
    Alone alone(pm);
    CollapseLoop(pm, driver, alone).run();
    pm.monitor->EndMainTask();
    pm.monitor->step(RunStep::LoopEnded);
    return 0;
}

}  // namespace korvalite::core
