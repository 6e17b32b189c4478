// SPDX-License-Identifier: MIT
#pragma once

#include "metric/color_quadric.h"
#include "metric/quadric3d.h"

#include <cstdint>

namespace korvalite {

struct DMesh;
struct MetricRules;

/// The quadric of a triangle's plane at its current position; with UseAreaWeighting, multiplied by
/// twice the area (a triangle without area has weight 1 and a normal near zero).
Quadric3D ComputeTriangleQuadric(const DMesh& mesh, const MetricRules& rules,
                                 std::int32_t triangle);

/// The same in 32-bit floats throughout; a triangle without area has weight 0.
Quadric3DFloat ComputeTriangleQuadricFloat(const DMesh& mesh, const MetricRules& rules,
                                           std::int32_t triangle);

/// Plane and linear colour function of a triangle; never weighted by area. If no such function
/// exists, the quadric has only its plane part.
/// REQUIRES: one colour per vertex.
ColorQuadric ComputeTriangleColorQuadric(const DMesh& mesh, const MetricRules& rules,
                                         std::int32_t triangle);

}  // namespace korvalite
