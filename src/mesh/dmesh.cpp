// SPDX-License-Identifier: MIT
#include "mesh/dmesh.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace korvalite::core {

namespace {

void extendAxis(float& min, float& max, float value) {
    if (min > value) {
        min = value;
    } else if (value > max) {
        max = value;
    }
}

}  // namespace

float BoundingBox::diagonal() const {
    const float dx = max.x - min.x;
    const float dy = max.y - min.y;
    const float dz = max.z - min.z;
    // COMPAT: y comes first; the scale of colours depends on every bit.
    return std::sqrt(dy * dy + dx * dx + dz * dz);
}

void extendBoundingBox(BoundingBox& box, const FloatVec3& point) {
    if (box.isEmpty()) {
        box.min = box.max = point;
        return;
    }
    extendAxis(box.min.x, box.max.x, point.x);
    extendAxis(box.min.y, box.max.y, point.y);
    extendAxis(box.min.z, box.max.z, point.z);
}

void activateAll(DMesh& mesh) {
    mesh.vertexActive.Free();
    mesh.vertexActive.Resize(mesh.vertexCount(), true);
    mesh.numActiveVertices = static_cast<std::uint32_t>(mesh.vertexCount());
    mesh.triangleActive.Free();
    mesh.triangleActive.Resize(mesh.triangleCount(), true);
    mesh.numActiveTriangles = static_cast<std::uint32_t>(mesh.triangleCount());
}

void dropUniformMask(DMesh& mesh) {
    const IndexedArray<std::uint8_t>& mask = mesh.maskValues;
    const auto differsFromFirst = [&](std::uint8_t value) { return value != mask.front(); };
    // COMPAT: even a mask of all zeros is dropped, which would forbid all; outputs depend on it.
    if (std::none_of(mask.begin(), mask.end(), differsFromFirst))
        IndexedArray<std::uint8_t>().swap(mesh.maskValues);
}

void recomputeBoundingBox(DMesh& mesh) {
    mesh.boundingBox = BoundingBox{};
    for (const VertexRecord& vertex : mesh.vertices) {
        extendBoundingBox(mesh.boundingBox, vertex.position());
    }
}

bool canBeDecimated(const DMesh& mesh) {
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    if (mesh.vertices.size() > kMost || mesh.triangles.size() > kMost) return false;
    const std::size_t vertexCount = mesh.vertices.size();
    return std::all_of(mesh.triangles.begin(), mesh.triangles.end(),
                       [vertexCount](std::uint32_t index) { return index < vertexCount; });
}

}  // namespace korvalite::core
