// SPDX-License-Identifier: MIT
//
// Collapses in mirrored pairs: which vertices only follow their mirror vertex, and whether a
// collapse needs its mirror image.
#pragma once

#include "collapse/sharing.h"
#include "collapse/working_mesh.h"
#include "metric/metric.h"

#include <cstdint>

namespace korvalite::core {

/// Sets `symmetrySlaves`: the paired vertices of the second side that are more than two rings away
/// from any unpaired vertex. They never start a collapse and stay out of the queue. Other paired
/// vertices act alone, so a mesh that is only nearly symmetric collapses freely where it is not.
void BuildSymmetrySlaves(WorkingMesh& work);

template <SharingPolicy Sharing>
bool isSlave(const WorkingMesh& work, std::int32_t vertex, const Sharing& sharing) {
    const auto guard = sharing.symmetrySlaves();
    return work.symmetrySlaves.Test(vertex);
}
template <SharingPolicy Sharing>
void freeSlave(WorkingMesh& work, std::int32_t vertex, const Sharing& sharing) {
    const auto guard = sharing.symmetrySlaves();
    work.symmetrySlaves.Clear(vertex);
}

/// The mirror image of a collapse.
struct SymmetricCollapse {
    std::int32_t mirrorRemoved = kNone;
    std::int32_t mirrorKept = kNone;
    bool doMirror = false;         // the mirror image must be collapsed too
    bool mirrorOntoPlane = false;  // the kept vertex ends up on the plane
    bool positionFixed = false;    // the position has been projected onto the plane
    EdgeEvaluation evaluation;     // position and colour of the mirror image
};

/// Determines the mirror image of collapsing `removed` onto `kept`; may change the position in
/// `evaluation`. False refuses the collapse. REQUIRES: m_handleSymmetry_internal.
template <typename Metric>
bool CheckSymmetricCollapse(const WorkingMesh& work, std::int32_t removed, std::int32_t kept,
                            EdgeEvaluation& evaluation, SymmetricCollapse& mirror,
                            KeptQuadrics<Metric>& keptQuadrics);

}  // namespace korvalite::core
