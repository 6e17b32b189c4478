// SPDX-License-Identifier: MIT
//
// The routines that a decimation spends its time in, each on a mesh that fits the cache, to measure
// their arithmetic.
#include "bumpy_torus.h"
#include "geometry/linear_algebra.h"
#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "metric/metric.h"
#include "progressive/progressive_mesh.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace korvalite::core::bench {

namespace {

constexpr std::int32_t kTriangles = 4000;

struct Edge {
    std::int32_t a;
    std::int32_t b;
};

/// A mesh ready for evaluation, and its edges with the sums of the quadrics of their ends.
template <typename Metric>
struct Prepared {
    ProgressiveMesh pm;
    std::vector<Edge> edges;
    std::vector<typename Metric::Quadric> quadrics;

    Prepared() {
        DMesh& mesh = pm.mesh;
        makeBumpyTorus(mesh, kTriangles);
        BuildVertexCorners(mesh);
        ComputeBorderVertices(mesh);
        if constexpr (Metric::kHasColor) paint();
        for (std::int32_t corner = 0; corner < mesh.cornerCount(); ++corner) {
            const Edge edge{vertexAt(mesh, corner), vertexAt(mesh, nextCorner(corner))};
            if (edge.a > edge.b) continue;
            edges.push_back(edge);
            typename Metric::Quadric& quadric = quadrics.emplace_back();
            Metric::addVertexQuadric(pm.mesh, pm, quadric, edge.a);
            Metric::addVertexQuadric(pm.mesh, pm, quadric, edge.b);
        }
    }

    void paint() {
        DMesh& mesh = pm.mesh;
        for (const VertexRecord& vertex : mesh.vertices) {
            const double wave = 127.0 * (1 + std::sin(9.0 * static_cast<double>(vertex.x)));
            const auto level = static_cast<std::uint32_t>(wave);
            mesh.vertexColors.push_back(level | (255 - level) << 8U | 40U << 16U);
        }
        pm.m_useVertexColors_internal = true;
        pm.colorScale = static_cast<double>(mesh.boundingBox.diagonal()) / 20000.0;
    }
};

template <typename Metric>
void evaluateAllEdges(benchmark::State& state, Prepared<Metric>& prepared) {
    EdgeEvaluation evaluation;
    for ([[maybe_unused]] auto _ : state) {
        for (std::size_t i = 0; i < prepared.edges.size(); ++i) {
            Metric::evaluateEdge(prepared.pm.mesh, prepared.pm, evaluation, prepared.edges[i].a,
                                 prepared.edges[i].b, prepared.quadrics[i]);
            benchmark::DoNotOptimize(evaluation);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(prepared.edges.size()));
}

template <typename Metric>
void TriangleQuadric(benchmark::State& state) {
    const Prepared<Metric> prepared;
    const std::int32_t count = prepared.pm.mesh.triangleCount();
    for ([[maybe_unused]] auto _ : state) {
        for (std::int32_t triangle = 0; triangle < count; ++triangle) {
            benchmark::DoNotOptimize(
                Metric::triangleQuadric(prepared.pm.mesh, prepared.pm, triangle));
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(TriangleQuadric<PlainMetric>);
BENCHMARK(TriangleQuadric<ColorMetric>);

void EdgeCostSolve(benchmark::State& state) {
    Prepared<PlainMetric> prepared;
    prepared.pm.useDegeneracySearch = false;
    evaluateAllEdges(state, prepared);
}
BENCHMARK(EdgeCostSolve);

/// What a job does off borders and seams: searches only if the quadric is nearly singular.
void EdgeCostSolveThenSearch(benchmark::State& state) {
    Prepared<PlainMetric> prepared;
    evaluateAllEdges(state, prepared);
}
BENCHMARK(EdgeCostSolveThenSearch);

void EdgeCostSearch(benchmark::State& state) {
    Prepared<PlainMetric> prepared;
    prepared.pm.mesh.borderVertices.Resize(0, false);
    prepared.pm.mesh.borderVertices.Resize(prepared.pm.mesh.vertexCount(), true);
    evaluateAllEdges(state, prepared);
}
BENCHMARK(EdgeCostSearch);

/// Marks every other vertex as border and evaluates the edges with one marked end.
void EdgeCostKeepEndpoint(benchmark::State& state) {
    Prepared<PlainMetric> prepared;
    BitArray& border = prepared.pm.mesh.borderVertices;
    for (std::int32_t vertex = 0; vertex < border.count(); vertex += 2)
        border.Set(vertex);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < prepared.edges.size(); ++i) {
        const Edge edge = prepared.edges[i];
        if (border.Test(edge.a) == border.Test(edge.b)) continue;
        prepared.edges[kept] = edge;
        prepared.quadrics[kept++] = prepared.quadrics[i];
    }
    prepared.edges.resize(kept);
    evaluateAllEdges(state, prepared);
}
BENCHMARK(EdgeCostKeepEndpoint);

void EdgeCostColor(benchmark::State& state) {
    Prepared<ColorMetric> prepared;
    evaluateAllEdges(state, prepared);
}
BENCHMARK(EdgeCostColor);

void Invert3(benchmark::State& state) {
    const Prepared<PlainMetric> prepared;
    std::vector<std::array<double, 9>> matrices;
    for (const Quadric3D& quadric : prepared.quadrics) {
        const auto& q = quadric.q;
        matrices.push_back({q[0], q[1], q[2], q[1], q[3], q[4], q[2], q[4], q[5]});
    }
    std::array<double, 9> inverse{};
    for ([[maybe_unused]] auto _ : state) {
        for (const auto& matrix : matrices) {
            benchmark::DoNotOptimize(invert3(inverse.data(), matrix.data()));
            benchmark::DoNotOptimize(inverse);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(matrices.size()));
}
BENCHMARK(Invert3);

/// Vertices with costs over nine decades, in random order.
void fillWithCosts(DMesh& mesh, std::int32_t count) {
    mesh.vertices.resize(static_cast<std::size_t>(count));
    std::uint32_t bits = 1;
    for (VertexRecord& vertex : mesh.vertices) {
        bits = bits * 1664525U + 1013904223U;
        vertex.cost = static_cast<float>(std::pow(10.0, -9.0 + 9.0 * bits / 4294967296.0));
    }
    mesh.boundingBox.min = {0, 0, 0};
    mesh.boundingBox.max = {4, 4, 4};
}

/// One item is one vertex that is inserted and later removed as the cheapest.
void CostQueueInsertPop(benchmark::State& state) {
    DMesh mesh;
    const auto count = static_cast<std::int32_t>(state.range(0));
    fillWithCosts(mesh, count);
    CostQueue queue(mesh);
    for ([[maybe_unused]] auto _ : state) {
        queue.Release();
        queue.Init(count);
        for (std::int32_t vertex = 0; vertex < count; ++vertex)
            queue.Insert(vertex);
        for (std::int32_t top = queue.Top(); top != kNone; top = queue.Top())
            queue.Remove(top);
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(CostQueueInsertPop)->Arg(1 << 12)->Arg(1 << 16)->Arg(1 << 20);

/// What a cost update does: vertices leave the queue, get a new cost and return.
void CostQueueUpdate(benchmark::State& state) {
    DMesh mesh;
    const auto count = static_cast<std::int32_t>(state.range(0));
    fillWithCosts(mesh, count);
    CostQueue queue(mesh);
    queue.Init(count);
    for (std::int32_t vertex = 0; vertex < count; ++vertex)
        queue.Insert(vertex);
    std::uint32_t bits = 1;
    float cost = 1e-5F;
    for ([[maybe_unused]] auto _ : state) {
        bits = bits * 1664525U + 1013904223U;
        const auto vertex = static_cast<std::int32_t>((bits >> 8U) % static_cast<unsigned>(count));
        queue.Remove(vertex);
        std::swap(mesh.vertices[static_cast<std::size_t>(vertex)].cost, cost);
        queue.Insert(vertex);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CostQueueUpdate)->Arg(1 << 12)->Arg(1 << 20);

}  // namespace

}  // namespace korvalite::core::bench
