// SPDX-License-Identifier: MIT
#include "lowmem/low_memory_driver.h"

#include "decimation/collapse_loop.h"
#include "decimation/driver_preparation.h"
#include "decimation/vertex_cost.h"
#include "lowmem/attribute_preparation.h"
#include "lowmem/neighbour_costs.h"
#include "lowmem/uv_update.h"
#include "lowmem/vertex_cost_init.h"
#include "shell/base/debug_log.h"
#include "shell/base/job_paths.h"

namespace korvalite {

namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

/// The hooks of CollapseLoop.
template <typename LoopMetric>
class LowMemoryDriver {
public:
    using Metric = LoopMetric;
    static constexpr bool kRecordsSplits = true;

    explicit LowMemoryDriver(ProgressiveMesh& pm) : pm_(pm), mesh_(pm.mesh) {
        neighbourhood_.prepare(mesh_);
    }

    [[nodiscard]] EdgeEvaluation place(std::int32_t v, std::int32_t u) const {
        return evaluateCollapse<Metric>(pm_, v, u);
    }

    void carryAttributes(CollapseRecord& collapse, std::int32_t removed, std::int32_t kept,
                         const EdgeEvaluation& evaluation) {
        if constexpr (Metric::kHasColor) {
            std::uint32_t& color = mesh_.vertexColors[at(kept)];
            collapse.split.savedColor = color;
            const std::uint32_t fourthByte = color & 0xFF000000U;
            color = fourthByte | (static_cast<std::uint32_t>(evaluation.color[2]) << 16U) |
                    (static_cast<std::uint32_t>(evaluation.color[1]) << 8U) | evaluation.color[0];
        }
        if (pm_.m_handleUVs_internal) {
            UpdateUVsAfterCollapse(mesh_, removed, kept, collapse.split, uvScratch_);
        }
    }

    void updateCosts(std::int32_t kept, const CollapseRecord& collapse) {
        UpdateNeighbourCosts_LM(pm_, kept, collapse.ringCorners, collapse.neighbours,
                                neighbourhood_);
    }
    void refreshCosts(const CollapseRecord& collapse) { RefreshRingCosts(pm_, collapse.split); }

    // By the plain metric for now, with colours too.
    void rankFreedSlave(std::int32_t vertex) { RecomputeVertexCost(pm_, vertex, ring_); }
    void rankForFinishStep(std::int32_t vertex) { RecomputeVertexCost(pm_, vertex, ring_); }

    static void showProgress(std::int32_t done) { progressChannel().SetSubTaskProgress(done); }

private:
    ProgressiveMesh& pm_;
    DMesh& mesh_;
    IndexList uvScratch_;
    IndexList ring_;
    NeighbourhoodScratch<Metric> neighbourhood_;
};

}  // namespace

template <typename Metric>
int doDecimationInit_LM(ProgressiveMesh& pm) {
    DebugLog("   starting doDecimationInit_LM()...");
    ProgressChannel& progress = progressChannel();
    progress.BeginMainTask(CurrentMeshName());
    prepareAdjacency(pm);
    pm.reportStep(4);
    progress.raiseStageFlags();
    pm.reportStep(5);
    prepareSymmetry(pm, {.pairsMustShareColors = true, .planeQuadric = true});
    pm.reportStep(7);
    prepareUVs(pm);
    if (pm.m_useVertexColors_internal) computeColorScale(pm);
    pm.reportStep(8);
    progress.BeginSubTask("analysing mesh", -1);
    InitVerticesCost_LM<Metric>(pm);
    progress.EndSubTask();
    pm.reportStep(9);
    openVSplitList(pm);
    return 0;
}

template <typename Metric>
int doDecimationLoop_LM(ProgressiveMesh& pm) {
    LowMemoryDriver<Metric> driver(pm);
    CollapseLoop(pm, driver).run();
    progressChannel().EndSubTask();
    progressChannel().EndMainTask();
    pm.reportStep(12);
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
