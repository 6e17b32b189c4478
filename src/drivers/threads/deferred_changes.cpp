// SPDX-License-Identifier: MIT
#include "drivers/threads/deferred_changes.h"

#include "metric/metric.h"
#include "ranking/vertex_cost.h"

namespace korvalite {

void PenalizeDeferred(ProgressiveMesh& pm, std::int32_t vertex, ThreadWorkRecord& record) {
    VertexRecord& refused = pm.mesh.vertices[static_cast<std::size_t>(vertex)];
    if (pm.costQueue.isQueued(vertex)) {
        record.appendUpdate(vertex, penalizedCost(refused.cost), refused.partner);
    } else {
        refused.cost = penalizedCost(refused.cost);
    }
}

template <typename Metric>
void ComputeVertexCost_MT(const ProgressiveMesh& pm, std::int32_t vertex, float& outCost,
                          std::int32_t& outPartner, IndexList& ring) {
    const RankedVertex ranked = rankVertex<Metric>(pm, vertex, ring);
    outCost = ranked.cost;
    outPartner = ranked.partner;
}

template <typename Metric>
void RefreshRingCosts_MT(const ProgressiveMesh& pm, std::int32_t removed,
                         ThreadWorkRecord& record) {
    for (const CollapseRecord* collapse : {&record.splitRecord, &record.mirrorSplitRecord}) {
        if (collapse->split.vertex != removed) continue;
        IndexList around;
        gatherRingOfSplit(pm.mesh, collapse->split, around);
        IndexList ring;
        for (const std::int32_t vertex : around) {
            float cost = kNotCollapsible;
            std::int32_t partner = kNone;
            ComputeVertexCost_MT<Metric>(pm, vertex, cost, partner, ring);
            record.appendUpdate(vertex, cost, partner);
        }
        return;
    }
}

template void ComputeVertexCost_MT<PlainMetric>(const ProgressiveMesh&, std::int32_t, float&,
                                                std::int32_t&, IndexList&);
template void ComputeVertexCost_MT<ColorMetric>(const ProgressiveMesh&, std::int32_t, float&,
                                                std::int32_t&, IndexList&);
template void RefreshRingCosts_MT<PlainMetric>(const ProgressiveMesh&, std::int32_t,
                                               ThreadWorkRecord&);
template void RefreshRingCosts_MT<ColorMetric>(const ProgressiveMesh&, std::int32_t,
                                               ThreadWorkRecord&);

}  // namespace korvalite
