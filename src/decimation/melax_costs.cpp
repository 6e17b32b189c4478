// SPDX-License-Identifier: MIT
#include "decimation/melax_costs.h"

#include "decimation/initial_edges.h"

#include <cmath>
#include <limits>

namespace korvalite {

namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

/// Computes the length in floats and divides in doubles.
FloatVec3 unitNormal(const DMesh& mesh, std::int32_t triangle) {
    const auto corner = [&](std::int32_t k) {
        return mesh.vertices[at(vertexAt(mesh, 3 * triangle + k))].position();
    };
    const FloatVec3 normal = cross(corner(1) - corner(0), corner(2) - corner(0));
    const double length = std::sqrt(dot(normal, normal));
    if (length == 0) return normal;
    const DoubleVec3 exact = toDouble(normal);
    return toFloat(DoubleVec3{exact.x / length, exact.y / length, exact.z / length});
}

/// Summed in the order y, x, z.
float turn(const FloatVec3& a, const FloatVec3& b) {
    return 1.0F - (a.y * b.y + a.x * b.x + a.z * b.z);
}

float curvatureAt(const ProgressiveMesh& pm, std::int32_t u, const IndexList& sides) {
    float curvature = 0;
    forEachCorner(pm.mesh, u, [&](std::int32_t corner) {
        const FloatVec3& normal = pm.triangleNormals[at(corner / 3)];
        float least = std::numeric_limits<float>::max();
        for (const std::int32_t side : sides) {
            const float toSide = turn(normal, pm.triangleNormals[at(side)]);
            if (least > toSide) least = toSide;
        }
        if (least > curvature) curvature = least;
    });
    return curvature;
}

}  // namespace

void computeTriangleNormals(ProgressiveMesh& pm) {
    pm.triangleNormals.resize(at(pm.mesh.triangleCount()));
    for (std::int32_t triangle = 0; triangle < pm.mesh.triangleCount(); ++triangle) {
        pm.triangleNormals[at(triangle)] = unitNormal(pm.mesh, triangle);
    }
}

float EdgeCollapseCostMelax(const ProgressiveMesh& pm, std::int32_t u, std::int32_t x,
                            IndexList& sides) {
    const DMesh& mesh = pm.mesh;
    const FloatVec3 edge = mesh.vertices[at(u)].position() - mesh.vertices[at(x)].position();
    sides.clear();
    forEachCorner(mesh, u, [&](std::int32_t corner) {
        if (vertexAt(mesh, nextCorner(corner)) == x || vertexAt(mesh, previousCorner(corner)) == x)
            sides.push_back(corner / 3);
    });
    return curvatureAt(pm, u, sides) * std::sqrt(dot(edge, edge));
}

void ComputeVertexCostMelax(ProgressiveMesh& pm, std::int32_t vertex, MelaxScratch& scratch) {
    VertexRecord& record = pm.mesh.vertices[at(vertex)];
    forgetCost(record);
    GetVertexNeighbours(pm.mesh, vertex, scratch.ring);
    for (const std::int32_t x : scratch.ring) {
        if (x == vertex) continue;
        const float cost = EdgeCollapseCostMelax(pm, vertex, x, scratch.sides);
        if (!(record.cost > cost)) continue;
        record.cost = cost;
        record.partner = x;
    }
}

void InitVerticesCostMelax(ProgressiveMesh& pm, MelaxScratch& scratch) {
    for (std::int32_t vertex = 0; vertex < pm.mesh.vertexCount(); ++vertex) {
        ComputeVertexCostMelax(pm, vertex, scratch);
    }
    fillQueue(pm);
}

void UpdateRingMelax(ProgressiveMesh& pm, std::int32_t kept, const IndexList& ringCorners,
                     const IndexList& neighbours, MelaxScratch& scratch) {
    for (const std::int32_t corner : ringCorners) {
        pm.triangleNormals[at(corner / 3)] = unitNormal(pm.mesh, corner / 3);
    }
    for (const std::int32_t vertex : neighbours)
        pm.costQueue.Remove(vertex);
    pm.costQueue.Remove(kept);
    for (const std::int32_t vertex : neighbours)
        ComputeVertexCostMelax(pm, vertex, scratch);
    ComputeVertexCostMelax(pm, kept, scratch);
    for (const std::int32_t vertex : neighbours)
        pm.costQueue.Insert(vertex);
    pm.costQueue.Insert(kept);
}

}  // namespace korvalite
