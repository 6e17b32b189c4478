// SPDX-License-Identifier: MIT
#include "metric/edge_cost.h"

#include "geometry/linear_algebra.h"
#include "mesh/dmesh.h"
#include "metric/metric_rules.h"

#include <algorithm>
#include <cmath>

namespace korvalite::core {

namespace {

/// Where the kept vertex goes, by borders and seams.
enum class Placement : std::uint8_t {
    Frozen,      // the edge may not collapse
    Solve,       // to the quadric's minimum
    KeepFirst,   // it stays at the first end, which is on a border or seam
    KeepSecond,  // ... at the second end
    Search,      // to the best point on the edge
};

bool isFrozen(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second) {
    return rules.BorderMode == BORDERMODE_FREEZE && (first.onBorder || second.onBorder);
}

Placement placementByBorder(const EdgeEnd& first, const EdgeEnd& second) {
    if (first.onBorder && second.onBorder) return Placement::Search;
    if (first.onBorder) return Placement::KeepFirst;
    return second.onBorder ? Placement::KeepSecond : Placement::Solve;
}

Placement placementOf(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second) {
    if (isFrozen(rules, first, second)) return Placement::Frozen;
    const Placement byBorder = placementByBorder(first, second);
    if (first.onSeam && second.onSeam) {
        return byBorder == Placement::Solve ? Placement::Search : byBorder;
    }
    if (first.onSeam) return Placement::KeepFirst;
    if (!second.onSeam) return byBorder;
    // COMPAT: a border at the first end alone has already chosen that end; outputs depend on it.
    return byBorder == Placement::KeepFirst ? Placement::KeepFirst : Placement::KeepSecond;
}

float errorAt(const Quadric3D& quadric, const FloatVec3& position) {
    return static_cast<float>(evaluateQuadric(quadric, toDouble(position)));
}

void clampToZero(float& cost) {
    if (0.0F > cost) cost = 0.0F;
}

/// Stores the result of an evaluation. If it is not finite, makes the edge not collapsible, keeps
/// the old position and returns false.
bool takeIfFinite(EdgeEvaluation& result, float cost, const FloatVec3& position) {
    const bool finite = std::isfinite(cost) && isFinite(position);
    result.cost = finite ? cost : kNotCollapsible;
    if (finite) result.position = position;
    return finite;
}

/// Takes the best sample point from a to b, the first among equals, if it beats the current cost.
void searchAlongEdge(const MetricRules& rules, EdgeEvaluation& result, const FloatVec3& a,
                     const FloatVec3& b, const Quadric3D& quadric) {
    EdgeEvaluation found = result;
    for (std::int32_t i = 0; i <= rules.numPositionSamples; ++i) {
        const float t = static_cast<float>(i) / static_cast<float>(rules.numPositionSamples);
        const float s = 1.0F - t;
        const FloatVec3 candidate{s * a.x + t * b.x, s * a.y + t * b.y, s * a.z + t * b.z};
        const double error = evaluateQuadric(quadric, toDouble(candidate));
        if (static_cast<double>(found.cost) > error) {
            found.cost = static_cast<float>(error);
            found.position = candidate;
        }
    }
    takeIfFinite(result, found.cost, found.position);
    clampToZero(result.cost);
}

// COMPAT: close to the determinant but not the same; it decides which edges are searched.
double degeneracy(const Quadric3D& quadric) {
    const auto& q = quadric.q;
    return q[0] * q[3] * q[5] - q[4] * q[4] - q[1] * q[1] * q[5] - q[2] * q[4] +
           q[1] * q[2] * q[4] - q[2] * q[3];
}

/// Takes the quadric's minimum. Returns false if there is none or it cannot be trusted; the search
/// then continues from the result.
bool solve(const MetricRules& rules, EdgeEvaluation& result, const Quadric3D& quadric) {
    const auto& q = quadric.q;
    const Matrix3 matrix{q[0], q[1], q[2], q[1], q[3], q[4], q[2], q[4], q[5]};
    Matrix3 inverse;
    if (!invert3(inverse.data(), matrix.data())) {
        result.cost = kNotCollapsible;
        return false;
    }
    const DoubleVec3 minimum{-(inverse[0] * q[6] + inverse[1] * q[7] + inverse[2] * q[8]),
                             -(inverse[3] * q[6] + inverse[4] * q[7] + inverse[5] * q[8]),
                             -(inverse[6] * q[6] + inverse[7] * q[7] + inverse[8] * q[8])};
    const FloatVec3 position = toFloat(minimum);
    float cost = errorAt(quadric, position);
    clampToZero(cost);
    if (!takeIfFinite(result, cost, position)) return false;
    return !(rules.useDegeneracySearch && std::abs(degeneracy(quadric)) < 0.001);
}

DoubleVec3 rowProduct(const Matrix3& m, const std::array<double, 3>& v) {
    return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[3] * v[0] + m[4] * v[1] + m[5] * v[2],
            m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
}

DoubleVec3 columnProduct(const Matrix3& m, const std::array<double, 3>& v) {
    return {m[0] * v[0] + m[3] * v[1] + m[6] * v[2], m[1] * v[0] + m[4] * v[1] + m[7] * v[2],
            m[2] * v[0] + m[5] * v[1] + m[8] * v[2]};
}

/// NaN, as with a colour weight of 0, leaves the channel unchanged.
// COMPAT: truncated, not rounded; output colours depend on it.
void takeChannel(std::uint8_t& channel, double value) {
    if (value >= 255.0) {
        channel = 255;
    } else if (value <= 0.0) {
        channel = 0;
    } else if (!std::isnan(value)) {
        channel = static_cast<std::uint8_t>(value);
    }
}

void solveColor(const MetricRules& rules, EdgeEvaluation& result, const ColorQuadric& quadric) {
    Matrix3 P;
    Matrix3 R;
    Matrix3 T;
    if (!quadric.InvertBlocks(P, R, T)) {
        result.cost = kNotCollapsible;
        return;
    }
    const DoubleVec3 px = rowProduct(P, quadric.b1) + rowProduct(R, quadric.b2);
    const DoubleVec3 ps = columnProduct(R, quadric.b1) + rowProduct(T, quadric.b2);
    const DoubleVec3 x{-px.x, -px.y, -px.z};
    const DoubleVec3 s{-ps.x, -ps.y, -ps.z};
    // COMPAT: at the exact position, while the plain form rounds first; costs depend on it.
    auto cost = static_cast<float>(quadric.Evaluate(x, s));
    clampToZero(cost);
    if (!takeIfFinite(result, cost, toFloat(x))) return;
    takeChannel(result.color[0], s.x / rules.colorScale);
    takeChannel(result.color[1], s.y / rules.colorScale);
    takeChannel(result.color[2], s.z / rules.colorScale);
}

}  // namespace

void evaluateEdge(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second,
                  const Quadric3D& quadric, EdgeEvaluation& result) {
    switch (placementOf(rules, first, second)) {
    case Placement::Frozen: result.cost = kNotCollapsible; return;
    // COMPAT: not clamped to zero as elsewhere; negative costs come first in the queue.
    case Placement::KeepFirst:
        takeIfFinite(result, errorAt(quadric, first.position), first.position);
        break;
    case Placement::KeepSecond:
        takeIfFinite(result, errorAt(quadric, second.position), second.position);
        break;
    case Placement::Search:
        result.cost = kNotCollapsible;
        searchAlongEdge(rules, result, first.position, second.position, quadric);
        break;
    case Placement::Solve:
        if (!solve(rules, result, quadric))
            searchAlongEdge(rules, result, first.position, second.position, quadric);
        break;
    }
    applyMask(result.cost, std::min(first.mask, second.mask));
}

// COMPAT: the factors jump below 10 and below 5, computed as written; costs depend on them.
void applyMask(float& cost, std::uint8_t lower) {
    const float lack = 255.0F - static_cast<float>(lower);
    if (lower == 0) {
        cost = kNotCollapsible;
    } else if (lower <= 4) {
        cost *= (lack * 100.0F + 1.0F + 250.0F - 232.75F) - 25000.0F;
    } else if (lower <= 9) {
        cost *= (lack + 1.0F) - 232.75F;
    } else if (lower < 255) {
        cost *= lack / 20.0F + 1.0F;
    }
}

bool mayCostBeNegative(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second) {
    const Placement placement = placementOf(rules, first, second);
    return placement == Placement::KeepFirst || placement == Placement::KeepSecond;
}

void evaluateColorEdge(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second,
                       const ColorQuadric& quadric, EdgeEvaluation& result) {
    // COMPAT: with colours, borders and seams never collapse; outputs depend on it.
    if (first.onBorder || second.onBorder || first.onSeam || second.onSeam) {
        result.cost = kNotCollapsible;
        if (isFrozen(rules, first, second)) return;
    } else {
        solveColor(rules, result, quadric);
    }
    // COMPAT: the mask scales the cost of a forbidden edge too; outputs depend on it.
    applyMask(result.cost, std::min(first.mask, second.mask));
}

}  // namespace korvalite::core
