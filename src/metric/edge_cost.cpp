// SPDX-License-Identifier: MIT
#include "metric/edge_cost.h"

#include "geometry/linear_algebra.h"
#include "mesh/dmesh.h"
#include "metric/metric_rules.h"

#include <algorithm>
#include <cmath>

namespace korvalite {

namespace {

std::uint8_t lowerMask(const DMesh& mesh, std::int32_t a, std::int32_t b) {
    return mesh.hasMask() ? std::min(mesh.maskValues[a], mesh.maskValues[b]) : std::uint8_t{255};
}

bool isFrozen(const MetricRules& rules, bool borderA, bool borderB) {
    return rules.BorderMode == BORDERMODE_FREEZE && (borderA || borderB);
}

Placement placementByBorder(bool borderA, bool borderB) {
    if (borderA && borderB) return Placement::Search;
    if (borderA) return Placement::KeepFirst;
    return borderB ? Placement::KeepSecond : Placement::Solve;
}

Placement placementBySeam(Placement byBorder, bool seamA, bool seamB) {
    if (seamA && seamB) return byBorder == Placement::Solve ? Placement::Search : byBorder;
    if (seamA) return Placement::KeepFirst;
    if (!seamB) return byBorder;
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

/// The mask slows the decimation down where its values are low; 0 forbids a collapse.
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

EdgeInput gatherEdge(const DMesh& mesh, const MetricRules& rules, std::int32_t a, std::int32_t b) {
    const bool borderA = mesh.borderVertices.Test(a);
    const bool borderB = mesh.borderVertices.Test(b);
    Placement placement = Placement::Frozen;
    if (!isFrozen(rules, borderA, borderB)) {
        placement = placementByBorder(borderA, borderB);
        if (rules.m_handleUVs_internal) {
            placement = placementBySeam(placement, mesh.uvSeamVertices.Test(a),
                                        mesh.uvSeamVertices.Test(b));
        }
    }
    return {mesh.vertices[a].position(), mesh.vertices[b].position(), placement,
            lowerMask(mesh, a, b)};
}

void evaluateEdge(const MetricRules& rules, const EdgeInput& edge, const Quadric3D& quadric,
                  EdgeEvaluation& result) {
    switch (edge.placement) {
    case Placement::Frozen: result.cost = kNotCollapsible; return;
    case Placement::Forbidden: result.cost = kNotCollapsible; break;
    // COMPAT: not clamped to zero as elsewhere; negative costs come first in the queue.
    case Placement::KeepFirst:
        takeIfFinite(result, errorAt(quadric, edge.first), edge.first);
        break;
    case Placement::KeepSecond:
        takeIfFinite(result, errorAt(quadric, edge.second), edge.second);
        break;
    case Placement::Search:
        result.cost = kNotCollapsible;
        searchAlongEdge(rules, result, edge.first, edge.second, quadric);
        break;
    case Placement::Solve:
        if (!solve(rules, result, quadric))
            searchAlongEdge(rules, result, edge.first, edge.second, quadric);
        break;
    }
    applyMask(result.cost, edge.mask);
}

EdgeInput gatherColorEdge(const DMesh& mesh, const MetricRules& rules, std::int32_t a,
                          std::int32_t b) {
    const bool borderA = mesh.borderVertices.Test(a);
    const bool borderB = mesh.borderVertices.Test(b);
    const bool seam =
        rules.m_handleUVs_internal && (mesh.uvSeamVertices.Test(a) || mesh.uvSeamVertices.Test(b));
    EdgeInput edge;  // the positions are not needed
    edge.mask = lowerMask(mesh, a, b);
    if (isFrozen(rules, borderA, borderB)) {
        edge.placement = Placement::Frozen;
    } else if (borderA || borderB || seam) {
        // COMPAT: with colours, borders and seams never collapse; outputs depend on it.
        edge.placement = Placement::Forbidden;
    }
    return edge;
}

void evaluateColorEdge(const MetricRules& rules, const EdgeInput& edge, const ColorQuadric& quadric,
                       EdgeEvaluation& result) {
    if (edge.placement == Placement::Solve) {
        solveColor(rules, result, quadric);
    } else {
        result.cost = kNotCollapsible;
        if (edge.placement == Placement::Frozen) return;
    }
    applyMask(result.cost, edge.mask);
}

}  // namespace korvalite
