// SPDX-License-Identifier: MIT
//
// The cost of collapsing an edge and the new position of the kept vertex, including the effects of
// borders, UV seams and the mask. Every decision of the quadric drivers is based on this.
//
// Quadric arithmetic is in double. Positions and costs are rounded to float, and the cost is
// evaluated at the rounded position: that rounding is part of the behaviour.
#pragma once

#include "geometry/vec3.h"
#include "metric/color_quadric.h"
#include "metric/quadric3d.h"

#include <array>
#include <cstdint>

namespace korvalite {

struct DMesh;
struct MetricRules;

/// If an evaluation finds no position or colour, the field keeps its value from before the call.
struct EdgeEvaluation {
    float cost = 0;  // kNotCollapsible if the edge may not collapse
    FloatVec3 position;
    std::array<std::uint8_t, 3> color{};  // red, green, blue; ColorMetric only
};

/// `quadric` is the sum of the two vertices' quadrics. Off borders and seams, the position is the
/// quadric's minimum. If the quadric is nearly singular, or both ends are on a border or both on a
/// seam, it is the best of numPositionSamples + 1 points on the edge. An edge with one end on a
/// border or seam keeps that end. Results are always finite, whatever the mesh: if the minimum or
/// its cost is not finite, the quadric counts as singular.
void EvaluateEdgeCost(const DMesh& mesh, const MetricRules& rules, EdgeEvaluation& result,
                      std::int32_t a, std::int32_t b, const Quadric3D& quadric);

/// Whether the cost of an edge can be negative: costs are clamped to zero except where the edge
/// keeps an endpoint.
[[nodiscard]] bool mayCostBeNegative(const DMesh& mesh, const MetricRules& rules, std::int32_t a,
                                     std::int32_t b);

/// The colour form. Unlike the plain form it does not search: an edge that touches a border or a
/// seam never collapses, nor does one whose minimum or its cost is not finite.
void EvaluateEdgeCostColor(const DMesh& mesh, const MetricRules& rules, EdgeEvaluation& result,
                           std::int32_t a, std::int32_t b, const ColorQuadric& quadric);

}  // namespace korvalite
