// SPDX-License-Identifier: MIT
//
// Finds the mirror plane of a mesh and the vertex pairs across it. Only the three planes through
// the centre of the bounding box perpendicular to the coordinate axes are ever tried.
#pragma once

#include "geometry/transform.h"
#include "geometry/vec3.h"
#include "mesh/symmetry_cache.h"

namespace korvalite::core {

struct BoundingBox;
struct DMesh;

/// Finds the mirror pairs of `mesh` according to its symmetryMode and symmetryAxis and stores them
/// in its symmetryCache; `pairing` stays empty if symmetry is off or not found. Must not run while
/// another thread uses the mesh. May throw std::bad_alloc.
void computeSymmetry(DMesh& mesh);

/// Sets the tolerance to `ratio` times the bounding box diagonal, but at least 1e-19.
void computeTolerance(KRDMeshSymmetryCache& cache, const DMesh& mesh, float ratio);

/// Takes the first axis that pairs more than 95 percent of the vertices, else the best above
/// 40 percent. Always returns true; `pairing` is empty if there is no plane.
bool detectSymmetry(KRDMeshSymmetryCache& cache, const DMesh& mesh);

/// Pairs across the plane of one axis, however few vertices match. False without vertices.
bool computeForAxis(KRDMeshSymmetryCache& cache, int axis, const FloatVec3& centre,
                    const DMesh& mesh);

/// The point that all candidate planes pass through: (min + max) x 0.5.
[[nodiscard]] FloatVec3 symmetryCentre(const BoundingBox& box);

/// The orthogonal projection onto the plane and the reflection across it. `normal` has unit length.
void buildTransforms(Transform& planeProjection, Transform& mirrorTransform,
                     const FloatVec3& normal, const FloatVec3& point);

}  // namespace korvalite::core
