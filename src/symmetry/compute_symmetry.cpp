// SPDX-License-Identifier: MIT
#include "symmetry/compute_symmetry.h"

#include "geometry/linear_algebra.h"
#include "mesh/dmesh.h"
#include "symmetry/mirror_pairs.h"

#include <array>
#include <cmath>
#include <utility>

namespace korvalite::core {

namespace {

constexpr std::size_t kLargestWithFixedRatio = 10000;
constexpr float kFixedRatio = 0.01F;
constexpr float kAcceptedAtOnce = 0.95F;
constexpr float kLeastAccepted = 0.4F;
constexpr float kSmallestTolerance = 1e-19F;

/// In larger meshes neighbours are closer together, so a match must be closer too.
float toleranceRatio(std::size_t vertexCount) {
    if (vertexCount <= kLargestWithFixedRatio) return kFixedRatio;
    return 100.0F / static_cast<float>(vertexCount);
}

FloatVec3 unitAxis(int axis) {
    FloatVec3 v;
    setComponent(v, axis, 1.0F);
    return v;
}

bool equal(const FloatVec3& a, const FloatVec3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

float ratioOf(const MirrorPairs& pairs) {
    return static_cast<float>(pairs.pairedCount) / static_cast<float>(pairs.pairing.size());
}

void setPlane(KRDMeshSymmetryCache& cache, int axis, const FloatVec3& centre) {
    cache.planeNormal = unitAxis(axis);
    cache.planePoint = centre;
    normalize3f(cache.unitNormal, cache.planeNormal);
    cache.planeOffset = -dot(cache.planePoint, cache.unitNormal);
    buildTransforms(cache.planeProjection, cache.mirrorTransform, cache.planeNormal, centre);
}

void adopt(KRDMeshSymmetryCache& cache, MirrorPairs&& pairs) {
    cache.pairedRatio = ratioOf(pairs);
    cache.pairing = std::move(pairs.pairing);
    cache.secondSide = std::move(pairs.secondSide);
}

struct DetectedAxis {
    int axis = kNone;
    MirrorPairs pairs;
};

DetectedAxis findBestAxis(KRDMeshSymmetryCache& cache, const DMesh& mesh, const FloatVec3& centre) {
    DetectedAxis best;
    float bestRatio = 0.0F;
    for (int axis = 0; axis < 3; ++axis) {
        MirrorPairs pairs;
        if (!pairVertices(pairs, mesh, axis, centre, cache.tolerance)) continue;
        const float ratio = ratioOf(pairs);
        setComponent(cache.axisRatios, axis, ratio);
        // COMPAT: a later axis is not tried, even if it matches better; programs rely on the axis.
        if (ratio > kAcceptedAtOnce) return {axis, std::move(pairs)};
        if (ratio > kLeastAccepted && ratio > bestRatio) {
            bestRatio = ratio;
            best = {axis, std::move(pairs)};
        }
    }
    return best;
}

}  // namespace

void computeTolerance(KRDMeshSymmetryCache& cache, const DMesh& mesh, float ratio) {
    const FloatVec3 extent = mesh.boundingBox.max - mesh.boundingBox.min;
    cache.tolerance = std::sqrt(dot(extent, extent)) * ratio;
    if (cache.tolerance < kSmallestTolerance) cache.tolerance = kSmallestTolerance;
}

bool detectSymmetry(KRDMeshSymmetryCache& cache, const DMesh& mesh) {
    cache.mesh = &mesh;
    const FloatVec3 centre = symmetryCentre(mesh.boundingBox);
    cache.axisRatios = {-1.0F, -1.0F, -1.0F};
    DetectedAxis found = findBestAxis(cache, mesh, centre);
    if (found.axis == kNone) {
        cache.pairing.clear();
        cache.secondSide.Free();
        cache.planeNormal = {};
        cache.planePoint = {};
        return true;
    }
    adopt(cache, std::move(found.pairs));
    cache.autoDetected = true;
    setPlane(cache, found.axis, centre);
    return true;
}

bool computeForAxis(KRDMeshSymmetryCache& cache, int axis, const FloatVec3& centre,
                    const DMesh& mesh) {
    cache.mesh = &mesh;
    MirrorPairs pairs;
    if (!pairVertices(pairs, mesh, axis, centre, cache.tolerance)) {
        cache.planeNormal = {};
        return false;
    }
    adopt(cache, std::move(pairs));
    setPlane(cache, axis, centre);
    return true;
}

FloatVec3 symmetryCentre(const BoundingBox& box) {
    const FloatVec3 sum = box.min + box.max;
    return {sum.x * 0.5F, sum.y * 0.5F, sum.z * 0.5F};
}

void buildTransforms(Transform& planeProjection, Transform& mirrorTransform,
                     const FloatVec3& normal, const FloatVec3& point) {
    for (int axis = 0; axis < 3; ++axis) {
        if (!equal(normal, unitAxis(axis))) continue;
        FloatVec3 factors{1.0F, 1.0F, 1.0F};
        setComponent(factors, axis, -1.0F);
        mirrorTransform.scaleAbout(factors, point);
        setComponent(factors, axis, 0.0F);
        planeProjection.scaleAbout(factors, point);
        return;
    }

    // Turn the normal onto x, scale along x, turn back.
    Transform turn;
    turn.rotationBetweenAbout(unitAxis(0), normal, {}, point);
    Transform back;
    if (!invertTransform(back, turn)) return;
    const auto scaledAlongNormal = [&](Transform& out, float factor) {
        Transform alongX;
        alongX.scale({factor, 1.0F, 1.0F});
        multiply4(out.m, alongX.m, back.m);
        multiply4(out.m, turn.m, out.m);
        out.kind = TRANSFORM_GENERAL;
    };
    scaledAlongNormal(planeProjection, 0.0F);
    scaledAlongNormal(mirrorTransform, -1.0F);
}

void computeSymmetry(DMesh& mesh) {
    KRDMeshSymmetryCache& cache = mesh.symmetryCache;
    cache.mesh = nullptr;
    cache.planeNormal = {};
    cache.planePoint = {};
    cache.reset();
    if (mesh.symmetryMode == 0) return;

    computeTolerance(cache, mesh, toleranceRatio(mesh.vertices.size()));
    if (mesh.symmetryMode == -1) {
        detectSymmetry(cache, mesh);
    } else if (mesh.symmetryAxis != kNone) {
        computeForAxis(cache, mesh.symmetryAxis, symmetryCentre(mesh.boundingBox), mesh);
    }
}

}  // namespace korvalite::core
