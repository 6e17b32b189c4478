// SPDX-License-Identifier: MIT
#include "drivers/low_memory_driver.h"

#include "base/debug_log.h"
#include "collapse/carry_color.h"
#include "collapse/uv_update.h"
#include "drivers/collapse_loop.h"
#include "drivers/driver_preparation.h"
#include "drivers/low_memory_preparation.h"
#include "ranking/neighbour_costs.h"
#include "ranking/vertex_cost.h"

namespace korvalite {

namespace {

/// The hooks of PairCollapse and CollapseLoop.
template <typename LoopMetric>
class LowMemoryDriver {
public:
    using Metric = LoopMetric;
    static constexpr bool kRecordsSplits = true;

    explicit LowMemoryDriver(ProgressiveMesh& pm) : pm_(pm), mesh_(pm.mesh) {
        marks_.prepare(mesh_);
    }

    [[nodiscard]] EdgeEvaluation place(std::int32_t v, std::int32_t u,
                                       KeptQuadrics<Metric>& keptQuadrics) const {
        return evaluateCollapse(pm_.mesh, pm_, v, u, keptQuadrics);
    }

    void carryAttributes(CollapseRecord& collapse, std::int32_t removed, std::int32_t kept,
                         const EdgeEvaluation& evaluation) {
        carryColor<Metric>(mesh_, collapse.split, kept, evaluation);
        if (pm_.m_handleUVs_internal) {
            UpdateUVsAfterCollapse(mesh_, removed, kept, collapse.split, uvScratch_);
        }
    }

    void updateCosts(std::int32_t kept, const CollapseRecord& collapse) {
        UpdateNeighbourCosts_LM(pm_, kept, collapse.ringCorners, collapse.neighbours, marks_,
                                scratch_);
    }
    void refreshCosts(const CollapseRecord& collapse) { RefreshRingCosts(pm_, collapse.split); }

    // Uses the plain metric even with colours.
    void rankFreedSlave(std::int32_t vertex) {
        RecomputeVertexCost(pm_, vertex, ring_);
        pm_.costQueue.Insert(vertex);
    }
    void rankForFinishStep(std::int32_t vertex) { RecomputeVertexCost(pm_, vertex, ring_); }

    void showProgress(std::int32_t done) { pm_.monitor->SetSubTaskProgress(done); }

private:
    ProgressiveMesh& pm_;
    DMesh& mesh_;
    IndexList uvScratch_;
    IndexList ring_;
    NeighbourhoodMarks marks_;
    NeighbourhoodScratch<Metric> scratch_;
};

}  // namespace

template <typename Metric>
int doDecimationInit_LM(ProgressiveMesh& pm) {
    DebugLog("   starting doDecimationInit_LM()...");
    prepareLowMemoryRun<Metric>(pm, {.raiseStageFlags = true, .logCostForms = false});
    openVSplitList(pm);
    return 0;
}

template <typename Metric>
int doDecimationLoop_LM(ProgressiveMesh& pm) {
    LowMemoryDriver<Metric> driver(pm);
    CollapseLoop(pm, driver).run();
    pm.monitor->EndSubTask();
    pm.monitor->EndMainTask();
    pm.monitor->step(RunStep::LoopEnded);
    return 0;
}

template <typename Metric>
int doDecimation_LM(ProgressiveMesh& pm) {
    DebugLog(" starting doDecimation_LM()  <%s> ...");
    doDecimationInit_LM<Metric>(pm);
    return doDecimationLoop_LM<Metric>(pm);
}

template int doDecimation_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimation_LM<ColorMetric>(ProgressiveMesh&);
template int doDecimationInit_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimationInit_LM<ColorMetric>(ProgressiveMesh&);
template int doDecimationLoop_LM<PlainMetric>(ProgressiveMesh&);
template int doDecimationLoop_LM<ColorMetric>(ProgressiveMesh&);

}  // namespace korvalite
