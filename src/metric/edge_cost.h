// SPDX-License-Identifier: MIT
//
// The cost of collapsing an edge and the new position of the kept vertex, including the effects of
// borders, UV seams and the mask. Every decision of the quadric drivers is based on this.
//
// Quadric arithmetic is in double. Positions and costs are rounded to float, and the cost is
// evaluated at the rounded position: that rounding is part of the behaviour.
#pragma once

#include "geometry/vec3.h"
#include "mesh/dmesh.h"
#include "metric/color_quadric.h"
#include "metric/metric_rules.h"
#include "metric/quadric3d.h"

#include <array>
#include <cstdint>

namespace korvalite::core {

/// What the evaluation of an edge reads of one end, besides the quadric.
struct EdgeEnd {
    FloatVec3 position;
    std::uint8_t mask = 255;
    bool onBorder = false;
    bool onSeam = false;  // always false if the run does not handle UVs
};

/// If an evaluation finds no position or colour, the field keeps its value from before the call.
struct EdgeEvaluation {
    float cost = 0;  // kNotCollapsible if the edge may not collapse
    FloatVec3 position;
    std::array<std::uint8_t, 3> color{};  // red, green, blue; ColorMetric only
};

[[nodiscard]] inline EdgeEnd gatherEnd(const DMesh& mesh, const MetricRules& rules,
                                       std::int32_t vertex) {
    return {mesh.vertices[vertex].position(),
            mesh.hasMask() ? mesh.maskValues[vertex] : std::uint8_t{255},
            mesh.borderVertices.Test(vertex),
            rules.m_handleUVs_internal && mesh.uvSeamVertices.Test(vertex)};
}

/// Evaluate an edge. Off borders and seams, the position is the quadric's minimum; between two ends
/// on a border or two on a seam, a point on the edge. An edge with one end on a border or seam
/// keeps that end. The colour form does not collapse any edge that touches a border or a seam.
///
/// `quadric` is the sum of the two vertices' quadrics. If it is nearly singular, the position is
/// the best of numPositionSamples + 1 points on the edge; the colour form does not search. Results
/// are always finite, whatever the input: if the minimum or its cost is not finite, the quadric
/// counts as singular.
///
/// Pure functions, apart from the fields of `result` that they do not find.
void evaluateEdge(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second,
                  const Quadric3D& quadric, EdgeEvaluation& result);
void evaluateColorEdge(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second,
                       const ColorQuadric& quadric, EdgeEvaluation& result);

/// What evaluateEdge does to the cost at last, with the lower mask of the two ends. The mask slows
/// the decimation down where its values are low; 0 forbids a collapse.
void applyMask(float& cost, std::uint8_t lower);

/// Whether evaluateEdge can find a negative cost: costs are clamped to zero except where the edge
/// keeps an end.
[[nodiscard]] bool mayCostBeNegative(const MetricRules& rules, const EdgeEnd& first,
                                     const EdgeEnd& second);

/// Both steps.
inline void EvaluateEdgeCost(const DMesh& mesh, const MetricRules& rules, EdgeEvaluation& result,
                             std::int32_t a, std::int32_t b, const Quadric3D& quadric) {
    evaluateEdge(rules, gatherEnd(mesh, rules, a), gatherEnd(mesh, rules, b), quadric, result);
}
inline void EvaluateEdgeCostColor(const DMesh& mesh, const MetricRules& rules,
                                  EdgeEvaluation& result, std::int32_t a, std::int32_t b,
                                  const ColorQuadric& quadric) {
    evaluateColorEdge(rules, gatherEnd(mesh, rules, a), gatherEnd(mesh, rules, b), quadric, result);
}

}  // namespace korvalite::core
