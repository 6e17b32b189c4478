// SPDX-License-Identifier: MIT
//
// The two metrics that drivers are instantiated with. All differences between the plain and the
// colour version of a routine are defined here.
#pragma once

#include "mesh/dmesh.h"
#include "metric/edge_cost.h"
#include "metric/lane_forms.h"
#include "metric/mesh_quadrics.h"
#include "metric/metric_rules.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>

namespace korvalite::core {

struct PlainMetric {
    using Quadric = Quadric3D;
    using LaneForm = lanes::LaneQuadric;
    static constexpr bool kHasColor = false;
    static constexpr const char* kId = "PM_QUADRIC3D_ID";

    static Quadric triangleQuadric(const DMesh& mesh, const MetricRules& rules,
                                   std::int32_t triangle) {
        return ComputeTriangleQuadric(mesh, rules, triangle);
    }
    static void addVertexQuadric(const DMesh& mesh, const MetricRules& rules, Quadric& inOut,
                                 std::int32_t vertex) {
        ComputeVertexQuadricFromTriangles(mesh, rules, inOut, vertex);
    }
    static void evaluateEdge(const DMesh& mesh, const MetricRules& rules, EdgeEvaluation& result,
                             std::int32_t a, std::int32_t b, const Quadric& quadric) {
        EvaluateEdgeCost(mesh, rules, result, a, b, quadric);
    }
    static void evaluate(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second,
                         const Quadric& quadric, EdgeEvaluation& result) {
        core::evaluateEdge(rules, first, second, quadric, result);
    }
    static bool mayCostBeNegative(const MetricRules& rules, const EdgeEnd& first,
                                  const EdgeEnd& second) {
        return core::mayCostBeNegative(rules, first, second);
    }
    static void sumTriangles(const lanes::Kernels& kernels, const DMesh& mesh,
                             const MetricRules& rules, const lanes::TriangleList& triangles,
                             LaneForm* sums) {
        kernels.sumTriangleQuadrics(positionsOf(mesh), triangles, rules.UseAreaWeighting, sums);
    }
    static bool evaluateEdges(const lanes::Kernels& kernels, const MetricRules& rules,
                              std::span<const EdgeEnd> ends, const LaneForm* sums,
                              const lanes::EdgeList& edges, float* costs) {
        return kernels.evaluateEdges(positionsOf(ends), sums, edges, edgeSettings(rules), costs);
    }
};

struct ColorMetric {
    using Quadric = ColorQuadric;
    using LaneForm = lanes::LaneColorQuadric;
    static constexpr bool kHasColor = true;
    static constexpr const char* kId = "PM_COLOR_QUADRIC_ID";

    static Quadric triangleQuadric(const DMesh& mesh, const MetricRules& rules,
                                   std::int32_t triangle) {
        return ComputeTriangleColorQuadric(mesh, rules, triangle);
    }
    static void addVertexQuadric(const DMesh& mesh, const MetricRules& rules, Quadric& inOut,
                                 std::int32_t vertex) {
        ComputeVertexColorQuadric(mesh, rules, inOut, vertex);
    }
    static void evaluateEdge(const DMesh& mesh, const MetricRules& rules, EdgeEvaluation& result,
                             std::int32_t a, std::int32_t b, const Quadric& quadric) {
        EvaluateEdgeCostColor(mesh, rules, result, a, b, quadric);
    }
    static void evaluate(const MetricRules& rules, const EdgeEnd& first, const EdgeEnd& second,
                         const Quadric& quadric, EdgeEvaluation& result) {
        evaluateColorEdge(rules, first, second, quadric, result);
    }
    static bool mayCostBeNegative(const MetricRules& /*rules*/, const EdgeEnd& /*first*/,
                                  const EdgeEnd& /*second*/) {
        return false;
    }
    static void sumTriangles(const lanes::Kernels& kernels, const DMesh& mesh,
                             const MetricRules& rules, const lanes::TriangleList& triangles,
                             LaneForm* sums) {
        kernels.sumTriangleColorQuadrics(positionsOf(mesh), colorsOf(mesh, rules), triangles, sums);
    }
    static bool evaluateEdges(const lanes::Kernels& kernels, const MetricRules& /*rules*/,
                              std::span<const EdgeEnd> /*ends*/, const LaneForm* sums,
                              const lanes::EdgeList& edges, float* costs) {
        kernels.evaluateColorEdges(sums, edges, kNotCollapsible, costs);
        return false;
    }
};

/// What a metric must offer.
template <typename Metric>
concept CollapseMetric = requires(const DMesh& mesh, const MetricRules& rules, std::int32_t index,
                                  const EdgeEnd& end, typename Metric::Quadric& sum,
                                  const typename Metric::Quadric& quadric, EdgeEvaluation& result,
                                  const lanes::Kernels& kernels, typename Metric::LaneForm* sums,
                                  const lanes::TriangleList& triangles,
                                  std::span<const EdgeEnd> ends, const lanes::EdgeList& edges,
                                  float* costs) {
    { Metric::kHasColor } -> std::convertible_to<bool>;
    { Metric::kId } -> std::convertible_to<const char*>;
    { Metric::triangleQuadric(mesh, rules, index) } -> std::same_as<typename Metric::Quadric>;
    Metric::addVertexQuadric(mesh, rules, sum, index);  // of the current triangles around it
    Metric::evaluate(rules, end, end, quadric, result);
    { Metric::mayCostBeNegative(rules, end, end) } -> std::same_as<bool>;
    Metric::evaluateEdge(mesh, rules, result, index, index, quadric);  // gathers both ends first
    // In lanes: triangleQuadric of many, and evaluate, except that borders, seams and masks are
    // ignored. Returns whether a cost is NaN and must be evaluated again.
    Metric::sumTriangles(kernels, mesh, rules, triangles, sums);
    { Metric::evaluateEdges(kernels, rules, ends, sums, edges, costs) } -> std::same_as<bool>;
};
static_assert(CollapseMetric<PlainMetric> && CollapseMetric<ColorMetric>);

/// Caches the quadrics of the latest kept vertices. Around a hub, hundreds of collapses in a row
/// are refused, and each needs the quadric of the same vertex.
template <CollapseMetric Metric>
class KeptQuadrics {
public:
    using Quadric = typename Metric::Quadric;

    /// The quadric of a vertex, from its triangles at the time of the first call.
    const Quadric& of(const DMesh& mesh, const MetricRules& rules, std::int32_t vertex) {
        const auto known = std::find_if(entries_.begin(), entries_.end(),
                                        [=](const Entry& entry) { return entry.vertex == vertex; });
        if (known != entries_.end()) return known->quadric;
        Entry& entry = entries_[oldest_];
        oldest_ = (oldest_ + 1) % entries_.size();
        entry = {vertex, {}};
        Metric::addVertexQuadric(mesh, rules, entry.quadric, vertex);
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
template <CollapseMetric Metric>
EdgeEvaluation evaluateCollapse(const DMesh& mesh, const MetricRules& rules, std::int32_t removed,
                                std::int32_t kept, KeptQuadrics<Metric>& keptQuadrics) {
    typename Metric::Quadric removedQuadric;
    Metric::addVertexQuadric(mesh, rules, removedQuadric, removed);

    EdgeEvaluation result;
    const auto index = static_cast<std::size_t>(kept);
    result.position = mesh.vertices[index].position();
    if constexpr (Metric::kHasColor) {
        const std::uint32_t color = mesh.vertexColors[index];
        result.color = {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8U),
                        static_cast<std::uint8_t>(color >> 16U)};
    }
    Metric::evaluateEdge(mesh, rules, result, removed, kept,
                         removedQuadric + keptQuadrics.of(mesh, rules, kept));
    return result;
}

}  // namespace korvalite::core
