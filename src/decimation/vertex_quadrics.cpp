// SPDX-License-Identifier: MIT
#include "decimation/vertex_quadrics.h"

#include "decimation/triangle_quadrics.h"
#include "mesh/corner_lists.h"
#include "mesh/progressive_mesh.h"

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
void addBorderAndPlane(const ProgressiveMesh& pm, Quadric& inOut, std::int32_t vertex) {
    if (pm.mesh.borderVertices.Test(vertex)) {
        // Frozen borders get the smaller factor; their edges never collapse anyway.
        if (pm.BorderMode == BORDERMODE_FREEZE) inOut *= 50.0F;
        if (pm.BorderMode == BORDERMODE_PROTECT) inOut *= 100.0F;
    }
    const auto& pairing = pm.mesh.symmetryCache.pairing;
    const auto index = static_cast<std::size_t>(vertex);
    // Depends on the request, not on whether symmetry is actually handled.
    if (pm.handleSymmetry && index < pairing.size() && pairing[index] == vertex) {
        inOut += planeTerm(pm.symmetryPlaneQuadric, inOut);
    }
}

template void addBorderAndPlane(const ProgressiveMesh&, Quadric3D&, std::int32_t);
template void addBorderAndPlane(const ProgressiveMesh&, Quadric3DFloat&, std::int32_t);
template void addBorderAndPlane(const ProgressiveMesh&, ColorQuadric&, std::int32_t);

void AccumulateVertexQuadric(const ProgressiveMesh& pm, Quadric3D& inOut, std::int32_t vertex) {
    forEachCorner(pm.mesh, vertex, [&](std::int32_t corner) {
        inOut += pm.triangleQuadrics[static_cast<std::size_t>(corner / 3)];
    });
    addBorderAndPlane(pm, inOut, vertex);
}

void ComputeVertexQuadricFromTriangles(const ProgressiveMesh& pm, Quadric3D& inOut,
                                       std::int32_t vertex) {
    forEachCorner(pm.mesh, vertex,
                  [&](std::int32_t corner) { inOut += ComputeTriangleQuadric(pm, corner / 3); });
}

void ComputeVertexColorQuadric(const ProgressiveMesh& pm, ColorQuadric& inOut,
                               std::int32_t vertex) {
    forEachCorner(pm.mesh, vertex, [&](std::int32_t corner) {
        inOut += ComputeTriangleColorQuadric(pm, corner / 3);
    });
}

}  // namespace korvalite
