// SPDX-License-Identifier: MIT
#include "library/blocked_edges.h"

#include "collapse/collapse.h"
#include "collapse/sharing.h"
#include "collapse/symmetric_collapse.h"
#include "mesh/corner_lists.h"
#include "metric/metric.h"
#include "ranking/vertex_cost.h"

#include <algorithm>
#include <array>
#include <utility>

namespace korvalite {

namespace {

using EdgeCount = std::uint64_t BlockedEdges::*;

template <core::CollapseMetric Metric>
class EdgeExaminer {
public:
    explicit EdgeExaminer(core::ProgressiveMesh& pm) : pm_(pm), mesh_(pm.mesh), alone_(pm) {}

    BlockedEdges count() {
        BlockedEdges blocked;
        core::IndexList ring;
        for (std::int32_t vertex = 0; vertex < mesh_.vertexCount(); ++vertex) {
            if (!mesh_.vertexActive.Test(vertex)) continue;
            core::GetVertexNeighbours(mesh_, vertex, ring);
            for (const std::int32_t other : ring) {
                if (other <= vertex) continue;
                if (const EdgeCount rule = ruleAgainst(vertex, other)) ++(blocked.*rule);
            }
        }
        return blocked;
    }

private:
    /// Null if nothing holds the edge back, or if its mirror image is asked instead.
    EdgeCount ruleAgainst(std::int32_t removed, std::int32_t kept) {
        if (const EdgeCount rule = ruleOfAttributes(removed, kept)) return rule;
        if (pm_.isSymmetrySlave(removed)) std::swap(removed, kept);
        if (pm_.isSymmetrySlave(removed)) return nullptr;
        keptQuadrics_.forget();
        core::EdgeEvaluation edge =
            core::evaluateCollapse<Metric>(mesh_, pm_, removed, kept, keptQuadrics_);
        core::SymmetricCollapse mirror;
        if (pm_.m_handleSymmetry_internal &&
            !core::CheckSymmetricCollapse(pm_, removed, kept, edge, mirror, keptQuadrics_)) {
            return &BlockedEdges::symmetry;
        }
        if (!(edge.cost < core::kNotCollapsible)) return &BlockedEdges::noCost;
        if (collapses(removed, kept, edge.position)) return nullptr;
        return turnsOver(removed, kept, edge.position) ? &BlockedEdges::flip
                                                       : &BlockedEdges::topology;
    }

    [[nodiscard]] EdgeCount ruleOfAttributes(std::int32_t a, std::int32_t b) const {
        const core::EdgeEnd first = core::gatherEnd(mesh_, pm_, a);
        const core::EdgeEnd second = core::gatherEnd(mesh_, pm_, b);
        if (std::min(first.mask, second.mask) == 0) return &BlockedEdges::mask;
        const bool borderIsFixed = Metric::kHasColor || pm_.BorderMode == core::BORDERMODE_FREEZE;
        if (borderIsFixed && (first.onBorder || second.onBorder)) return &BlockedEdges::border;
        const bool seamIsFixed = Metric::kHasColor && (first.onSeam || second.onSeam);
        if (seamIsFixed || core::isHeldBySeam(pm_, a, b)) return &BlockedEdges::seam;
        return nullptr;
    }

    bool collapses(std::int32_t removed, std::int32_t kept, const core::FloatVec3& position) {
        record_.clear();
        const core::CollapseResult result =
            core::CollapseEdge(pm_, removed, kept, position, record_, scratch_, alone_);
        if (result != core::CollapseResult::Done) return false;
        core::UndoCollapse(mesh_, removed, kept, record_, scratch_, alone_);
        return true;
    }

    bool turnsOver(std::int32_t removed, std::int32_t kept, const core::FloatVec3& position) {
        if (!pm_.AvoidNormalReverse) return false;
        // Without the link test, only a triangle that turns over can refuse.
        const bool protects = std::exchange(pm_.ProtectTopology, false);
        const bool refused = !collapses(removed, kept, position);
        pm_.ProtectTopology = protects;
        return refused;
    }

    core::ProgressiveMesh& pm_;
    core::DMesh& mesh_;
    core::Alone alone_;
    core::KeptQuadrics<Metric> keptQuadrics_;
    core::CollapseScratch scratch_;
    core::CollapseRecord record_;
};

/// The rest of the sentence that begins with "Most of the edges that are left".
struct Advice {
    EdgeCount rule = nullptr;
    const char* text = "";
    const char* withColors = nullptr;  // where colours are the reason
};

constexpr std::array kAdvice{
    Advice{&BlockedEdges::mask,
           "have an end with mask 0; a mask of 1 or more would let them collapse, slowly."},
    Advice{&BlockedEdges::border, "touch a frozen border; do not freeze borders.",
           "touch a border, which does not change in a mesh with colours; without the colours they "
           "could collapse."},
    Advice{&BlockedEdges::seam,
           "end at a corner of a UV seam; without the UVs they could collapse.",
           "touch a UV seam, which does not change in a mesh with colours; without the colours or "
           "the UVs they could collapse."},
    Advice{&BlockedEdges::symmetry,
           "have no mirror image that could follow; do not ask for symmetry."},
    Advice{&BlockedEdges::noCost,
           "have no finite error; bring the mesh to a smaller scale, nearer to the origin.",
           "have no best place for position and colour together, as where neighbours have the same "
           "colour; leave the colours out."},
    Advice{&BlockedEdges::flip, "would turn a triangle over; do not protect normals."},
    Advice{&BlockedEdges::topology, "would change the topology; do not protect it."},
};

}  // namespace

BlockedEdges countBlockedEdges(core::ProgressiveMesh& pm) {
    return pm.m_useVertexColors_internal ? EdgeExaminer<core::ColorMetric>(pm).count()
                                         : EdgeExaminer<core::PlainMetric>(pm).count();
}

std::string adviceFor(const BlockedEdges& blocked, const core::ProgressiveMesh& pm) {
    const auto most = std::ranges::max_element(
        kAdvice, {}, [&](const Advice& advice) { return blocked.*advice.rule; });
    if (blocked.*most->rule == 0) return "Nothing that is left has an edge to collapse.";
    const bool frozen = pm.BorderMode == core::BORDERMODE_FREEZE;
    const bool byColor = pm.m_useVertexColors_internal && most->withColors != nullptr &&
                         !(frozen && most->rule == &BlockedEdges::border);
    return std::string("Most of the edges that are left ") +
           (byColor ? most->withColors : most->text);
}

}  // namespace korvalite
