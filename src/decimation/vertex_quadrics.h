// SPDX-License-Identifier: MIT
//
// All routines here add to `inOut`; the caller's contents are kept.
#pragma once

#include "decimation/color_quadric.h"
#include "decimation/quadric3d.h"

#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;

/// Adds the stored `triangleQuadrics` around a vertex, then the border factor and the plane
/// quadric of addBorderAndPlane.
void AccumulateVertexQuadric(const ProgressiveMesh& pm, Quadric3D& inOut, std::int32_t vertex);

/// Add the quadrics of the triangles around a vertex as they stand, with no border factor and no
/// plane quadric.
void ComputeVertexQuadricFromTriangles(const ProgressiveMesh& pm, Quadric3D& inOut,
                                       std::int32_t vertex);
void ComputeVertexColorQuadric(const ProgressiveMesh& pm, ColorQuadric& inOut, std::int32_t vertex);

/// The border factor, which is the whole of the border penalty on the metric, then the plane
/// quadric for a vertex that is its own mirror image. The factor scales all that `inOut` holds.
/// Instantiated for Quadric3D, Quadric3DFloat and ColorQuadric.
template <typename Quadric>
void addBorderAndPlane(const ProgressiveMesh& pm, Quadric& inOut, std::int32_t vertex);

}  // namespace korvalite
