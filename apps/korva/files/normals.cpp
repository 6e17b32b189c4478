// SPDX-License-Identifier: MIT
#include "korva/files/normals.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace korva {

namespace {

// In double, no finite floats overflow on the way, and none vanish.
using Vector = std::array<double, 3>;

Vector between(const float* from, const float* to) {
    return {double{to[0]} - from[0], double{to[1]} - from[1], double{to[2]} - from[2]};
}

Vector cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double dot(const Vector& a, const Vector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// Adds the triangle's unit normal, times its angle at the corner, to the corner's vertex.
void addCorner(const float* corner, const float* next, const float* previous, float* sum) {
    const Vector toNext = between(corner, next);
    const Vector toPrevious = between(corner, previous);
    const Vector normal = cross(toNext, toPrevious);
    const double area = std::sqrt(dot(normal, normal));
    if (!(area > 0) || !std::isfinite(area)) return;
    const double angle = std::atan2(area, dot(toNext, toPrevious));
    for (std::size_t axis = 0; axis < 3; ++axis)
        sum[axis] += static_cast<float>(normal[axis] / area * angle);
}

void normalise(float* normal) {
    const double length = std::sqrt(double{normal[0]} * normal[0] + double{normal[1]} * normal[1] +
                                    double{normal[2]} * normal[2]);
    if (length > 0) {
        for (std::size_t axis = 0; axis < 3; ++axis)
            normal[axis] = static_cast<float>(normal[axis] / length);
    } else {
        normal[2] = 1;
    }
}

}  // namespace

std::vector<float> vertexNormals(const korvalite::Mesh& mesh) {
    std::vector<float> normals(mesh.positions.size());
    const auto at = [](auto& points, std::uint32_t vertex) {
        return points.data() + 3 * std::size_t{vertex};
    };
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const std::uint32_t vertex = mesh.triangles[i + corner];
            addCorner(at(mesh.positions, vertex),
                      at(mesh.positions, mesh.triangles[i + (corner + 1) % 3]),
                      at(mesh.positions, mesh.triangles[i + (corner + 2) % 3]),
                      at(normals, vertex));
        }
    }
    for (std::size_t i = 0; i < normals.size(); i += 3)
        normalise(&normals[i]);
    return normals;
}

}  // namespace korva
