// SPDX-License-Identifier: MIT
#include "drivers/melax_driver.h"

#include "drivers/collapse_loop.h"
#include "drivers/preparation.h"
#include "metric/metric.h"
#include "ranking/melax_costs.h"

namespace korvalite {

namespace {

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

    // This driver leaves the costs around a kept vertex without triangles unchanged.
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

}  // namespace korvalite
