// SPDX-License-Identifier: MIT
//
// Collapsing in mirrored pairs: which vertices only follow their mirror image, and whether a
// collapse must be accompanied by its own.
#pragma once

#include "decimation/edge_cost.h"
#include "geometry/vec3.h"
#include "mesh/dmesh.h"

#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;
template <typename Metric>
class KeptQuadrics;

/// Sets `symmetrySlaves`: the vertices of the second side that are paired and lie two rings or more
/// from any unpaired vertex. They never collapse on their own initiative and stay out of the queue.
/// Paired vertices elsewhere act alone, which lets a mesh that is only nearly symmetric collapse
/// freely near the places where it is not.
void BuildSymmetrySlaves(ProgressiveMesh& pm);

/// The mirror image of a collapse.
struct SymmetricCollapse {
    std::int32_t mirrorV = kNone;
    std::int32_t mirrorW = kNone;
    bool doMirror = false;         // the mirror image must accompany the collapse
    bool mirrorOntoPlane = false;  // it ends at a vertex of the plane
    bool positionFixed = false;    // the position has been put onto the plane
    EdgeEvaluation evaluation;     // position and colour of the mirror image
};

/// Decides on the mirror image of collapsing v onto w and may change the position in `evaluation`.
/// False refuses the collapse. REQUIRES: m_handleSymmetry_internal.
template <typename Metric>
bool CheckSymmetricCollapse(const ProgressiveMesh& pm, std::int32_t v, std::int32_t w,
                            EdgeEvaluation& evaluation, SymmetricCollapse& mirror,
                            KeptQuadrics<Metric>& keptQuadrics);

}  // namespace korvalite
