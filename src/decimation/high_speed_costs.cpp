// SPDX-License-Identifier: MIT
#include "decimation/high_speed_costs.h"

#include "decimation/edge_cost.h"
#include "decimation/initial_edges.h"
#include "decimation/triangle_quadrics.h"
#include "decimation/vertex_quadrics.h"
#include "platform/prefetch.h"

namespace korvalite {

namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

void storeQuadrics(ProgressiveMesh& pm) {
    const DMesh& mesh = pm.mesh;
    reserveLarge(pm.triangleQuadrics, at(mesh.triangleCount()));
    pm.triangleQuadrics.assign(at(mesh.triangleCount()), {});
    reserveLarge(pm.vertexQuadrics, mesh.vertices.size());
    pm.vertexQuadrics.assign(mesh.vertices.size(), {});
    forEachTriangle(mesh, [&](std::int32_t triangle) {
        const Quadric3D quadric = ComputeTriangleQuadric(pm, triangle);
        pm.triangleQuadrics[at(triangle)] = quadric;
        for (std::int32_t corner = 3 * triangle; corner < 3 * triangle + 3; ++corner) {
            pm.vertexQuadrics[at(vertexAt(mesh, corner))] += quadric;
        }
    });
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        addBorderAndPlane(pm, pm.vertexQuadrics[at(vertex)], vertex);
    }
}

void evaluateEdge(const ProgressiveMesh& pm, EdgeEvaluation& edge, std::int32_t a, std::int32_t b) {
    EvaluateEdgeCost(pm, edge, a, b, pm.vertexQuadrics[at(a)] + pm.vertexQuadrics[at(b)]);
}

void storePosition(ProgressiveMesh& pm, std::int32_t vertex, const EdgeEvaluation& edge) {
    pm.bestPositions[at(vertex)] = edge.position;
    pm.hasBestPosition.Set(vertex);
}

class NeighbourUpdate {
public:
    NeighbourUpdate(ProgressiveMesh& pm, std::int32_t kept, RingScratch& scratch)
        : pm_(pm), mesh_(pm.mesh), kept_(kept), s_(scratch) {}

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
        warmVertexCorners(mesh_, s_.ring, s_.cursors);
        for (const std::int32_t u : s_.ring) {
            s_.inRing.Set(u);
            prefetch(&pm_.vertexQuadrics[at(u)]);
            forEachCorner(mesh_, u, [&](std::int32_t corner) {
                prefetch(&pm_.triangleQuadrics[at(corner / 3)]);
                prefetch(&pm_.vertexQuadrics[at(vertexAt(mesh_, nextCorner(corner)))]);
                prefetch(&mesh_.vertices[at(vertexAt(mesh_, nextCorner(corner)))]);
            });
        }
    }

    void refreshQuadrics() {
        forEachCorner(mesh_, kept_, [&](std::int32_t corner) {
            pm_.triangleQuadrics[at(corner / 3)] = ComputeTriangleQuadric(pm_, corner / 3);
        });
        for (const std::int32_t u : s_.ring)
            AccumulateVertexQuadric(pm_, pm_.vertexQuadrics[at(u)], u);
        AccumulateVertexQuadric(pm_, pm_.vertexQuadrics[at(kept_)], kept_);
    }

    void forgetRing() {
        pm_.costQueue.RemoveAll(s_.ring);
        pm_.costQueue.Remove(kept_);
        for (const std::int32_t u : s_.ring)
            forgetCost(mesh_.vertices[at(u)]);
        forgetCost(mesh_.vertices[at(kept_)]);
    }

    void queueRing() {
        s_.queued.clear();
        const auto add = [&](std::int32_t vertex) {
            if (!pm_.isSymmetrySlave(vertex)) s_.queued.push_back(vertex);
        };
        add(kept_);
        for (const std::int32_t u : s_.ring)
            add(u);
        pm_.costQueue.InsertAll(s_.queued);
    }

    /// Ranks a ring vertex against all its neighbours, and the kept vertex against the ring. The
    /// vertices beyond the ring keep their costs.
    void rankRingVertex(std::int32_t u) {
        const bool mayRankU = !pm_.isSymmetrySlave(u);
        GetVertexNeighbours(mesh_, u, s_.outerRing);
        EdgeEvaluation edge;
        for (const std::int32_t x : s_.outerRing) {
            const bool isInRing = s_.inRing.Test(x);
            const bool mayRankX = !pm_.isSymmetrySlave(x);
            const bool takenFromX = isInRing && x < u;
            if (x == u || takenFromX || (!mayRankU && !mayRankX)) continue;
            evaluateEdge(pm_, edge, u, x);
            if (mayRankU) rank(u, x, edge);
            if (mayRankX && (x == kept_ || isInRing)) rank(x, u, edge);
        }
    }

    void rank(std::int32_t vertex, std::int32_t partner, const EdgeEvaluation& edge) {
        VertexRecord& record = mesh_.vertices[at(vertex)];
        if (!(record.cost > edge.cost)) return;
        record.cost = edge.cost;
        record.partner = partner;
        storePosition(pm_, vertex, edge);
    }

    ProgressiveMesh& pm_;
    DMesh& mesh_;
    std::int32_t kept_;
    RingScratch& s_;
};

}  // namespace

void InitVerticesCost(ProgressiveMesh& pm) {
    storeQuadrics(pm);
    for (VertexRecord& vertex : pm.mesh.vertices)
        forgetCost(vertex);
    reserveLarge(pm.bestPositions, pm.mesh.vertices.size());
    pm.bestPositions.assign(pm.mesh.vertices.size(), {});
    pm.hasBestPosition.Reset(pm.mesh.vertexCount());
    rankInitialEdges(
        pm,
        [&](EdgeEvaluation& edge, std::int32_t a, std::int32_t b) { evaluateEdge(pm, edge, a, b); },
        [&](std::int32_t end, const EdgeEvaluation& edge) { storePosition(pm, end, edge); });
}

void UpdateNeighbourCosts(ProgressiveMesh& pm, std::int32_t kept, RingScratch& scratch) {
    NeighbourUpdate(pm, kept, scratch).run();
}

}  // namespace korvalite
