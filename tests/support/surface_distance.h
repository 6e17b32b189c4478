// SPDX-License-Identifier: MIT
//
// The distance between two surfaces: what a decimation has cost, measured from outside.
#pragma once

#include "geometry/vec3.h"
#include "mesh/dmesh.h"

#include <cstddef>
#include <vector>

namespace korvalite::core::test {

// Points spread over the active triangles in proportion to their area, always the same. About
// `count` of them; none on a mesh without area.
std::vector<DoubleVec3> samplesOf(const DMesh& mesh, std::size_t count);

struct SurfaceDistance {
    double rms = 0;      // from samples of the first surface to the second
    double maximum = 0;  // in both directions
};

// Distances are in the unit of the coordinates. Indices must be in range. A million samples take
// seconds.
SurfaceDistance surfaceDistance(const DMesh& first, const DMesh& second, std::size_t samples);

}  // namespace korvalite::core::test
