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

/// Where the kept vertex goes, by borders and seams.
enum class Placement : std::uint8_t {
    Frozen,      // the edge may not collapse
    Forbidden,   // the same; its cost still counts as found, so the mask scales it
    Solve,       // to the quadric's minimum
    KeepFirst,   // it stays at the first end, which is on a border or seam
    KeepSecond,  // ... at the second end
    Search,      // to the best point on the edge
};

/// Everything that the evaluation of an edge reads besides the quadric.
struct EdgeInput {
    FloatVec3 first;
    FloatVec3 second;
    Placement placement = Placement::Solve;
    std::uint8_t mask = 255;  // the lower of the two mask values
};

/// If an evaluation finds no position or colour, the field keeps its value from before the call.
struct EdgeEvaluation {
    float cost = 0;  // kNotCollapsible if the edge may not collapse
    FloatVec3 position;
    std::array<std::uint8_t, 3> color{};  // red, green, blue; ColorMetric only
};

/// Gather the input of the edge from `a` to `b`. Off borders and seams, the position is the
/// quadric's minimum; between two ends on a border or two on a seam, a point on the edge. An edge
/// with one end on a border or seam keeps that end. The colour form does not collapse any edge that
/// touches a border or a seam.
[[nodiscard]] EdgeInput gatherEdge(const DMesh& mesh, const MetricRules& rules, std::int32_t a,
                                   std::int32_t b);
[[nodiscard]] EdgeInput gatherColorEdge(const DMesh& mesh, const MetricRules& rules, std::int32_t a,
                                        std::int32_t b);

/// Evaluate an edge. `quadric` is the sum of the two vertices' quadrics. If it is nearly singular,
/// the position is the best of numPositionSamples + 1 points on the edge; the colour form does not
/// search. Results are always finite, whatever the input: if the minimum or its cost is not finite,
/// the quadric counts as singular.
///
/// Pure functions, apart from the fields of `result` that they do not find.
void evaluateEdge(const MetricRules& rules, const EdgeInput& edge, const Quadric3D& quadric,
                  EdgeEvaluation& result);
void evaluateColorEdge(const MetricRules& rules, const EdgeInput& edge, const ColorQuadric& quadric,
                       EdgeEvaluation& result);

/// Whether the cost of an edge can be negative: costs are clamped to zero except where the edge
/// keeps an end.
[[nodiscard]] inline bool mayCostBeNegative(const EdgeInput& edge) {
    return edge.placement == Placement::KeepFirst || edge.placement == Placement::KeepSecond;
}

/// Both steps.
inline void EvaluateEdgeCost(const DMesh& mesh, const MetricRules& rules, EdgeEvaluation& result,
                             std::int32_t a, std::int32_t b, const Quadric3D& quadric) {
    evaluateEdge(rules, gatherEdge(mesh, rules, a, b), quadric, result);
}
inline void EvaluateEdgeCostColor(const DMesh& mesh, const MetricRules& rules,
                                  EdgeEvaluation& result, std::int32_t a, std::int32_t b,
                                  const ColorQuadric& quadric) {
    evaluateColorEdge(rules, gatherColorEdge(mesh, rules, a, b), quadric, result);
}

}  // namespace korvalite
