// SPDX-License-Identifier: MIT
#include "ranking/high_speed_costs.h"

#include "base/cache.h"
#include "metric/edge_cost.h"
#include "metric/mesh_quadrics.h"
#include "ranking/initial_edges.h"
#include "ranking/vertex_cost.h"

namespace korvalite::core {

namespace {

void storeQuadrics(const WorkingMesh& work, HighSpeedState& state) {
    const DMesh& mesh = work.mesh;
    reserveLarge(state.triangleQuadrics, mesh.triangles.size() / 3);
    state.triangleQuadrics.assign(mesh.triangles.size() / 3, {});
    reserveLarge(state.vertexQuadrics, mesh.vertices.size());
    state.vertexQuadrics.assign(mesh.vertices.size(), {});
    forEachTriangle(mesh, [&](std::int32_t triangle) {
        const Quadric3D quadric = ComputeTriangleQuadric(work.mesh, work, triangle);
        state.triangleQuadrics[triangle] = quadric;
        for (const std::int32_t corner : cornersOf(triangle)) {
            state.vertexQuadrics[vertexAt(mesh, corner)] += quadric;
        }
    });
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        addBorderAndPlane(work.mesh, work, state.vertexQuadrics[vertex], vertex);
    }
}

void evaluateEdge(const WorkingMesh& work, const HighSpeedState& state, EdgeEvaluation& edge,
                  std::int32_t a, std::int32_t b) {
    EvaluateEdgeCost(work.mesh, work, edge, a, b,
                     state.vertexQuadrics[a] + state.vertexQuadrics[b]);
}

void storePosition(HighSpeedState& state, std::int32_t vertex, const EdgeEvaluation& edge) {
    state.bestPositions[vertex] = edge.position;
    state.hasBestPosition.Set(vertex);
}

class NeighbourUpdate {
public:
    NeighbourUpdate(WorkingMesh& work, HighSpeedState& state, std::int32_t kept)
        : work_(work), mesh_(work.mesh), state_(state), kept_(kept), s_(state.scratch) {}

    void run() {
        gatherRing();
        refreshQuadrics();
        forgetRing();
        for (const std::int32_t u : s_.ring)
            rankRingVertex(u);
        queueRing();
        for (const std::int32_t u : s_.ring)
            s_.inRing.Clear(u);
    }

private:
    void gatherRing() {
        GetVertexNeighbours(mesh_, kept_, s_.ring);
        warmVertexCorners(mesh_, s_.ring);
        for (const std::int32_t u : s_.ring) {
            s_.inRing.Set(u);
            prefetch(&state_.vertexQuadrics[u]);
            forEachCorner(mesh_, u, [&](std::int32_t corner) {
                prefetch(&state_.triangleQuadrics[triangleOf(corner)]);
                prefetch(&state_.vertexQuadrics[vertexAt(mesh_, nextCorner(corner))]);
                prefetch(&mesh_.vertices[vertexAt(mesh_, nextCorner(corner))]);
            });
        }
    }

    void refreshQuadrics() {
        forEachCorner(mesh_, kept_, [&](std::int32_t corner) {
            state_.triangleQuadrics[triangleOf(corner)] =
                ComputeTriangleQuadric(work_.mesh, work_, triangleOf(corner));
        });
        // COMPAT: adds to the stored quadrics, which are not rebuilt; costs depend on it.
        for (const std::int32_t u : s_.ring)
            AccumulateVertexQuadric(work_.mesh, work_, state_.triangleQuadrics,
                                    state_.vertexQuadrics[u], u);
        AccumulateVertexQuadric(work_.mesh, work_, state_.triangleQuadrics,
                                state_.vertexQuadrics[kept_], kept_);
    }

    void forgetRing() {
        work_.costQueue.RemoveAll(s_.ring);
        work_.costQueue.Remove(kept_);
        for (const std::int32_t u : s_.ring)
            forgetCost(mesh_.vertices[u]);
        forgetCost(mesh_.vertices[kept_]);
    }

    void queueRing() {
        s_.queued.clear();
        const auto add = [&](std::int32_t vertex) {
            if (!work_.isSymmetrySlave(vertex)) s_.queued.push_back(vertex);
        };
        add(kept_);
        for (const std::int32_t u : s_.ring)
            add(u);
        work_.costQueue.InsertAll(s_.queued);
    }

    /// Ranks a ring vertex against all its neighbours, and the kept vertex against the ring. The
    /// vertices beyond the ring keep their costs.
    void rankRingVertex(std::int32_t u) {
        const bool mayRankU = !work_.isSymmetrySlave(u);
        GetVertexNeighbours(mesh_, u, s_.outerRing);
        for (const std::int32_t x : s_.outerRing) {
            const bool isInRing = s_.inRing.Test(x);
            const bool mayRankX = !work_.isSymmetrySlave(x);
            const bool takenFromX = isInRing && x < u;
            if (x == u || takenFromX || (!mayRankU && !mayRankX)) continue;
            EdgeEvaluation edge;
            evaluateEdge(work_, state_, edge, u, x);
            if (mayRankU) rank(u, x, edge);
            if (mayRankX && (x == kept_ || isInRing)) rank(x, u, edge);
        }
    }

    void rank(std::int32_t vertex, std::int32_t partner, const EdgeEvaluation& edge) {
        VertexRecord& record = mesh_.vertices[vertex];
        if (takeIfLower(record.cost, record.partner, edge.cost, partner))
            storePosition(state_, vertex, edge);
    }

    WorkingMesh& work_;
    DMesh& mesh_;
    HighSpeedState& state_;
    std::int32_t kept_;
    HighSpeedState::Scratch& s_;
};

}  // namespace

void InitVerticesCost(WorkingMesh& work, HighSpeedState& state) {
    state.scratch.inRing.Reset(work.mesh.vertexCount());
    storeQuadrics(work, state);
    for (VertexRecord& vertex : work.mesh.vertices)
        forgetCost(vertex);
    reserveLarge(state.bestPositions, work.mesh.vertices.size());
    state.bestPositions.assign(work.mesh.vertices.size(), {});
    state.hasBestPosition.Reset(work.mesh.vertexCount());
    rankInitialEdges(
        work,
        [&](EdgeEvaluation& edge, std::int32_t a, std::int32_t b) {
            evaluateEdge(work, state, edge, a, b);
        },
        [&](std::int32_t end, const EdgeEvaluation& edge) { storePosition(state, end, edge); });
}

void UpdateNeighbourCosts(WorkingMesh& work, HighSpeedState& state, std::int32_t kept) {
    NeighbourUpdate(work, state, kept).run();
}

void RecomputeVertexCostFromStored(WorkingMesh& work, const HighSpeedState& state,
                                   std::int32_t vertex, IndexList& ring) {
    const auto addQuadric = [&](Quadric3D& inOut, std::int32_t x) {
        AccumulateVertexQuadric(work.mesh, work, state.triangleQuadrics, inOut, x);
    };
    storeRanking(work.mesh.vertices[vertex],
                 rankAgainstRing<PlainMetric>(work, vertex, ring, addQuadric));
}

}  // namespace korvalite::core
