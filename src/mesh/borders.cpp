// SPDX-License-Identifier: MIT
#include "mesh/borders.h"

#include "mesh/corner_lists.h"

namespace korvalite {

void ComputeBorderVertices(DMesh& mesh) {
    mesh.borderVertices.Free();
    mesh.borderVertices.Resize(mesh.vertexCount(), false);
    IndexList neighbours;
    IndexList corners;
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        GetVertexCornersAndNeighbours(mesh, vertex, neighbours, corners);
        if (neighbours.size() != corners.size()) mesh.borderVertices.Set(vertex);
    }
}

}  // namespace korvalite
