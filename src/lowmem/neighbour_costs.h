// SPDX-License-Identifier: MIT
//
// The cost update after a collapse, for drivers that store no quadric: all quadrics of the kept
// vertex's 2-ring are built again from the triangles as they stand. This is where nearly all time
// goes.
#pragma once

#include "lowmem/neighbourhood_marks.h"
#include "lowmem/quadrics_on_demand.h"
#include "lowmem/thread_context.h"
#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>
#include <vector>

namespace korvalite {

struct CriticalSections;

/// An edge from the 1-ring, gathered before it is evaluated.
struct RingEdge {
    std::int32_t w = kNone;  // a vertex of the ring
    std::int32_t x = kNone;
    std::uint16_t slotW = 0;
    std::uint16_t slotX = 0;
    bool mayRankW = false;  // the result may become w's cost
    bool mayRankX = false;
};

/// Scratch of one thread. Everything here keeps its capacity from collapse to collapse.
template <typename Metric>
struct NeighbourhoodScratch {
    IndexList localVertices;   // the vertices with a slot, in slot order: kept, ring, outer ring
    IndexList localTriangles;  // in order of listing
    std::vector<typename Metric::Quadric> slotQuadrics;
    IndexList corners;
    IndexList ring;
    IndexList neighbours;
    IndexList ringNeighbours;                    // of all ring vertices, one after the other
    std::vector<std::size_t> ringNeighboursEnd;  // where those of each end
    IndexList queued;
    IndexList warmed;
    IndexList nextPair;  // the vertex that probably collapses next, and its partner
    IndexList nextRing;
    IndexList cursors;  // of warmVertexCorners
    std::vector<RingEdge> edges;
    std::vector<float> edgeCosts;
    QuadricsOnDemand<Metric> quadrics;
};

/// Ranks `kept` and its ring again and queues them. `ringCorners` and `neighbours` are what
/// CollapseEdge left behind, and may be empty.
///
/// A neighbourhood of 65535 vertices or more does not fit the slots: the vertices beyond keep their
/// costs until a later update.
template <typename Metric>
void UpdateNeighbourCosts_LM(ProgressiveMesh& pm, std::int32_t kept, const IndexList& ringCorners,
                             const IndexList& neighbours, NeighbourhoodMarks& marks,
                             NeighbourhoodScratch<Metric>& scratch);

/// The same for a thread that has reserved `kept` and its ring: the costs are appended to the
/// update lists of its work record, with neither the vertex records nor the queue touched. The
/// triangles beyond the reservation are read while other threads may be changing them, so that a
/// cost can be a little off; it only misorders the queue, as every collapse is tested when it is
/// made.
template <typename Metric>
void UpdateNeighbourCosts_MT(ProgressiveMesh& pm, std::int32_t kept, const IndexList& ringCorners,
                             const IndexList& neighbours, ThreadContext& context,
                             NeighbourhoodScratch<Metric>& scratch, CriticalSections& sections);

}  // namespace korvalite
