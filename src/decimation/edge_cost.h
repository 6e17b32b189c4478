// SPDX-License-Identifier: MIT
//
// What collapsing an edge costs and where it takes the kept vertex, with what borders, UV seams and
// the mask do to that. Every decision of the quadric drivers rests on this.
//
// Quadric arithmetic is in double; positions and costs are rounded to float, and the cost is taken
// at the rounded position: that rounding is part of the behaviour.
#pragma once

#include "decimation/color_quadric.h"
#include "decimation/quadric3d.h"
#include "geometry/vec3.h"

#include <array>
#include <cstdint>

namespace korvalite {

struct ProgressiveMesh;

/// Position and colour keep what they held on entry where an evaluation finds none.
struct EdgeEvaluation {
    float cost = 0;  // kNotCollapsible if the edge may not collapse
    FloatVec3 position;
    std::array<std::uint8_t, 3> color{};  // red, green, blue; ColorMetric only
};

/// `quadric` is the sum of the two vertices' quadrics. Off borders and seams the position is the
/// quadric's minimum; near a singular one, and between two border or two seam vertices, it is the
/// best of numPositionSamples + 1 points of the edge; an edge with one end on a border or seam
/// keeps that end. Numbers that are not finite never come out, whatever the mesh: a minimum that is
/// none, or costs none, counts as singular.
void EvaluateEdgeCost(const ProgressiveMesh& pm, EdgeEvaluation& result, std::int32_t a,
                      std::int32_t b, const Quadric3D& quadric);

/// Whether the cost of an edge can be below zero: only the error at an endpoint that the edge keeps
/// is not clamped.
[[nodiscard]] bool mayCostBeNegative(const ProgressiveMesh& pm, std::int32_t a, std::int32_t b);

/// The colour form. Unlike the plain one it has no search, and an edge that touches a border or a
/// seam never collapses, nor does one whose minimum or its cost is not finite.
void EvaluateEdgeCostColor(const ProgressiveMesh& pm, EdgeEvaluation& result, std::int32_t a,
                           std::int32_t b, const ColorQuadric& quadric);

}  // namespace korvalite
