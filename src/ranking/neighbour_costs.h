// SPDX-License-Identifier: MIT
//
// The cost update after a collapse, for drivers that store no quadrics: rebuilds all quadrics of
// the kept vertex's 2-ring from the current triangles. Nearly all the time is spent here.
//
// The kept vertex and its ring are ranked again; the outer ring keeps its costs. Every edge from
// the ring is evaluated once, with the quadrics of both ends summed from the triangles of the
// neighbourhood.
#pragma once

#include "collapse/sharing.h"
#include "collapse/working_mesh.h"
#include "lanes/kernels.h"
#include "mesh/corner_lists.h"
#include "metric/edge_cost.h"
#include "ranking/neighbourhood.h"
#include "ranking/neighbourhood_marks.h"
#include "ranking/next_collapse_prefetch.h"
#include "ranking/quadrics_on_demand.h"

#include <cstdint>
#include <vector>

namespace korvalite::core {

/// Scratch for one thread. Everything here keeps its capacity from collapse to collapse.
template <typename Metric>
struct NeighbourhoodScratch {
    Neighbourhood area;
    NextCollapsePrefetch prefetch;

    std::vector<EdgeEnd> slotEnds;
    std::vector<typename Metric::Quadric> slotQuadrics;
    std::vector<typename Metric::LaneForm> laneSums;  // instead, in lanes
    QuadricsOnDemand<Metric> quadrics;                // instead, on flat ground

    // Parallel lists, with room for more than the edges.
    std::vector<std::uint32_t> edgeSlots;  // two per edge, the first in the ring
    std::vector<std::uint32_t> rankSlots;  // which of them may take the cost
    std::vector<float> edgeCosts;

    // The lowest costs in the ring by slot, and a last entry for those that nobody may take.
    std::vector<RankedVertex> ranking;
};

/// Re-ranks `kept` and its ring and queues them. `ringCorners` and `neighbours` are the lists that
/// CollapseEdge gathered, and may be empty.
///
/// There are only 65535 slots: in a larger neighbourhood the remaining vertices keep their costs
/// until a later update.
///
/// Shared, the thread has reserved `kept` and its ring. Triangles outside the reservation may be
/// changing while they are read, so a cost can be slightly off; this only affects the order of the
/// queue, because every collapse is tested when it is made.
template <typename Metric, SharingPolicy Sharing>
void UpdateNeighbourCosts_LM(WorkingMesh& work, std::int32_t kept, const IndexList& ringCorners,
                             const IndexList& neighbours, NeighbourhoodMarks& marks,
                             NeighbourhoodScratch<Metric>& scratch, Sharing& sharing);

}  // namespace korvalite::core
