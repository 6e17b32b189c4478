// SPDX-License-Identifier: MIT
#include "ranking/neighbour_costs.h"

#include "metric/metric.h"
#include "ranking/initial_edges.h"
#include "ranking/vertex_cost.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace korvalite::core {

namespace {

template <typename Metric, SharingPolicy Sharing>
class NeighbourCostUpdate {
public:
    NeighbourCostUpdate(WorkingMesh& work, NeighbourhoodMarks& marks,
                        NeighbourhoodScratch<Metric>& scratch, Sharing& sharing)
        : work_(work), mesh_(work.mesh), sharing_(sharing), marks_(marks), s_(scratch) {}

    void run(std::int32_t kept, const IndexList& ringCorners, const IndexList& neighbours) {
        area_.gatherVertices(work_, marks_, kept, ringCorners, neighbours);
        const bool onDemand = isMostlyFree();
        sharing_.beginRing(area_.ring());
        s_.prefetch.lists(mesh_, sharing_.guessNext());
        area_.gatherTriangles(work_, marks_);
        s_.prefetch.triangles(mesh_);
        gatherEdges();
        s_.prefetch.ring(mesh_);
        rankNone();
        onDemand ? evaluateOnDemand() : evaluateAll();
        s_.prefetch.outerRing(mesh_);
        applyRanking();
        sharing_.endRing(area_.ring());
        area_.clear(marks_);
    }

private:
    void gatherEdges() {
        if (!work_.m_handleUVs_internal) return gatherEdgesNow();
        // One critical section for all edges, since other threads may be moving seam marks.
        const auto guard = sharing_.uvSeams();
        gatherEdgesNow();
    }

    void gatherEdgesNow() {
        s_.slotEnds.clear();
        for (const std::int32_t vertex : area_.vertices())
            s_.slotEnds.push_back(gatherEnd(mesh_, work_, vertex));
        const bool hasRules = work_.m_handleUVs_internal || work_.m_handleSymmetry_internal;
        hasRules ? listEdges<true>() : listEdges<false>();
    }

    /// Writes each edge behind the others and counts it if it is one to evaluate.
    template <bool kHasRules>
    void listEdges() {
        const auto vertices = area_.vertices();
        const auto neighbours = area_.neighbours();
        const auto neighbourSlots = area_.neighbourSlots();
        const auto ringEnd = static_cast<std::uint32_t>(area_.ring().size());
        makeRoomForEdges(neighbours.size());
        edgeCount_ = 0;
        std::size_t next = 0;
        for (std::uint32_t slotW = 1; slotW < ringEnd; ++slotW) {
            const std::int32_t w = vertices[slotW];
            const bool mayRankW = !kHasRules || !work_.isSymmetrySlave(w);
            for (; next < area_.neighboursEnd(slotW); ++next) {
                const std::int32_t x = neighbours[next];
                const std::uint32_t slotX = neighbourSlots[next];
                const bool isInRing = slotX - 1 < ringEnd - 1;
                // An edge inside the ring is taken from its lower end.
                bool isTaken =
                    allOf(x != w, slotX != NeighbourhoodMarks::kNoSlot, !allOf(isInRing, x < w));
                // The outer ring keeps its costs.
                bool mayRankX = slotX < ringEnd;
                if constexpr (kHasRules) {
                    const bool isSlave = work_.isSymmetrySlave(x);
                    isTaken = isTaken && (mayRankW || !isSlave) && !isHeldBySeam(work_, w, x);
                    mayRankX = mayRankX && !isSlave;
                }
                s_.edgeSlots[2 * edgeCount_] = slotW;
                s_.edgeSlots[2 * edgeCount_ + 1] = slotX;
                s_.rankSlots[2 * edgeCount_] = mayRankW ? slotW : ringEnd;
                s_.rankSlots[2 * edgeCount_ + 1] = mayRankX ? slotX : ringEnd;
                edgeCount_ += isTaken ? 1 : 0;
            }
        }
    }

    /// Without a branch, since none of these can be foreseen.
    static bool allOf(bool a, bool b, bool c = true) {
        return (static_cast<int>(a) & static_cast<int>(b) & static_cast<int>(c)) != 0;
    }

    void makeRoomForEdges(std::size_t most) {
        const std::size_t room = lanes::padded(most + 1);
        if (s_.edgeCosts.size() >= room) return;
        s_.edgeSlots.resize(2 * room);
        s_.rankSlots.resize(2 * room);
        s_.edgeCosts.resize(room);
    }

    [[nodiscard]] const EdgeEnd& endOf(std::size_t edge, std::size_t which) const {
        return s_.slotEnds[s_.edgeSlots[2 * edge + which]];
    }

    // All edges, with all quadrics.

    void evaluateAll() {
        const lanes::Kernels* const kernels = lanes::kernels();
        if (kernels != nullptr) {
            evaluateInLanes(*kernels);
        } else {
            evaluateOneByOne();
        }
        for (std::size_t edge = 0; edge < edgeCount_; ++edge)
            rank(edge, s_.edgeCosts[edge]);
    }

    // COMPAT: triangles that touch neither the kept vertex nor the outer ring are never listed, so
    // they are missing from the quadrics of ring vertices; costs depend on it.
    void evaluateOneByOne() {
        const std::size_t slots = area_.vertices().size();
        s_.slotQuadrics.assign(slots, {});
        const auto slotOfCorner = area_.triangleSlots();
        std::size_t corner = 0;
        for (const std::int32_t triangle : area_.triangles()) {
            const typename Metric::Quadric quadric =
                Metric::triangleQuadric(mesh_, work_, triangle);
            for (const std::size_t end = corner + 3; corner < end; ++corner) {
                if (slotOfCorner[corner] < slots) s_.slotQuadrics[slotOfCorner[corner]] += quadric;
            }
        }
        for (std::size_t edge = 0; edge < edgeCount_; ++edge) {
            s_.edgeCosts[edge] = costOf(edge, s_.slotQuadrics[s_.edgeSlots[2 * edge]] +
                                                  s_.slotQuadrics[s_.edgeSlots[2 * edge + 1]]);
        }
    }

    [[nodiscard]] float costOf(std::size_t edge, const typename Metric::Quadric& quadric) const {
        EdgeEvaluation result;
        Metric::evaluate(work_, endOf(edge, 0), endOf(edge, 1), quadric, result);
        return result.cost;
    }

    void evaluateInLanes(const lanes::Kernels& kernels) {
        s_.laneSums.assign(area_.vertices().size() + Neighbourhood::kSpareSlots, {});
        Metric::sumTriangles(kernels, mesh_, work_,
                             {area_.triangleVertices().data(), area_.triangleSlots().data(),
                              lanes::padded(area_.triangles().size())},
                             s_.laneSums.data());
        const std::size_t padded = lanes::padded(edgeCount_);
        std::fill_n(&s_.edgeSlots[2 * edgeCount_], 2 * (padded - edgeCount_), 0U);
        const bool isUndecided =
            Metric::evaluateEdges(kernels, work_, s_.slotEnds, s_.laneSums.data(),
                                  {s_.edgeSlots.data(), padded}, s_.edgeCosts.data());
        if (isUndecided || std::ranges::any_of(s_.slotEnds, needsMore)) finishCosts();
    }

    /// Evaluates what the lanes cannot, and applies the mask.
    void finishCosts() {
        for (std::size_t edge = 0; edge < edgeCount_; ++edge) {
            const EdgeEnd& first = endOf(edge, 0);
            const EdgeEnd& second = endOf(edge, 1);
            float& cost = s_.edgeCosts[edge];
            if (isSpecial(first) || isSpecial(second) || std::isnan(cost)) {
                cost = costOf(edge, fromLanes(s_.laneSums[s_.edgeSlots[2 * edge]]) +
                                        fromLanes(s_.laneSums[s_.edgeSlots[2 * edge + 1]]));
            } else {
                applyMask(cost, std::min(first.mask, second.mask));
            }
        }
    }
    static bool isSpecial(const EdgeEnd& end) { return end.onBorder || end.onSeam; }
    static bool needsMore(const EdgeEnd& end) { return isSpecial(end) || end.mask != 255; }

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
        const auto ring = area_.ring();
        const auto free = static_cast<std::size_t>(std::ranges::count_if(ring, isFree));
        return 2 * free > ring.size() ||
               (free > 0 && area_.vertices().size() > kLargeNeighbourhood);
    }

    void evaluateOnDemand() {
        s_.quadrics.prepare(area_.triangles(), area_.triangleSlots(), area_.vertices().size());
        for (std::size_t edge = 0; edge < edgeCount_; ++edge) {
            if (!mayLowerACost(edge) &&
                !Metric::mayCostBeNegative(work_, endOf(edge, 0), endOf(edge, 1)))
                continue;
            rank(edge, costOf(edge, s_.quadrics.of(mesh_, work_, s_.edgeSlots[2 * edge]) +
                                        s_.quadrics.of(mesh_, work_, s_.edgeSlots[2 * edge + 1])));
        }
    }

    [[nodiscard]] bool mayLowerACost(std::size_t edge) const {
        return s_.ranking[s_.rankSlots[2 * edge]].cost > 0.0F ||
               s_.ranking[s_.rankSlots[2 * edge + 1]].cost > 0.0F;
    }

    // The ranking. Its last entry begins at cost 0, so that no edge seems to lower it.

    void rankNone() {
        s_.ranking.assign(area_.ring().size(), {kNotCollapsible, kNone});
        s_.ranking.push_back({0.0F, kNone});
    }

    void rank(std::size_t edge, float cost) {
        const auto vertices = area_.vertices();
        take(s_.rankSlots[2 * edge], cost, vertices[s_.edgeSlots[2 * edge + 1]]);
        take(s_.rankSlots[2 * edge + 1], cost, vertices[s_.edgeSlots[2 * edge]]);
    }
    /// takeIfLower without a branch, which could not be foreseen.
    void take(std::uint32_t slot, float cost, std::int32_t partner) {
        RankedVertex& best = s_.ranking[slot];
        const bool isLower = best.cost > cost;
        best.cost = isLower ? cost : best.cost;
        const std::int32_t mask = -static_cast<std::int32_t>(isLower);
        best.partner = (partner & mask) | (best.partner & ~mask);
    }

    void applyRanking() {
        const auto ring = area_.ring();
        for (std::size_t slot = 0; slot < ring.size(); ++slot)
            sharing_.rank(static_cast<std::uint16_t>(slot), ring[slot], s_.ranking[slot]);
    }

    WorkingMesh& work_;
    DMesh& mesh_;
    Sharing& sharing_;
    NeighbourhoodMarks& marks_;
    NeighbourhoodScratch<Metric>& s_;
    Neighbourhood& area_ = s_.area;
    std::size_t edgeCount_ = 0;
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
