// SPDX-License-Identifier: MIT
#include "library/mesh_view.h"

#include <cmath>
#include <limits>
#include <string>

namespace korvalite {

namespace {

void require(bool holds, const std::string& sentence) {
    if (!holds) throw Error(ErrorCode::BadMesh, sentence);
}

std::string countText(std::size_t count, const char* what) {
    return std::to_string(count) + ' ' + what;
}

}  // namespace

void requireFittingSizes(const MeshView& mesh) {
    require(mesh.positions.size() % 3 == 0, "positions has " +
                                                countText(mesh.positions.size(), "values") +
                                                ", but a vertex takes three: x, y and z.");
    require(mesh.verticesPerFace == 3 || mesh.verticesPerFace == 4,
            "verticesPerFace is " + std::to_string(mesh.verticesPerFace) +
                ", but a face has 3 vertices or 4; split larger faces first.");
    require(mesh.faces.size() % mesh.verticesPerFace == 0,
            "faces has " + countText(mesh.faces.size(), "indices") +
                ", which is not a multiple of verticesPerFace.");
    const std::size_t vertices = mesh.vertexCount();
    require(mesh.colors.empty() || mesh.colors.size() == 4 * vertices,
            "colors has " + countText(mesh.colors.size(), "values for ") +
                countText(vertices, "vertices") + "; it needs four for each, or none at all.");
    require(mesh.mask.empty() || mesh.mask.size() == vertices,
            "mask has " + countText(mesh.mask.size(), "values for ") +
                countText(vertices, "vertices") + "; it needs one for each, or none at all.");
    require(mesh.uvs.size() % 2 == 0, "uvs has " + countText(mesh.uvs.size(), "values") +
                                          ", but a UV point takes two: u and v.");
    require(mesh.faceUVs.empty() || mesh.faceUVs.size() == mesh.faces.size(),
            "faceUVs has " + countText(mesh.faceUVs.size(), "indices for ") +
                countText(mesh.faces.size(), "in faces") + "; it needs one for each, or none.");
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    require(vertices <= kMost && countTriangles(mesh) <= kMost / 3,
            "The mesh has " + countText(vertices, "vertices and ") +
                countText(countTriangles(mesh), "triangles") +
                "; at most 2147483647 vertices and 715827882 triangles are possible.");
}

std::size_t countTriangles(const MeshView& mesh) {
    std::size_t count = 0;
    forEachTriangle(mesh, [&](std::size_t, const auto&) { ++count; });
    return count;
}

void requireFinite(const MeshView& mesh, std::size_t vertex) {
    const auto place = mesh.positions.subspan(3 * vertex, 3);
    if (std::isfinite(place[0]) && std::isfinite(place[1]) && std::isfinite(place[2])) return;
    require(false, "Vertex " + std::to_string(vertex) +
                       " has a coordinate that is not finite; remove it or give it a place.");
}

void refuseIndex(std::size_t triangle, const char* what, std::uint32_t index, std::size_t count) {
    throw Error(ErrorCode::BadMesh, "Triangle " + std::to_string(triangle) + " refers to " + what +
                                        ' ' + std::to_string(index) + ", but there are only " +
                                        std::to_string(count) + '.');
}

}  // namespace korvalite
