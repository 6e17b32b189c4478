// SPDX-License-Identifier: MIT
#include "collapse/symmetric_collapse.h"

#include "collapse/working_mesh.h"
#include "mesh/corner_lists.h"
#include "metric/metric.h"

namespace korvalite {

namespace {

// A smaller mesh has no room for a mirrored pair.
constexpr std::uint32_t kFewestTriangles = 8;

/// Copies `bits` to `eroded` and also clears the ring of every vertex whose bit is clear.
void erode(const DMesh& mesh, const BitArray& bits, BitArray& eroded) {
    eroded.Assign(bits);
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        if (bits.Test(vertex)) continue;
        forEachCorner(mesh, vertex, [&](std::int32_t corner) {
            eroded.Clear(vertexAt(mesh, nextCorner(corner)));
            eroded.Clear(vertexAt(mesh, previousCorner(corner)));
        });
    }
}

/// An infinite coordinate of any vertex puts the plane at infinity; then `w` keeps its position.
FloatVec3 ontoPlane(const DMesh& mesh, const FloatVec3& position, std::int32_t w) {
    FloatVec3 projected;
    transformPoint(projected, mesh.symmetryCache.planeProjection, position);
    return isFinite(projected) ? projected : mesh.vertices[static_cast<std::size_t>(w)].position();
}

/// For a collapse between two paired vertices. False refuses it.
template <typename Metric>
bool checkPairedCollapse(const WorkingMesh& work, std::int32_t v, std::int32_t w,
                         EdgeEvaluation& evaluation, SymmetricCollapse& mirror,
                         KeptQuadrics<Metric>& keptQuadrics) {
    const DMesh& mesh = work.mesh;
    const bool vOnPlane = mirror.mirrorV == v;
    const bool wOnPlane = mirror.mirrorW == w;
    // A vertex on the plane may only collapse onto another vertex on the plane.
    if (vOnPlane && !wOnPlane) return false;

    const bool ontoOwnMirror = w == mirror.mirrorV;
    mirror.mirrorOntoPlane = wOnPlane || ontoOwnMirror;
    mirror.doMirror = !(wOnPlane && vOnPlane) && !ontoOwnMirror &&
                      mesh.vertexActive.Test(mirror.mirrorV) &&
                      mesh.vertexActive.Test(mirror.mirrorW);
    if (!AreVerticesAdjacent(mesh, mirror.mirrorV, mirror.mirrorW)) {
        mirror.doMirror = false;
        return true;
    }
    if (mirror.mirrorOntoPlane) {
        evaluation.position = ontoPlane(mesh, evaluation.position, w);
        mirror.evaluation = evaluation;
        mirror.positionFixed = true;
    } else {
        mirror.evaluation =
            evaluateCollapse(work.mesh, work, mirror.mirrorV, mirror.mirrorW, keptQuadrics);
        if (mirror.evaluation.cost == kNotCollapsible) {
            mirror.doMirror = false;
            return true;
        }
    }
    return loadRelaxed(mesh.numActiveTriangles) >= kFewestTriangles;
}

}  // namespace

void BuildSymmetrySlaves(WorkingMesh& work) {
    const DMesh& mesh = work.mesh;
    const auto& pairing = mesh.symmetryCache.pairing;
    work.symmetryPaired.Reset(mesh.vertexCount());
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        if (pairing[static_cast<std::size_t>(vertex)] != kNone) work.symmetryPaired.Set(vertex);
    }
    BitArray onceEroded;
    erode(mesh, work.symmetryPaired, onceEroded);
    erode(mesh, onceEroded, work.symmetryInterior);

    work.symmetrySlaves.Reset(mesh.vertexCount());
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        if (work.symmetryInterior.Test(vertex) &&
            pairing[static_cast<std::size_t>(vertex)] != vertex &&
            mesh.symmetryCache.secondSide.Test(vertex)) {
            work.symmetrySlaves.Set(vertex);
        }
    }
}

template <typename Metric>
bool CheckSymmetricCollapse(const WorkingMesh& work, std::int32_t v, std::int32_t w,
                            EdgeEvaluation& evaluation, SymmetricCollapse& mirror,
                            KeptQuadrics<Metric>& keptQuadrics) {
    const auto& pairing = work.mesh.symmetryCache.pairing;
    mirror = {};
    mirror.mirrorV = pairing[static_cast<std::size_t>(v)];
    mirror.mirrorW = pairing[static_cast<std::size_t>(w)];
    if (mirror.mirrorV != kNone && mirror.mirrorW != kNone) {
        return checkPairedCollapse(work, v, w, evaluation, mirror, keptQuadrics);
    }
    if (mirror.mirrorW != kNone) {
        // w does not move, so it still matches its mirror vertex.
        evaluation.position = work.mesh.vertices[static_cast<std::size_t>(w)].position();
        return true;
    }
    // A paired vertex may not collapse onto an unpaired one.
    return mirror.mirrorV == kNone;
}

template bool CheckSymmetricCollapse<PlainMetric>(const WorkingMesh&, std::int32_t, std::int32_t,
                                                  EdgeEvaluation&, SymmetricCollapse&,
                                                  KeptQuadrics<PlainMetric>&);
template bool CheckSymmetricCollapse<ColorMetric>(const WorkingMesh&, std::int32_t, std::int32_t,
                                                  EdgeEvaluation&, SymmetricCollapse&,
                                                  KeptQuadrics<ColorMetric>&);

}  // namespace korvalite
