// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <vector>

namespace korva {

/// A unit normal for each vertex: x, y and z. Each triangle counts by its angle at the vertex
/// (Thürmer and Wüthrich, "Computing Vertex Normals from Polygonal Facets", 1998), so that the way
/// in which a flat face was cut makes no difference. (0, 0, 1) where no triangle has an area.
[[nodiscard]] std::vector<float> vertexNormals(const korvalite::Mesh& mesh);

}  // namespace korva
