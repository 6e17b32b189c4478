// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/dmesh.h"

#include <cstdint>
#include <cstdio>
#include <vector>

namespace korvalite::core::test {

// The plain way to write an OBJ, without colours and without checks of the indices: one fprintf for
// each line. The product must write the same bytes, in less time.
inline void writeObjByPrintf(std::FILE* file, const DMesh& mesh) {
    std::vector<int> newVertices(mesh.vertices.size());
    int count = 0;
    for (std::uint32_t i = 0; i < mesh.vertices.size(); ++i) {
        if (!mesh.vertexActive.Test(i)) continue;
        newVertices[i] = ++count;
        const VertexRecord& v = mesh.vertices[i];
        std::fprintf(file, "v %.9f %.9f %.9f\n", double{v.x}, double{v.y}, double{v.z});
    }
    const bool withUVs = mesh.indicesUV.size() == mesh.triangles.size();
    std::vector<int> newUVs(withUVs ? mesh.coordsUV.size() : 0);
    for (std::uint32_t c = 0; withUVs && c < mesh.triangles.size(); ++c)
        if (mesh.triangleActive.Test(c / 3)) newUVs[mesh.indicesUV[c]] = 1;
    count = 0;
    for (std::size_t i = 0; i < newUVs.size(); ++i) {
        if (newUVs[i] == 0) continue;
        newUVs[i] = ++count;
        const UVCoord& uv = mesh.coordsUV[i];
        std::fprintf(file, "vt %.9f %.9f\n", double{uv.u}, double{uv.v});
    }
    for (std::uint32_t t = 0; t < mesh.triangles.size() / 3; ++t) {
        if (!mesh.triangleActive.Test(t)) continue;
        const std::uint32_t* const v = &mesh.triangles[std::size_t{t} * 3];
        if (withUVs) {
            const std::uint32_t* const uv = &mesh.indicesUV[std::size_t{t} * 3];
            std::fprintf(file, "f %d/%d %d/%d %d/%d\n", newVertices[v[0]], newUVs[uv[0]],
                         newVertices[v[1]], newUVs[uv[1]], newVertices[v[2]], newUVs[uv[2]]);
        } else {
            std::fprintf(file, "f %d %d %d\n", newVertices[v[0]], newVertices[v[1]],
                         newVertices[v[2]]);
        }
    }
}

}  // namespace korvalite::core::test
