// SPDX-License-Identifier: MIT
//
// The quadrics of triangles and vertices.
#pragma once

#include "base/indexed_array.h"
#include "metric/color_quadric.h"
#include "metric/quadric3d.h"

#include <cstdint>

namespace korvalite::core {

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

/// Adds the quadrics around a vertex, from one per triangle, then the border factor and the plane
/// quadric of addBorderAndPlane.
void AccumulateVertexQuadric(const DMesh& mesh, const MetricRules& rules,
                             const IndexedArray<Quadric3D>& triangleQuadrics, Quadric3D& inOut,
                             std::int32_t vertex);

/// Add the current quadrics of the triangles around a vertex, without border factor or plane
/// quadric.
void ComputeVertexQuadricFromTriangles(const DMesh& mesh, const MetricRules& rules,
                                       Quadric3D& inOut, std::int32_t vertex);
void ComputeVertexColorQuadric(const DMesh& mesh, const MetricRules& rules, ColorQuadric& inOut,
                               std::int32_t vertex);

/// Multiplies everything in `inOut` by the border factor, which is the metric's whole border
/// penalty, then adds the plane quadric if the vertex is its own mirror vertex. Instantiated for
/// Quadric3D, Quadric3DFloat and ColorQuadric.
template <typename Quadric>
void addBorderAndPlane(const DMesh& mesh, const MetricRules& rules, Quadric& inOut,
                       std::int32_t vertex);

}  // namespace korvalite::core
