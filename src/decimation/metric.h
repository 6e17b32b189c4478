// SPDX-License-Identifier: MIT
//
// The two metrics a driver is instantiated with. Whatever differs between the plain and the colour
// twin of a routine is named here.
#pragma once

#include "decimation/edge_cost.h"
#include "decimation/triangle_quadrics.h"
#include "decimation/vertex_quadrics.h"
#include "decimation/vsplit.h"
#include "mesh/progressive_mesh.h"

#include <cstdint>

namespace korvalite {

struct PlainMetric {
    using Quadric = Quadric3D;
    static constexpr bool kHasColor = false;
    static constexpr const char* kId = "PM_QUADRIC3D_ID";

    static Quadric triangleQuadric(const ProgressiveMesh& pm, std::int32_t triangle) {
        return ComputeTriangleQuadric(pm, triangle);
    }
    static void addVertexQuadric(const ProgressiveMesh& pm, Quadric& inOut, std::int32_t vertex) {
        ComputeVertexQuadricFromTriangles(pm, inOut, vertex);
    }
    static void evaluateEdge(const ProgressiveMesh& pm, EdgeEvaluation& result, std::int32_t a,
                             std::int32_t b, const Quadric& quadric) {
        EvaluateEdgeCost(pm, result, a, b, quadric);
    }
    static void carryColor(DMesh& /*mesh*/, VSplit& /*split*/, std::int32_t /*kept*/,
                           const EdgeEvaluation& /*evaluation*/) {}
};

struct ColorMetric {
    using Quadric = ColorQuadric;
    static constexpr bool kHasColor = true;
    static constexpr const char* kId = "PM_COLOR_QUADRIC_ID";

    static Quadric triangleQuadric(const ProgressiveMesh& pm, std::int32_t triangle) {
        return ComputeTriangleColorQuadric(pm, triangle);
    }
    static void addVertexQuadric(const ProgressiveMesh& pm, Quadric& inOut, std::int32_t vertex) {
        ComputeVertexColorQuadric(pm, inOut, vertex);
    }
    static void evaluateEdge(const ProgressiveMesh& pm, EdgeEvaluation& result, std::int32_t a,
                             std::int32_t b, const Quadric& quadric) {
        EvaluateEdgeCostColor(pm, result, a, b, quadric);
    }
    /// Red, green and blue of the kept vertex change; the split takes what was there.
    static void carryColor(DMesh& mesh, VSplit& split, std::int32_t kept,
                           const EdgeEvaluation& evaluation) {
        std::uint32_t& color = mesh.vertexColors[static_cast<std::size_t>(kept)];
        split.savedColor = color;
        const std::uint32_t fourthByte = color & 0xFF000000U;
        storeRelaxed(color, fourthByte | (static_cast<std::uint32_t>(evaluation.color[2]) << 16U) |
                                (static_cast<std::uint32_t>(evaluation.color[1]) << 8U) |
                                evaluation.color[0]);
    }
};

/// The evaluation of collapsing `removed` onto `kept`, from the triangles around both as they
/// stand. Where no position or colour is found, the kept vertex keeps its own.
template <typename Metric>
EdgeEvaluation evaluateCollapse(const ProgressiveMesh& pm, std::int32_t removed,
                                std::int32_t kept) {
    typename Metric::Quadric removedQuadric;
    typename Metric::Quadric keptQuadric;
    Metric::addVertexQuadric(pm, removedQuadric, removed);
    Metric::addVertexQuadric(pm, keptQuadric, kept);

    EdgeEvaluation result;
    const auto index = static_cast<std::size_t>(kept);
    result.position = pm.mesh.vertices[index].position();
    if constexpr (Metric::kHasColor) {
        const std::uint32_t color = pm.mesh.vertexColors[index];
        result.color = {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8U),
                        static_cast<std::uint8_t>(color >> 16U)};
    }
    Metric::evaluateEdge(pm, result, removed, kept, removedQuadric + keptQuadric);
    return result;
}

}  // namespace korvalite
