// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "korva/files/ply/ply_rows.h"

#include <vector>

namespace korva {

/// Where the properties of the element "vertex" go. Sets hadNormals. Throws korvalite::Error if
/// there are no positions.
[[nodiscard]] std::vector<int> plyVertexColumns(const InputFile& file, const PlyElement& element,
                                                ImportedMesh& imported);

/// Reads all vertices. UVs come to one for each vertex, without indices.
void readPlyVertices(PlyRows& rows, const PlyElement& element, const std::vector<int>& goesTo,
                     ImportedMesh& imported);

}  // namespace korva
