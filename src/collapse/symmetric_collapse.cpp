// SPDX-License-Identifier: MIT
#include "collapse/symmetric_collapse.h"

#include "mesh/corner_lists.h"
#include "metric/metric.h"

namespace korvalite::core {

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

/// An infinite coordinate of any vertex puts the plane at infinity; then `kept` keeps its position.
FloatVec3 ontoPlane(const DMesh& mesh, const FloatVec3& position, std::int32_t kept) {
    FloatVec3 projected;
    transformPoint(projected, mesh.symmetryCache.planeProjection, position);
    return isFinite(projected) ? projected : mesh.vertices[kept].position();
}

/// For a collapse between two paired vertices. False refuses it.
template <typename Metric>
bool checkPairedCollapse(const WorkingMesh& work, std::int32_t removed, std::int32_t kept,
                         EdgeEvaluation& evaluation, SymmetricCollapse& mirror,
                         KeptQuadrics<Metric>& keptQuadrics) {
    const DMesh& mesh = work.mesh;
    const bool removedOnPlane = mirror.mirrorRemoved == removed;
    const bool keptOnPlane = mirror.mirrorKept == kept;
    // A vertex on the plane may only collapse onto another vertex on the plane.
    if (removedOnPlane && !keptOnPlane) return false;

    const bool ontoOwnMirror = kept == mirror.mirrorRemoved;
    mirror.mirrorOntoPlane = keptOnPlane || ontoOwnMirror;
    mirror.doMirror = !(keptOnPlane && removedOnPlane) && !ontoOwnMirror &&
                      mesh.vertexActive.Test(mirror.mirrorRemoved) &&
                      mesh.vertexActive.Test(mirror.mirrorKept);
    // COMPAT: without a mirror image the collapse goes ahead alone; outputs depend on it.
    if (!AreVerticesAdjacent(mesh, mirror.mirrorRemoved, mirror.mirrorKept)) {
        mirror.doMirror = false;
        return true;
    }
    if (mirror.mirrorOntoPlane) {
        evaluation.position = ontoPlane(mesh, evaluation.position, kept);
        mirror.evaluation = evaluation;
        mirror.positionFixed = true;
    } else {
        mirror.evaluation = evaluateCollapse(work.mesh, work, mirror.mirrorRemoved,
                                             mirror.mirrorKept, keptQuadrics);
        if (mirror.evaluation.cost == kNotCollapsible) {
            mirror.doMirror = false;
            return true;
        }
    }
    // COMPAT: a tiny mesh refuses only collapses that get this far; outputs depend on it.
    return loadRelaxed(mesh.numActiveTriangles) >= kFewestTriangles;
}

}  // namespace

void BuildSymmetrySlaves(WorkingMesh& work) {
    const DMesh& mesh = work.mesh;
    const auto& pairing = mesh.symmetryCache.pairing;
    work.symmetryPaired.Reset(mesh.vertexCount());
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        if (pairing[vertex] != kNone) work.symmetryPaired.Set(vertex);
    }
    BitArray onceEroded;
    erode(mesh, work.symmetryPaired, onceEroded);
    erode(mesh, onceEroded, work.symmetryInterior);

    work.symmetrySlaves.Reset(mesh.vertexCount());
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        if (work.symmetryInterior.Test(vertex) && pairing[vertex] != vertex &&
            mesh.symmetryCache.secondSide.Test(vertex)) {
            work.symmetrySlaves.Set(vertex);
        }
    }
}

template <typename Metric>
bool CheckSymmetricCollapse(const WorkingMesh& work, std::int32_t removed, std::int32_t kept,
                            EdgeEvaluation& evaluation, SymmetricCollapse& mirror,
                            KeptQuadrics<Metric>& keptQuadrics) {
    const auto& pairing = work.mesh.symmetryCache.pairing;
    mirror = {};
    mirror.mirrorRemoved = pairing[removed];
    mirror.mirrorKept = pairing[kept];
    if (mirror.mirrorRemoved != kNone && mirror.mirrorKept != kNone) {
        return checkPairedCollapse(work, removed, kept, evaluation, mirror, keptQuadrics);
    }
    if (mirror.mirrorKept != kNone) {
        // The kept vertex does not move, so it still matches its mirror vertex.
        evaluation.position = work.mesh.vertices[kept].position();
        return true;
    }
    // A paired vertex may not collapse onto an unpaired one.
    return mirror.mirrorRemoved == kNone;
}

template bool CheckSymmetricCollapse<PlainMetric>(const WorkingMesh&, std::int32_t, std::int32_t,
                                                  EdgeEvaluation&, SymmetricCollapse&,
                                                  KeptQuadrics<PlainMetric>&);
template bool CheckSymmetricCollapse<ColorMetric>(const WorkingMesh&, std::int32_t, std::int32_t,
                                                  EdgeEvaluation&, SymmetricCollapse&,
                                                  KeptQuadrics<ColorMetric>&);

}  // namespace korvalite::core
