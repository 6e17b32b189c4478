// SPDX-License-Identifier: MIT
#include "ranking/melax_costs.h"

#include "ranking/initial_edges.h"

#include <cmath>
#include <limits>

namespace korvalite::core {

namespace {

// COMPAT: computes the length in floats and divides in doubles; costs depend on it.
FloatVec3 unitNormal(const DMesh& mesh, std::int32_t triangle) {
    const auto corner = [&](std::int32_t k) {
        return mesh.vertices[vertexAt(mesh, 3 * triangle + k)].position();
    };
    const FloatVec3 normal = cross(corner(1) - corner(0), corner(2) - corner(0));
    const double length = std::sqrt(dot(normal, normal));
    if (length == 0) return normal;
    const DoubleVec3 exact = toDouble(normal);
    return toFloat(DoubleVec3{exact.x / length, exact.y / length, exact.z / length});
}

// COMPAT: summed in the order y, x, z; costs depend on it.
float turn(const FloatVec3& a, const FloatVec3& b) {
    return 1.0F - (a.y * b.y + a.x * b.x + a.z * b.z);
}

float curvatureAt(const DMesh& mesh, const IndexedArray<FloatVec3>& normals, std::int32_t u,
                  const IndexList& sides) {
    float curvature = 0;
    forEachCorner(mesh, u, [&](std::int32_t corner) {
        const FloatVec3& normal = normals[triangleOf(corner)];
        float least = std::numeric_limits<float>::max();
        for (const std::int32_t side : sides) {
            const float toSide = turn(normal, normals[side]);
            if (least > toSide) least = toSide;
        }
        if (least > curvature) curvature = least;
    });
    return curvature;
}

}  // namespace

IndexedArray<FloatVec3> computeTriangleNormals(const DMesh& mesh) {
    IndexedArray<FloatVec3> normals(mesh.triangles.size() / 3);
    for (std::int32_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
        normals[triangle] = unitNormal(mesh, triangle);
    }
    return normals;
}

float EdgeCollapseCostMelax(const DMesh& mesh, const IndexedArray<FloatVec3>& normals,
                            std::int32_t u, std::int32_t x, IndexList& sides) {
    const FloatVec3 edge = mesh.vertices[u].position() - mesh.vertices[x].position();
    sides.clear();
    forEachCorner(mesh, u, [&](std::int32_t corner) {
        if (vertexAt(mesh, nextCorner(corner)) == x || vertexAt(mesh, previousCorner(corner)) == x)
            sides.push_back(triangleOf(corner));
    });
    return curvatureAt(mesh, normals, u, sides) * std::sqrt(dot(edge, edge));
}

void ComputeVertexCostMelax(WorkingMesh& work, std::int32_t vertex, MelaxState& state) {
    VertexRecord& record = work.mesh.vertices[vertex];
    forgetCost(record);
    GetVertexNeighbours(work.mesh, vertex, state.ring);
    for (const std::int32_t x : state.ring) {
        if (x == vertex) continue;
        const float cost =
            EdgeCollapseCostMelax(work.mesh, state.triangleNormals, vertex, x, state.sides);
        takeIfLower(record.cost, record.partner, cost, x);
    }
}

void InitVerticesCostMelax(WorkingMesh& work, MelaxState& state) {
    state.triangleNormals = computeTriangleNormals(work.mesh);
    for (std::int32_t vertex = 0; vertex < work.mesh.vertexCount(); ++vertex) {
        ComputeVertexCostMelax(work, vertex, state);
    }
    fillQueue(work);
}

void UpdateRingMelax(WorkingMesh& work, std::int32_t kept, const IndexList& ringCorners,
                     const IndexList& neighbours, MelaxState& state) {
    // COMPAT: with ProtectTopology off both lists are empty, and the ring keeps its old costs.
    for (const std::int32_t corner : ringCorners) {
        state.triangleNormals[triangleOf(corner)] = unitNormal(work.mesh, triangleOf(corner));
    }
    for (const std::int32_t vertex : neighbours)
        work.costQueue.Remove(vertex);
    work.costQueue.Remove(kept);
    for (const std::int32_t vertex : neighbours)
        ComputeVertexCostMelax(work, vertex, state);
    ComputeVertexCostMelax(work, kept, state);
    for (const std::int32_t vertex : neighbours)
        work.costQueue.Insert(vertex);
    work.costQueue.Insert(kept);
}

}  // namespace korvalite::core
