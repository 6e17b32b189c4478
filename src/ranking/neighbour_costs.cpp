// SPDX-License-Identifier: MIT
#include "ranking/neighbour_costs.h"

#include "metric/metric.h"
#include "ranking/initial_edges.h"
#include "ranking/vertex_cost.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace korvalite::core {

namespace {

template <typename Metric, SharingPolicy Sharing>
class NeighbourCostUpdate {
public:
    NeighbourCostUpdate(WorkingMesh& work, NeighbourhoodMarks& marks,
                        NeighbourhoodScratch<Metric>& scratch, Sharing& sharing)
        : work_(work), mesh_(work.mesh), sharing_(sharing), marks_(marks), s_(scratch) {}

    void run(std::int32_t kept, const IndexList& ringCorners, const IndexList& neighbours) {
        gatherRing(kept, ringCorners, neighbours);
        gatherOuterRing();
        const bool onDemand = isMostlyFree();
        sharing_.beginRing(ring());
        gatherTriangles();
        gatherEdges();
        s_.prefetch.nextRing(mesh_);
        if (onDemand) {
            evaluateOnDemand();
        } else {
            sumQuadrics();
            evaluateEdges();
            applyCosts();
        }
        s_.prefetch.nextOuterRing(mesh_);
        sharing_.endRing(ring());
        resetMarks();
    }

private:
    /// The kept vertex and its ring.
    [[nodiscard]] std::span<const std::int32_t> ring() const {
        return std::span(s_.localVertices).first(ringEnd_);
    }

    /// False if no slot is left.
    bool giveSlot(std::int32_t vertex) {
        if (s_.localVertices.size() >= NeighbourhoodMarks::kNoSlot) return false;
        marks_.vertexSlot[vertex] = static_cast<std::uint16_t>(s_.localVertices.size());
        s_.localVertices.push_back(vertex);
        return true;
    }

    void listTriangle(std::int32_t triangle) {
        s_.localTriangles.push_back(triangle);
        marks_.triangleMark.Set(triangle);
        RingPrefetch::triangle(mesh_, marks_, triangle);
    }

    void gatherRing(std::int32_t kept, const IndexList& ringCorners, const IndexList& neighbours) {
        s_.localVertices.clear();
        s_.localTriangles.clear();
        const IndexList* corners = &ringCorners;
        if (ringCorners.empty()) {
            GetVertexCorners(mesh_, kept, s_.corners);
            corners = &s_.corners;
        }
        const IndexList* ring = &neighbours;
        if (neighbours.empty()) {
            GetVertexNeighbours(mesh_, kept, s_.ring);
            ring = &s_.ring;
        }
        for (const std::int32_t corner : *corners)
            listTriangle(triangleOf(corner));
        giveSlot(kept);
        for (const std::int32_t vertex : *ring)
            giveSlot(vertex);
        ringEnd_ = s_.localVertices.size();
        s_.prefetch.ring(work_, marks_, this->ring());
    }

    void gatherOuterRing() {
        s_.ringNeighbours.clear();
        s_.ringNeighboursEnd.clear();
        for (std::size_t slot = 1; slot < ringEnd_; ++slot) {
            GetVertexNeighbours(mesh_, s_.localVertices[slot], s_.neighbours);
            s_.ringNeighbours.insert(s_.ringNeighbours.end(), s_.neighbours.begin(),
                                     s_.neighbours.end());
            s_.ringNeighboursEnd.push_back(s_.ringNeighbours.size());
            for (const std::int32_t x : s_.neighbours)
                RingPrefetch::outerVertex(mesh_, marks_, x);
        }
        for (const std::int32_t x : s_.ringNeighbours) {
            if (marks_.vertexSlot[x] == NeighbourhoodMarks::kNoSlot) giveSlot(x);
        }
    }

    void gatherTriangles() {
        const auto outerRing = std::span(s_.localVertices).subspan(ringEnd_);
        s_.prefetch.outerRing(mesh_, marks_, outerRing, sharing_.guessNext());
        for (const std::int32_t x : outerRing) {
            forEachCorner(mesh_, x, [&](std::int32_t corner) {
                if (!marks_.triangleMark.Test(triangleOf(corner))) listTriangle(triangleOf(corner));
            });
        }
    }

    // COMPAT: triangles that touch neither the kept vertex nor the outer ring are never listed, so
    // they are missing from the quadrics of ring vertices; costs depend on it.
    void sumQuadrics() {
        s_.slotQuadrics.assign(s_.localVertices.size(), {});
        for (const std::int32_t triangle : s_.localTriangles) {
            const typename Metric::Quadric quadric =
                Metric::triangleQuadric(work_.mesh, work_, triangle);
            for (const std::int32_t corner : cornersOf(triangle)) {
                const std::uint16_t slot = marks_.vertexSlot[vertexAt(mesh_, corner)];
                if (slot != NeighbourhoodMarks::kNoSlot) s_.slotQuadrics[slot] += quadric;
            }
        }
    }

    void gatherEdges() {
        if (!work_.m_handleUVs_internal) return gatherEdgesNow();
        // One critical section for all edges, since other threads may be moving seam marks.
        const auto guard = sharing_.uvSeams();
        gatherEdgesNow();
    }

    void gatherEdgesNow() {
        s_.slotEnds.clear();
        for (const std::int32_t vertex : s_.localVertices)
            s_.slotEnds.push_back(gatherEnd(mesh_, work_, vertex));
        listEdges();
    }

    void listEdges() {
        s_.edges.clear();
        std::size_t next = 0;
        for (std::size_t slot = 1; slot < ringEnd_; ++slot) {
            const std::int32_t w = s_.localVertices[slot];
            const std::uint16_t slotW = marks_.vertexSlot[w];
            const bool mayRankW = !work_.isSymmetrySlave(w);
            for (; next < s_.ringNeighboursEnd[slot - 1]; ++next) {
                const std::int32_t x = s_.ringNeighbours[next];
                const std::uint16_t slotX = marks_.vertexSlot[x];
                // An edge inside the ring is taken from its lower end.
                const bool takenFromX = slotX >= 1 && slotX < ringEnd_ && x < w;
                const bool mayRankX = !work_.isSymmetrySlave(x);
                if (x == w || slotX == NeighbourhoodMarks::kNoSlot || takenFromX) continue;
                if ((!mayRankW && !mayRankX) || isHeldBySeam(work_, w, x)) continue;
                // The outer ring keeps its costs.
                s_.edges.push_back({w, x, slotW, slotX, mayRankW, mayRankX && slotX < ringEnd_});
            }
        }
    }

    void evaluateEdges() {
        s_.edgeCosts.resize(s_.edges.size());
        for (std::size_t i = 0; i < s_.edges.size(); ++i) {
            const RingEdge& edge = s_.edges[i];
            EdgeEvaluation result;
            Metric::evaluate(work_, s_.slotEnds[edge.slotW], s_.slotEnds[edge.slotX],
                             s_.slotQuadrics[edge.slotW] + s_.slotQuadrics[edge.slotX], result);
            s_.edgeCosts[i] = result.cost;
        }
    }

    // On flat ground collapses cost nothing and create hubs with hundreds of edges. Once a vertex
    // has cost 0, its other edges and the quadrics at their far ends need no evaluation, unless an
    // edge can have a negative cost.

    /// Whether much of the ring had cost 0 so far, refused once or not.
    [[nodiscard]] bool isMostlyFree() const {
        constexpr std::size_t kLargeNeighbourhood = 128;
        const auto isFree = [this](std::int32_t vertex) {
            const float cost = mesh_.vertices[vertex].cost;
            return cost <= 0.0F || cost == penalizedCost(0.0F);
        };
        const auto free = static_cast<std::size_t>(std::ranges::count_if(ring(), isFree));
        return 2 * free > ringEnd_ || (free > 0 && s_.localVertices.size() > kLargeNeighbourhood);
    }

    void evaluateOnDemand() {
        s_.quadrics.prepare(mesh_, s_.localTriangles, marks_, s_.localVertices.size());
        for (const RingEdge& edge : s_.edges) {
            const EdgeEnd& w = s_.slotEnds[edge.slotW];
            const EdgeEnd& x = s_.slotEnds[edge.slotX];
            if (!mayLowerACost(edge) && !Metric::mayCostBeNegative(work_, w, x)) continue;
            EdgeEvaluation result;
            Metric::evaluate(work_, w, x,
                             s_.quadrics.of(work_, edge.slotW) + s_.quadrics.of(work_, edge.slotX),
                             result);
            rank(edge, result.cost);
        }
    }

    [[nodiscard]] bool mayLowerACost(const RingEdge& edge) const {
        return (edge.mayRankW && sharing_.best(edge.slotW, edge.w) > 0.0F) ||
               (edge.mayRankX && sharing_.best(edge.slotX, edge.x) > 0.0F);
    }

    void rank(const RingEdge& edge, float cost) {
        if (edge.mayRankW) sharing_.rank(edge.slotW, edge.w, edge.x, cost);
        if (edge.mayRankX) sharing_.rank(edge.slotX, edge.x, edge.w, cost);
    }

    void applyCosts() {
        for (std::size_t i = 0; i < s_.edges.size(); ++i) {
            rank(s_.edges[i], s_.edgeCosts[i]);
        }
    }

    void resetMarks() {
        for (const std::int32_t vertex : s_.localVertices) {
            marks_.vertexSlot[vertex] = NeighbourhoodMarks::kNoSlot;
        }
        for (const std::int32_t triangle : s_.localTriangles)
            marks_.triangleMark.Clear(triangle);
    }

    WorkingMesh& work_;
    DMesh& mesh_;
    Sharing& sharing_;
    NeighbourhoodMarks& marks_;
    NeighbourhoodScratch<Metric>& s_;
    std::size_t ringEnd_ = 0;  // lower slots are the kept vertex and its ring
};

}  // namespace

template <typename Metric, SharingPolicy Sharing>
void UpdateNeighbourCosts_LM(WorkingMesh& work, std::int32_t kept, const IndexList& ringCorners,
                             const IndexList& neighbours, NeighbourhoodMarks& marks,
                             NeighbourhoodScratch<Metric>& scratch, Sharing& sharing) {
    NeighbourCostUpdate(work, marks, scratch, sharing).run(kept, ringCorners, neighbours);
}

template void UpdateNeighbourCosts_LM(WorkingMesh&, std::int32_t, const IndexList&,
                                      const IndexList&, NeighbourhoodMarks&,
                                      NeighbourhoodScratch<PlainMetric>&, Alone&);
template void UpdateNeighbourCosts_LM(WorkingMesh&, std::int32_t, const IndexList&,
                                      const IndexList&, NeighbourhoodMarks&,
                                      NeighbourhoodScratch<PlainMetric>&, Shared&);
template void UpdateNeighbourCosts_LM(WorkingMesh&, std::int32_t, const IndexList&,
                                      const IndexList&, NeighbourhoodMarks&,
                                      NeighbourhoodScratch<ColorMetric>&, Alone&);
template void UpdateNeighbourCosts_LM(WorkingMesh&, std::int32_t, const IndexList&,
                                      const IndexList&, NeighbourhoodMarks&,
                                      NeighbourhoodScratch<ColorMetric>&, Shared&);

}  // namespace korvalite::core
