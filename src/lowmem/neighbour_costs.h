// SPDX-License-Identifier: MIT
//
// The cost update after a collapse, for drivers that store no quadric: all quadrics of the kept
// vertex's 2-ring are built again from the triangles as they stand. This is where nearly all time
// goes.
#pragma once

#include "mesh/bit_array.h"
#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>
#include <vector>

namespace korvalite {

/// An edge from the 1-ring, gathered before it is evaluated.
struct RingEdge {
    std::int32_t w = kNone;  // a vertex of the ring
    std::int32_t x = kNone;
    std::uint16_t slotW = 0;
    std::uint16_t slotX = 0;
    bool mayRankW = false;  // the result may become w's cost
    bool mayRankX = false;
};

/// Scratch of one thread. Everything here keeps its capacity from collapse to collapse; only
/// vertexSlot (2 bytes a vertex) and triangleMark (1 bit a triangle) grow with the mesh.
template <typename Metric>
struct NeighbourhoodScratch {
    // Slots are 16 bits wide because this array is as long as the mesh.
    static constexpr std::uint16_t kNoSlot = 65535;

    std::vector<std::uint16_t> vertexSlot;  // all kNoSlot between two updates
    BitArray triangleMark;                  // all clear between two updates

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

    /// Sizes the two long arrays for a mesh.
    void prepare(const DMesh& mesh);
};

/// Ranks `kept` and its ring again and queues them. `ringCorners` and `neighbours` are what
/// CollapseEdge left behind, and may be empty.
///
/// A neighbourhood of 65535 vertices or more does not fit the slots: the vertices beyond keep their
/// costs until a later update.
template <typename Metric>
void UpdateNeighbourCosts_LM(ProgressiveMesh& pm, std::int32_t kept, const IndexList& ringCorners,
                             const IndexList& neighbours, NeighbourhoodScratch<Metric>& scratch);

}  // namespace korvalite
