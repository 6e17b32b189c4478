// SPDX-License-Identifier: MIT
//
// The mirror plane of a mesh and the vertex pairs across it, found once before a decimation.
//
// Only the three planes through the centre of the bounding box perpendicular to the coordinate axes
// are ever tried. The drivers read and edit `pairing` while they collapse; nothing searches after
// `computeSymmetry`.
#pragma once

#include "geometry/mirror_pairs.h"
#include "geometry/transform.h"
#include "geometry/vec3.h"
#include "mesh/bit_array.h"

#include <cstdint>
#include <vector>

namespace korvalite {

struct BoundingBox;
struct DMesh;

struct KRDMeshSymmetryCache {
    FloatVec3 planeNormal;  // unit axis; (0, 0, 0) if there is no plane
    FloatVec3 planePoint;
    float tolerance = 0.005F;  // maximum distance of a match from the mirror image
    Transform mirrorTransform;
    Transform planeProjection;
    FloatVec3 unitNormal;
    float planeOffset = 0.0F;  // unitNormal . p + planeOffset = 0 on the plane

    // One entry per vertex: -1 if unpaired, the vertex itself if on the plane, else its mirror
    // vertex. Symmetric until the drivers change it.
    std::vector<std::int32_t> pairing;
    BitArray secondSide;  // one bit per vertex, set above the plane
    float pairedRatio = 0.0F;
    FloatVec3 axisRatios{-1.0F, -1.0F, -1.0F};  // -1 for an axis not tested

    const DMesh* mesh = nullptr;  // the mesh of the last computation; null if there was none
    bool autoDetected = false;

    /// Forgets the pairs, for instance when the vertices have been renumbered.
    void reset();

    /// Whether the cache has been computed and has one entry per vertex of its mesh.
    [[nodiscard]] bool isValidFor() const;

    /// Sets the tolerance to `ratio` times the bounding box diagonal, but at least 1e-19.
    void computeTolerance(const DMesh& forMesh, float ratio);

    /// Takes the first axis that pairs more than 95 percent of the vertices, else the best above
    /// 40 percent. Always returns true; `pairing` is empty if there is no plane.
    bool detectSymmetry(const DMesh& forMesh);

    /// Pairs across the plane of one axis, however few vertices match. False without vertices.
    bool computeForAxis(int axis, const FloatVec3& centre, const DMesh& forMesh);
};

/// The point that all candidate planes pass through: (min + max) x 0.5.
[[nodiscard]] FloatVec3 symmetryCentre(const BoundingBox& box);

/// The orthogonal projection onto the plane and the reflection across it. `normal` has unit length.
void buildTransforms(Transform& planeProjection, Transform& mirrorTransform,
                     const FloatVec3& normal, const FloatVec3& point);

}  // namespace korvalite
