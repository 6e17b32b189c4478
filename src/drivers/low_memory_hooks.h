// SPDX-License-Identifier: MIT
#pragma once

#include "collapse/carry_attributes.h"
#include "collapse/sharing.h"
#include "metric/metric.h"
#include "progressive/progressive_mesh.h"
#include "ranking/neighbour_costs.h"
#include "ranking/vertex_cost.h"

#include <cstdint>

namespace korvalite::core {

/// What the low-memory drivers, for one thread and for several, add to each turn.
template <typename LoopMetric, SharingPolicy Sharing>
class LowMemoryHooks {
public:
    using Metric = LoopMetric;
    static constexpr bool kRecordsSplits = true;

    /// `marks` are prepared for the mesh and belong to this thread.
    LowMemoryHooks(ProgressiveMesh& pm, NeighbourhoodMarks& marks, Sharing& sharing)
        : pm_(pm), marks_(marks), sharing_(sharing) {}

    [[nodiscard]] EdgeEvaluation place(std::int32_t removed, std::int32_t kept,
                                       KeptQuadrics<Metric>& keptQuadrics) const {
        return evaluateCollapse(pm_.mesh, pm_, removed, kept, keptQuadrics);
    }

    void carryAttributes(CollapseRecord& collapse, std::int32_t removed, std::int32_t kept,
                         const EdgeEvaluation& evaluation) {
        carryColor<Metric>(pm_.mesh, collapse.split, kept, evaluation);
        if (pm_.m_handleUVs_internal) {
            UpdateUVsAfterCollapse(pm_.mesh, removed, kept, collapse.split, uvScratch_, sharing_);
        }
    }

    void updateCosts(std::int32_t kept, const CollapseRecord& collapse) {
        UpdateNeighbourCosts_LM(pm_, kept, collapse.ringCorners, collapse.neighbours, marks_,
                                scratch_, sharing_);
    }
    void refreshCosts(const CollapseRecord& collapse) {
        RefreshRingCosts<Metric>(pm_, collapse.split, sharing_);
    }

    void rankFreedSlave(std::int32_t vertex) {
        const RankedVertex ranked = rankVertex<MetricForOne<Metric, Sharing>>(pm_, vertex, ring_);
        // A thread leaves the cost of a vertex without a collapse unchanged.
        if (Sharing::kIsShared && ranked.cost == kNotCollapsible) return;
        sharing_.rankAgain(vertex, ranked);
    }

    // For one thread only.
    void rankForFinishStep(std::int32_t vertex) { RecomputeVertexCost(pm_, vertex, ring_); }
    void showProgress(std::int32_t done) { pm_.monitor->SetSubTaskProgress(done); }

private:
    ProgressiveMesh& pm_;
    NeighbourhoodMarks& marks_;
    Sharing& sharing_;
    IndexList uvScratch_;
    IndexList ring_;
    NeighbourhoodScratch<Metric> scratch_;
};

}  // namespace korvalite::core
