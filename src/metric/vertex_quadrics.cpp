// SPDX-License-Identifier: MIT
#include "metric/vertex_quadrics.h"

#include "mesh/corner_lists.h"
#include "metric/metric_rules.h"
#include "metric/triangle_quadrics.h"

namespace korvalite {

namespace {

const Quadric3D& planeTerm(const SymmetryPlaneQuadric& plane, const Quadric3D& /*form*/) {
    return plane.asDouble;
}
const Quadric3DFloat& planeTerm(const SymmetryPlaneQuadric& plane, const Quadric3DFloat& /*form*/) {
    return plane.asFloat;
}
const ColorQuadric& planeTerm(const SymmetryPlaneQuadric& plane, const ColorQuadric& /*form*/) {
    return plane.asColor;
}

}  // namespace

template <typename Quadric>
void addBorderAndPlane(const DMesh& mesh, const MetricRules& rules, Quadric& inOut,
                       std::int32_t vertex) {
    if (mesh.borderVertices.Test(vertex)) {
        // Frozen borders get the smaller factor; their edges never collapse anyway.
        if (rules.BorderMode == BORDERMODE_FREEZE) inOut *= 50.0F;
        if (rules.BorderMode == BORDERMODE_PROTECT) inOut *= 100.0F;
    }
    const auto& pairing = mesh.symmetryCache.pairing;
    const auto index = static_cast<std::size_t>(vertex);
    // Depends on the request, not on whether symmetry is actually handled.
    if (rules.handleSymmetry && index < pairing.size() && pairing[index] == vertex) {
        inOut += planeTerm(rules.symmetryPlaneQuadric, inOut);
    }
}

template void addBorderAndPlane(const DMesh&, const MetricRules&, Quadric3D&, std::int32_t);
template void addBorderAndPlane(const DMesh&, const MetricRules&, Quadric3DFloat&, std::int32_t);
template void addBorderAndPlane(const DMesh&, const MetricRules&, ColorQuadric&, std::int32_t);

void AccumulateVertexQuadric(const DMesh& mesh, const MetricRules& rules,
                             const IndexedArray<Quadric3D>& triangleQuadrics, Quadric3D& inOut,
                             std::int32_t vertex) {
    forEachCorner(mesh, vertex,
                  [&](std::int32_t corner) { inOut += triangleQuadrics[triangleOf(corner)]; });
    addBorderAndPlane(mesh, rules, inOut, vertex);
}

void ComputeVertexQuadricFromTriangles(const DMesh& mesh, const MetricRules& rules,
                                       Quadric3D& inOut, std::int32_t vertex) {
    forEachCorner(mesh, vertex, [&](std::int32_t corner) {
        inOut += ComputeTriangleQuadric(mesh, rules, triangleOf(corner));
    });
}

void ComputeVertexColorQuadric(const DMesh& mesh, const MetricRules& rules, ColorQuadric& inOut,
                               std::int32_t vertex) {
    forEachCorner(mesh, vertex, [&](std::int32_t corner) {
        inOut += ComputeTriangleColorQuadric(mesh, rules, triangleOf(corner));
    });
}

}  // namespace korvalite
