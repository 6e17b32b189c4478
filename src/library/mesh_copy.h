// SPDX-License-Identifier: MIT
//
// Meshes in and out of the core.
#pragma once

#include "mesh/dmesh.h"
#include <korvalite/korvalite.h>

namespace korvalite {

/// Copies a view into an empty mesh, as a reader of files would fill it. Throws Error(BadMesh) if
/// the arrays do not fit each other, an index is out of range or a coordinate is not finite.
void copyIn(const MeshView& view, core::DMesh& mesh);

/// The active vertices and triangles, in their order. UV points that several corners share stay
/// shared.
[[nodiscard]] Mesh copyOut(const core::DMesh& mesh);

}  // namespace korvalite
