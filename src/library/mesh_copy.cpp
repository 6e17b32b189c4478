// SPDX-License-Identifier: MIT
#include "library/mesh_copy.h"

#include "formats/active_items.h"
#include "library/mesh_view.h"

#include <vector>

namespace korvalite {

namespace {

void copyVertices(const MeshView& view, core::DMesh& mesh) {
    core::reserveLarge(mesh.vertices, view.vertexCount());
    mesh.vertices.resize(view.vertexCount());
    for (std::size_t i = 0; i < view.vertexCount(); ++i) {
        requireFinite(view, i);
        const float x = view.positions[3 * i];
        const float y = view.positions[3 * i + 1];
        const float z = view.positions[3 * i + 2];
        mesh.vertices[i] = {.x = x, .y = y, .z = z};
    }
}

void copyTriangles(const MeshView& view, std::size_t triangles, core::DMesh& mesh) {
    core::reserveLarge(mesh.triangles, 3 * triangles);
    forEachTriangle(view, [&](std::size_t triangle, const auto& corners) {
        for (const std::size_t corner : corners) {
            const std::uint32_t vertex = view.faces[corner];
            if (vertex >= view.vertexCount())
                refuseIndex(triangle, "vertex", vertex, view.vertexCount());
            mesh.triangles.push_back(vertex);
        }
    });
}

/// One UV record per corner: the driver joins those that are equal.
void copyUVs(const MeshView& view, std::size_t triangles, core::DMesh& mesh) {
    const std::size_t count = view.uvs.size() / 2;
    core::reserveLarge(mesh.coordsUV, 3 * triangles);
    forEachTriangle(view, [&](std::size_t triangle, const auto& corners) {
        for (const std::size_t corner : corners) {
            const std::uint32_t index = view.faceUVs[corner];
            if (index >= count) refuseIndex(triangle, "UV point", index, count);
            mesh.coordsUV.push_back(
                {view.uvs[2 * std::size_t{index}], view.uvs[2 * std::size_t{index} + 1]});
        }
    });
}

void copyColors(const MeshView& view, core::DMesh& mesh) {
    mesh.vertexColors.reserve(view.vertexCount());
    for (std::size_t i = 0; i < view.colors.size(); i += 4) {
        mesh.vertexColors.push_back(
            std::uint32_t{view.colors[i]} | std::uint32_t{view.colors[i + 1]} << 8U |
            std::uint32_t{view.colors[i + 2]} << 16U | std::uint32_t{view.colors[i + 3]} << 24U);
    }
}

/// The new index of each active vertex.
std::vector<std::uint32_t> copyVerticesOut(const core::DMesh& mesh, Mesh& out) {
    std::vector<std::uint32_t> newIndices(core::endOfActiveVertices(mesh), kNoVertex);
    out.positions.reserve(3 * std::size_t{mesh.numActiveVertices});
    std::uint32_t next = 0;
    core::forEachActiveVertex(mesh, [&](std::size_t i) {
        const core::VertexRecord& vertex = mesh.vertices[i];
        out.positions.insert(out.positions.end(), {vertex.x, vertex.y, vertex.z});
        newIndices[i] = next++;
    });
    return newIndices;
}

void copyTrianglesOut(const core::DMesh& mesh, const std::vector<std::uint32_t>& newIndices,
                      Mesh& out) {
    out.triangles.reserve(3 * std::size_t{mesh.numActiveTriangles});
    core::forEachActiveTriangle(mesh, [&](std::size_t corner) {
        for (std::size_t k = 0; k < 3; ++k)
            out.triangles.push_back(newIndices[mesh.triangles[corner + k]]);
    });
}

void copyUVsOut(const core::DMesh& mesh, Mesh& out) {
    std::vector<std::uint32_t> newIndices(mesh.coordsUV.size(), kNoVertex);
    out.triangleUVs.reserve(out.triangles.size());
    std::uint32_t next = 0;
    core::forEachActiveTriangle(mesh, [&](std::size_t corner) {
        for (std::size_t k = 0; k < 3; ++k) {
            const std::uint32_t index = mesh.indicesUV[corner + k];
            if (newIndices[index] == kNoVertex) {
                newIndices[index] = next++;
                const core::UVCoord& uv = mesh.coordsUV[index];
                out.uvs.insert(out.uvs.end(), {uv.u, uv.v});
            }
            out.triangleUVs.push_back(newIndices[index]);
        }
    });
}

void copyColorsOut(const core::DMesh& mesh, Mesh& out) {
    out.colors.reserve(4 * std::size_t{mesh.numActiveVertices});
    core::forEachActiveVertex(mesh, [&](std::size_t i) {
        for (const unsigned shift : {0U, 8U, 16U, 24U})
            out.colors.push_back(static_cast<std::uint8_t>(mesh.vertexColors[i] >> shift));
    });
}

void copyMaskOut(const core::DMesh& mesh, Mesh& out) {
    out.mask.reserve(mesh.numActiveVertices);
    core::forEachActiveVertex(mesh, [&](std::size_t i) { out.mask.push_back(mesh.maskValues[i]); });
}

}  // namespace

void copyIn(const MeshView& view, core::DMesh& mesh) {
    requireFittingSizes(view);
    const std::size_t triangles = countTriangles(view);
    copyVertices(view, mesh);
    copyTriangles(view, triangles, mesh);
    if (!view.faceUVs.empty()) copyUVs(view, triangles, mesh);
    copyColors(view, mesh);
    mesh.maskValues.assign(view.mask.begin(), view.mask.end());
    core::activateAll(mesh);
    core::recomputeBoundingBox(mesh);
}

Mesh copyOut(const core::DMesh& mesh) {
    Mesh out;
    copyTrianglesOut(mesh, copyVerticesOut(mesh, out), out);
    if (!mesh.indicesUV.empty() && mesh.indicesUV.size() == mesh.triangles.size())
        copyUVsOut(mesh, out);
    if (mesh.hasColors()) copyColorsOut(mesh, out);
    if (mesh.hasMask()) copyMaskOut(mesh, out);
    return out;
}

}  // namespace korvalite
