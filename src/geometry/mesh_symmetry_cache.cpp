// SPDX-License-Identifier: MIT
#include "geometry/mesh_symmetry_cache.h"

#include "geometry/linear_algebra.h"
#include "mesh/dmesh.h"

#include <array>
#include <cmath>
#include <utility>

namespace korvalite {

namespace {

constexpr float kAcceptedAtOnce = 0.95F;
constexpr float kLeastAccepted = 0.4F;
constexpr float kSmallestTolerance = 1e-19F;

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
        if (ratio > kAcceptedAtOnce) return {axis, std::move(pairs)};
        if (ratio > kLeastAccepted && ratio > bestRatio) {
            bestRatio = ratio;
            best = {axis, std::move(pairs)};
        }
    }
    return best;
}

}  // namespace

void KRDMeshSymmetryCache::reset() {
    std::vector<std::int32_t>().swap(pairing);
    secondSide.Reset(secondSide.count());
    pairedRatio = 0.0F;
    axisRatios = {-1.0F, -1.0F, -1.0F};
    autoDetected = false;
}

bool KRDMeshSymmetryCache::isValidFor() const {
    if (mesh == nullptr) return false;
    return mesh->vertices.empty() || pairing.size() == mesh->vertices.size();
}

void KRDMeshSymmetryCache::computeTolerance(const DMesh& forMesh, float ratio) {
    const FloatVec3 extent = forMesh.boundingBox.max - forMesh.boundingBox.min;
    tolerance = std::sqrt(dot(extent, extent)) * ratio;
    if (tolerance < kSmallestTolerance) tolerance = kSmallestTolerance;
}

bool KRDMeshSymmetryCache::detectSymmetry(const DMesh& forMesh) {
    mesh = &forMesh;
    const FloatVec3 centre = symmetryCentre(forMesh.boundingBox);
    axisRatios = {-1.0F, -1.0F, -1.0F};
    DetectedAxis found = findBestAxis(*this, forMesh, centre);
    if (found.axis == kNone) {
        pairing.clear();
        secondSide.Free();
        planeNormal = {};
        planePoint = {};
        return true;
    }
    adopt(*this, std::move(found.pairs));
    autoDetected = true;
    setPlane(*this, found.axis, centre);
    return true;
}

bool KRDMeshSymmetryCache::computeForAxis(int axis, const FloatVec3& centre, const DMesh& forMesh) {
    mesh = &forMesh;
    MirrorPairs pairs;
    if (!pairVertices(pairs, forMesh, axis, centre, tolerance)) {
        planeNormal = {};
        return false;
    }
    adopt(*this, std::move(pairs));
    setPlane(*this, axis, centre);
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

}  // namespace korvalite
