// SPDX-License-Identifier: MIT
#pragma once

#include "base/bit_array.h"
#include "base/indexed_array.h"
#include "geometry/transform.h"
#include "geometry/vec3.h"

#include <cstdint>

namespace korvalite::core {

struct DMesh;

/// The mirror plane of a mesh and the vertex pairs across it, found once before a decimation
/// (computeSymmetry). The drivers read and edit `pairing` while they collapse.
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
    IndexedArray<std::int32_t> pairing;
    BitArray secondSide;  // one bit per vertex, set above the plane
    float pairedRatio = 0.0F;
    FloatVec3 axisRatios{-1.0F, -1.0F, -1.0F};  // -1 for an axis not tested

    const DMesh* mesh = nullptr;  // the mesh of the last computation; null if there was none
    bool autoDetected = false;

    /// Forgets the pairs, for instance when the vertices have been renumbered.
    void reset();

    /// Whether the cache has been computed and has one entry per vertex of its mesh.
    [[nodiscard]] bool isValidFor() const;
};

}  // namespace korvalite::core
