// SPDX-License-Identifier: MIT
//
// All routines here add to what `inOut` already holds.
#pragma once

#include "base/indexed_array.h"
#include "metric/color_quadric.h"
#include "metric/quadric3d.h"

#include <cstdint>

namespace korvalite {

struct DMesh;
struct MetricRules;

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

}  // namespace korvalite
