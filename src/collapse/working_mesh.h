// SPDX-License-Identifier: MIT
//
// A mesh while it is decimated, with what every collapse and every ranking reads or changes.
#pragma once

#include "base/bit_array.h"
#include "base/cache.h"
#include "base/run_monitor.h"
#include "mesh/dmesh.h"
#include "metric/metric_rules.h"
#include "queue/cost_queue.h"

#include <cstdint>

namespace korvalite::core {

/// Settings of the job that decide which collapses are allowed.
struct CollapseSettings {
    bool AvoidNormalReverse = true;
    bool ProtectTopology = true;
};

/// How a run handles symmetry.
struct SymmetryState {
    bool m_handleSymmetry_internal = false;  // whether the run handles it
    BitArray symmetryPaired;
    BitArray symmetryInterior;
    BitArray symmetrySlaves;

    [[nodiscard]] bool isSymmetrySlave(std::int32_t vertex) const {
        return m_handleSymmetry_internal && symmetrySlaves.Test(vertex);
    }
};

struct WorkingMesh : MetricRules, CollapseSettings, SymmetryState {
    WorkingMesh() = default;
    WorkingMesh(const WorkingMesh&) = delete;
    WorkingMesh& operator=(const WorkingMesh&) = delete;

    DMesh mesh;
    bool m_useVertexColors_internal = false;  // whether the run handles colours

    bool finishStepStarted = false;
    bool inFinishStep = false;

    alignas(kCacheLine) CostQueue costQueue{mesh};

    alignas(kCacheLine) RunMonitor* monitor = &silentMonitor();  // never null; not owned
};

}  // namespace korvalite::core
