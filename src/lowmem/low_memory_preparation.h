// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Where the preparation for one thread and that for several differ.
struct LowMemoryPreparation {
    bool raiseStageFlags;  // at once; else the first of them, when all threads are there
    bool logCostForms;
};

/// All that both low-memory drivers build before the first collapse, up to the queue: adjacency,
/// symmetry, UVs, colour scale and costs. Main thread only.
template <typename Metric>
void prepareLowMemoryRun(ProgressiveMesh& pm, const LowMemoryPreparation& preparation);

}  // namespace korvalite
