// SPDX-License-Identifier: MIT
//
// All routines here add to what `inOut` already holds.
#pragma once

#include "decimation/color_quadric.h"
#include "decimation/quadric3d.h"

#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;

/// Adds the stored `triangleQuadrics` around a vertex, then the border factor and the plane
/// quadric of addBorderAndPlane.
void AccumulateVertexQuadric(const ProgressiveMesh& pm, Quadric3D& inOut, std::int32_t vertex);

/// Add the current quadrics of the triangles around a vertex, without border factor or plane
/// quadric.
void ComputeVertexQuadricFromTriangles(const ProgressiveMesh& pm, Quadric3D& inOut,
                                       std::int32_t vertex);
void ComputeVertexColorQuadric(const ProgressiveMesh& pm, ColorQuadric& inOut, std::int32_t vertex);

/// Multiplies everything in `inOut` by the border factor, which is the metric's whole border
/// penalty, then adds the plane quadric if the vertex is its own mirror vertex. Instantiated for
/// Quadric3D, Quadric3DFloat and ColorQuadric.
template <typename Quadric>
void addBorderAndPlane(const ProgressiveMesh& pm, Quadric& inOut, std::int32_t vertex);

}  // namespace korvalite
