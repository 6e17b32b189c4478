// SPDX-License-Identifier: MIT
#include "korva/files/scene.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace korva {

namespace {

using korvalite::Mesh;

template <typename Value>
void append(std::vector<Value>& to, const std::vector<Value>& from) {
    to.insert(to.end(), from.begin(), from.end());
}

void appendShifted(std::vector<std::uint32_t>& to, const std::vector<std::uint32_t>& from,
                   std::size_t shift) {
    for (const std::uint32_t index : from)
        to.push_back(static_cast<std::uint32_t>(index + shift));
}

/// Gives a mesh what another one has.
void complete(Mesh& mesh, bool hasColors, bool hasMask, bool hasUVs) {
    if (hasColors) mesh.colors.resize(4 * mesh.vertexCount(), 255);
    if (hasMask) mesh.mask.resize(mesh.vertexCount(), 255);
    if (!hasUVs || !mesh.triangleUVs.empty()) return;
    mesh.uvs = {0, 0};
    mesh.triangleUVs.resize(mesh.triangles.size(), 0);
}

void appendMesh(Mesh& to, Mesh from) {
    const std::size_t vertices = to.vertexCount();
    const std::size_t uvPoints = to.uvs.size() / 2;
    append(to.positions, from.positions);
    append(to.colors, from.colors);
    append(to.mask, from.mask);
    append(to.uvs, from.uvs);
    appendShifted(to.triangles, from.triangles, vertices);
    appendShifted(to.triangleUVs, from.triangleUVs, uvPoints);
}

template <typename Count>
std::size_t sumOver(const std::vector<NamedMesh>& meshes, const Count& count) {
    std::size_t sum = 0;
    for (const NamedMesh& named : meshes)
        sum += count(named.mesh);
    return sum;
}

}  // namespace

std::size_t Scene::vertexCount() const {
    return sumOver(meshes, [](const Mesh& mesh) { return mesh.vertexCount(); });
}

std::size_t Scene::triangleCount() const {
    return sumOver(meshes, [](const Mesh& mesh) { return mesh.triangleCount(); });
}

Mesh joinMeshes(std::vector<NamedMesh>& meshes) {
    if (meshes.size() == 1) return std::exchange(meshes.front().mesh, {});
    const auto anyHas = [&](auto member) {
        return std::ranges::any_of(
            meshes, [&](const NamedMesh& named) { return !(named.mesh.*member).empty(); });
    };
    const bool hasColors = anyHas(&Mesh::colors);
    const bool hasMask = anyHas(&Mesh::mask);
    const bool hasUVs = anyHas(&Mesh::triangleUVs);
    Mesh joined;
    for (NamedMesh& named : meshes) {
        complete(named.mesh, hasColors, hasMask, hasUVs);
        appendMesh(joined, std::exchange(named.mesh, {}));
    }
    return joined;
}

}  // namespace korva
