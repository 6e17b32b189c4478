// SPDX-License-Identifier: MIT
//
// The cost update after a collapse, for drivers that store no quadrics: rebuilds all quadrics of
// the kept vertex's 2-ring from the current triangles. Nearly all the time is spent here.
//
//        o---o---o         k  the kept vertex
//       / \ / \ / \        r  its ring, which is ranked again
//      o---r---r---o       o  the outer ring, which keeps its costs
//     / \ / \ / \ / \      .
//    o---r---k---r---o     Every edge from the ring is evaluated once, with the quadrics of both
//     \ / \ / \ / \ /      ends summed from the triangles that touch k or an o. A triangle whose
//      o---r---r---o       corners are all ring vertices is not among them.
//       \ / \ / \ /
//        o---o---o
#pragma once

#include "collapse/sharing.h"
#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"
#include "metric/edge_cost.h"
#include "ranking/neighbourhood_marks.h"
#include "ranking/quadrics_on_demand.h"
#include "ranking/ring_prefetch.h"

#include <cstdint>
#include <vector>

namespace korvalite::core {

/// An edge from the 1-ring, gathered before it is evaluated.
struct RingEdge {
    std::int32_t w = kNone;  // a ring vertex
    std::int32_t x = kNone;
    std::uint16_t slotW = 0;
    std::uint16_t slotX = 0;
    bool mayRankW = false;  // the result may become w's cost
    bool mayRankX = false;
};

/// Scratch for one thread. Everything here keeps its capacity from collapse to collapse.
template <typename Metric>
struct NeighbourhoodScratch {
    IndexList localVertices;   // the vertices with a slot, in slot order: kept, ring, outer ring
    IndexList localTriangles;  // in the order listed
    std::vector<EdgeEnd> slotEnds;
    std::vector<typename Metric::Quadric> slotQuadrics;
    IndexList corners;
    IndexList ring;
    IndexList neighbours;
    IndexList ringNeighbours;                    // of all ring vertices, in order
    std::vector<std::size_t> ringNeighboursEnd;  // the end of each ring vertex's part
    RingPrefetch prefetch;
    // Parallel lists.
    std::vector<RingEdge> edges;
    std::vector<float> edgeCosts;
    QuadricsOnDemand<Metric> quadrics;
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
