// SPDX-License-Identifier: MIT
//
// The two metrics that drivers are instantiated with. All differences between the plain and the
// colour version of a routine are defined here.
#pragma once

#include "decimation/edge_cost.h"
#include "decimation/triangle_quadrics.h"
#include "decimation/vertex_quadrics.h"
#include "decimation/vsplit.h"
#include "mesh/progressive_mesh.h"

#include <algorithm>
#include <array>
#include <cstddef>
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
    static bool mayCostBeNegative(const ProgressiveMesh& pm, std::int32_t a, std::int32_t b) {
        return korvalite::mayCostBeNegative(pm, a, b);
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
    static bool mayCostBeNegative(const ProgressiveMesh& /*pm*/, std::int32_t /*a*/,
                                  std::int32_t /*b*/) {
        return false;
    }
    /// Sets red, green and blue of the kept vertex and saves the old colour in the split.
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

/// Caches the quadrics of the latest kept vertices. Around a hub, hundreds of collapses in a row
/// are refused, and each needs the quadric of the same vertex.
template <typename Metric>
class KeptQuadrics {
public:
    using Quadric = typename Metric::Quadric;

    /// The quadric of a vertex, from its triangles at the time of the first call.
    const Quadric& of(const ProgressiveMesh& pm, std::int32_t vertex) {
        const auto known = std::find_if(entries_.begin(), entries_.end(),
                                        [=](const Entry& entry) { return entry.vertex == vertex; });
        if (known != entries_.end()) return known->quadric;
        Entry& entry = entries_[oldest_];
        oldest_ = (oldest_ + 1) % entries_.size();
        entry = {vertex, {}};
        Metric::addVertexQuadric(pm, entry.quadric, vertex);
        return entry.quadric;
    }

    /// Empties the cache. REQUIRES: called whenever the triangles around a vertex, or merely the
    /// order of their list, may have changed.
    void forget() {
        for (Entry& entry : entries_)
            entry.vertex = kNone;
    }

private:
    struct Entry {
        std::int32_t vertex = kNone;
        Quadric quadric;
    };
    std::array<Entry, 2> entries_;  // for a collapse and its mirror image
    std::size_t oldest_ = 0;
};

/// Evaluates the collapse of `removed` onto `kept` from the current triangles around both. If no
/// position or colour is found, the kept vertex keeps its own.
template <typename Metric>
EdgeEvaluation evaluateCollapse(const ProgressiveMesh& pm, std::int32_t removed, std::int32_t kept,
                                KeptQuadrics<Metric>& keptQuadrics) {
    typename Metric::Quadric removedQuadric;
    Metric::addVertexQuadric(pm, removedQuadric, removed);

    EdgeEvaluation result;
    const auto index = static_cast<std::size_t>(kept);
    result.position = pm.mesh.vertices[index].position();
    if constexpr (Metric::kHasColor) {
        const std::uint32_t color = pm.mesh.vertexColors[index];
        result.color = {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8U),
                        static_cast<std::uint8_t>(color >> 16U)};
    }
    Metric::evaluateEdge(pm, result, removed, kept, removedQuadric + keptQuadrics.of(pm, kept));
    return result;
}

}  // namespace korvalite
