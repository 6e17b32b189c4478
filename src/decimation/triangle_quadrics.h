// SPDX-License-Identifier: MIT
#pragma once

#include "decimation/color_quadric.h"
#include "decimation/quadric3d.h"

#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;

/// The quadric of a triangle's plane, from the positions as they stand; with UseAreaWeighting times
/// twice its area (a triangle of no area has weight 1 and a normal near zero).
Quadric3D ComputeTriangleQuadric(const ProgressiveMesh& pm, std::int32_t triangle);

/// The same in 32-bit floats throughout; a triangle of no area has weight 0.
Quadric3DFloat ComputeTriangleQuadricFloat(const ProgressiveMesh& pm, std::int32_t triangle);

/// Plane and linear colour function of a triangle; never weighted by area. A triangle on which no
/// such function exists has its plane part alone.
/// REQUIRES: one colour per vertex.
ColorQuadric ComputeTriangleColorQuadric(const ProgressiveMesh& pm, std::int32_t triangle);

}  // namespace korvalite
