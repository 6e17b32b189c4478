// SPDX-License-Identifier: MIT
#include "decimation/melax_driver.h"

#include "decimation/collapse_loop.h"
#include "decimation/driver_preparation.h"
#include "decimation/melax_costs.h"
#include "decimation/metric.h"

namespace korvalite {

namespace {

/// The hooks of PairCollapse and CollapseLoop.
class MelaxDriver {
public:
    using Metric = PlainMetric;  // quadrics place the mirror image
    static constexpr bool kRecordsSplits = false;

    explicit MelaxDriver(ProgressiveMesh& pm) : pm_(pm) {}

    [[nodiscard]] EdgeEvaluation place(std::int32_t /*v*/, std::int32_t u,
                                       KeptQuadrics<Metric>& /*keptQuadrics*/) const {
        EdgeEvaluation evaluation;
        evaluation.position = pm_.mesh.vertices[static_cast<std::size_t>(u)].position();
        return evaluation;
    }

    static void carryAttributes(CollapseRecord& /*collapse*/, std::int32_t /*removed*/,
                                std::int32_t /*kept*/, const EdgeEvaluation& /*evaluation*/) {}

    void updateCosts(std::int32_t kept, const CollapseRecord& collapse) {
        UpdateRingMelax(pm_, kept, collapse.ringCorners, collapse.neighbours, scratch_);
    }

    // This driver leaves the costs around a kept vertex without triangles unchanged.
    static void refreshCosts(const CollapseRecord& /*collapse*/) {}

    void rankFreedSlave(std::int32_t vertex) {
        ComputeVertexCostMelax(pm_, vertex, scratch_);
        pm_.costQueue.Insert(vertex);
    }
    void rankForFinishStep(std::int32_t vertex) { ComputeVertexCostMelax(pm_, vertex, scratch_); }

    // This driver reports no progress; only an observer can follow its runs.
    static void showProgress(std::int32_t /*done*/) {}

    MelaxScratch& scratch() { return scratch_; }

private:
    ProgressiveMesh& pm_;
    MelaxScratch scratch_;
};

}  // namespace

int doDecimation_Melax(ProgressiveMesh& pm) {
    MelaxDriver driver(pm);
    prepareInMemoryDriver(pm, false);
    progressChannel().BeginSubTask("analysing mesh", -1);
    computeTriangleNormals(pm);
    InitVerticesCostMelax(pm, driver.scratch());
    progressChannel().EndSubTask();
    openVSplitList(pm);
    CollapseLoop(pm, driver).run();
    progressChannel().EndMainTask();
    pm.reportStep(12);
    return 0;
}

}  // namespace korvalite
