// SPDX-License-Identifier: MIT
#include "mesh/dmesh.h"

#include <cmath>

namespace korvalite {

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

void recomputeBoundingBox(DMesh& mesh) {
    mesh.boundingBox = BoundingBox{};
    for (const VertexRecord& vertex : mesh.vertices) {
        extendBoundingBox(mesh.boundingBox, vertex.position());
    }
}

}  // namespace korvalite
