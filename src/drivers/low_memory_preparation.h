// SPDX-License-Identifier: MIT
#pragma once

#include "progressive/progressive_mesh.h"

namespace korvalite {

/// The differences between the preparation for one thread and for several.
struct LowMemoryPreparation {
    bool raiseStageFlags;  // now; if false, only the first, once all threads have started
    bool logCostForms;
};

/// Builds everything that both low-memory drivers need before the first collapse: adjacency,
/// symmetry, UVs, colour scale, costs and the queue. Main thread only.
template <typename Metric>
void prepareLowMemoryRun(ProgressiveMesh& pm, const LowMemoryPreparation& preparation);

}  // namespace korvalite
