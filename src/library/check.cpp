// SPDX-License-Identifier: MIT
//
// Takes 36 bytes for each triangle, 12 more with UVs, and 8 for each vertex plus a few bits; and
// before that, 16 for each vertex. Nothing is allocated for single vertices or triangles.
#include "library/check_parts.h"
#include "library/memory_estimate.h"
#include "library/mesh_view.h"

#include <array>
#include <cmath>
#include <tuple>

namespace korvalite {

namespace {

void checkPositions(const MeshView& mesh, MeshCheck& check) {
    struct Point {
        std::array<float, 3> position;
        std::uint32_t vertex;
    };
    std::vector<Point> points;
    points.reserve(mesh.vertexCount());
    for (std::size_t i = 0; i < mesh.vertexCount(); ++i) {
        const auto vertex = static_cast<std::uint32_t>(i);
        const float x = mesh.positions[3 * i];
        const float y = mesh.positions[3 * i + 1];
        const float z = mesh.positions[3 * i + 2];
        if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z))
            addFault(check.nonFiniteVertices, check.places.nonFiniteVertices, vertex);
        // NaN equals nothing and would break the order.
        if (!std::isnan(x) && !std::isnan(y) && !std::isnan(z))
            points.push_back({{x, y, z}, vertex});
    }
    std::sort(points.begin(), points.end(), [](const Point& a, const Point& b) {
        return std::tie(a.position, a.vertex) < std::tie(b.position, b.vertex);
    });
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (points[i].position == points[i - 1].position)
            addFault(check.repeatedPositions, check.places.repeatedPositions, points[i].vertex);
    }
}

MeshSize sizeOf(const MeshView& mesh, std::uint64_t triangles) {
    return {.vertices = mesh.vertexCount(),
            .triangles = triangles,
            .uvPoints = mesh.uvs.size() / 2,
            .hasColors = !mesh.colors.empty(),
            .hasMask = !mesh.mask.empty(),
            .hasUVs = !mesh.faceUVs.empty()};
}

}  // namespace

MeshCheck check(const MeshView& mesh) {
    requireFittingSizes(mesh);
    MeshCheck result;
    result.vertices = mesh.vertexCount();
    result.triangles = countTriangles(mesh);
    checkPositions(mesh, result);
    const CheckedTriangles triangles = gatherTriangles(mesh, result);
    checkDuplicates(triangles, mesh.vertexCount(), result);
    checkComponents(triangles, mesh.vertexCount(), result);
    checkEdges(mesh, triangles, result);
    result.memoryBytes = estimateSimplifyBytes(sizeOf(mesh, result.triangles));
    return result;
}

}  // namespace korvalite
