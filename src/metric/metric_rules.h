// SPDX-License-Identifier: MIT
#pragma once

#include "metric/color_quadric.h"
#include "metric/quadric3d.h"

#include <cstdint>

namespace korvalite::core {

struct KRDMeshSymmetryCache;

/// The quadric that keeps vertices on the mirror plane, in each form that a cost initialisation
/// uses.
struct SymmetryPlaneQuadric {
    Quadric3DFloat asFloat;
    Quadric3D asDouble;
    ColorQuadric asColor;
};

/// The plane of the cache, with a weight of 200.
SymmetryPlaneQuadric BuildSymmetryPlaneQuadric(const KRDMeshSymmetryCache& cache);

enum BorderModeValue : std::int32_t {
    BORDER_MODE_NONE = 0,
    BORDERMODE_PROTECT = 1,
    BORDERMODE_FREEZE = 2,
};

/// A name for the log.
const char* borderModeText(std::int32_t value);

/// Settings of the job that the metric reads.
struct MetricSettings {
    // COMPAT: on, while a job has it off; programs that use the library rely on it.
    bool UseAreaWeighting = true;
    std::int32_t BorderMode = BORDERMODE_PROTECT;
    bool useDegeneracySearch = true;      // see EvaluateEdgeCost
    std::int32_t numPositionSamples = 8;  // see EvaluateEdgeCost; at least 1
    bool handleSymmetry = false;          // as requested, whether or not the run does
};

/// Everything that the metric reads besides the mesh.
struct MetricRules : MetricSettings {
    // Decided by the run.
    bool m_handleUVs_internal = false;
    double colorScale = 0;  // a colour byte times this is a length
    SymmetryPlaneQuadric symmetryPlaneQuadric;
};

}  // namespace korvalite::core
