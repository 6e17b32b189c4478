// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_splits.h"

#include "korva/files/shared_uvs.h"

namespace korva {

GltfSplits splitForGltf(korvalite::Mesh& mesh) {
    GltfSplits splits;
    if (mesh.triangleUVs.empty()) return splits;
    SharedUVs shared(mesh.vertexCount());
    std::vector<std::uint32_t> vertexOf;  // for each point
    splits.uvPoints.resize(mesh.vertexCount(), kNoPoint);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        std::uint32_t& vertex = mesh.triangles[i];
        const float* uv = &mesh.uvs[2 * std::size_t{mesh.triangleUVs[i]}];
        const std::uint32_t point = shared.pointFor(vertex, uv[0], uv[1]);
        if (point == vertexOf.size()) {
            if (splits.uvPoints[vertex] == kNoPoint) {
                splits.uvPoints[vertex] = point;
                vertexOf.push_back(vertex);
            } else {
                vertexOf.push_back(static_cast<std::uint32_t>(splits.uvPoints.size()));
                splits.uvPoints.push_back(point);
                splits.repeated.push_back(vertex);
            }
        }
        vertex = vertexOf[point];
    }
    // Vertices without triangles get any UV.
    for (std::uint32_t& point : splits.uvPoints)
        if (point == kNoPoint) point = 0;
    splits.uvs = shared.takeUVs();
    mesh.uvs = {};
    mesh.triangleUVs = {};
    return splits;
}

}  // namespace korva
