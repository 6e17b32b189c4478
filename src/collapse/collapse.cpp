// SPDX-License-Identifier: MIT
#include "collapse/collapse.h"

#include "collapse/thread_guards.h"

#include <algorithm>
#include <array>

namespace korvalite {

namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

std::array<std::int32_t, 3> triangleVertices(const DMesh& mesh, std::int32_t triangle) {
    return {vertexAt(mesh, 3 * triangle), vertexAt(mesh, 3 * triangle + 1),
            vertexAt(mesh, 3 * triangle + 2)};
}

bool isDegenerate(const std::array<std::int32_t, 3>& t) {
    return t[0] == t[1] || t[1] == t[2] || t[2] == t[0];
}

bool holds(const std::array<std::int32_t, 3>& triangle, std::int32_t vertex) {
    return triangle[0] == vertex || triangle[1] == vertex || triangle[2] == vertex;
}

/// A collapse of v onto w, which moves both to `position`.
struct Move {
    std::int32_t v;
    std::int32_t w;
    FloatVec3 position;
};

bool turnsOver(const DMesh& mesh, const std::array<std::int32_t, 3>& triangle, const Move& move) {
    std::array<FloatVec3, 3> before;
    std::array<FloatVec3, 3> after;
    for (std::size_t k = 0; k < 3; ++k) {
        before[k] = mesh.vertices[at(triangle[k])].position();
        after[k] = triangle[k] == move.v || triangle[k] == move.w ? move.position : before[k];
    }
    const FloatVec3 normalBefore = cross(before[1] - before[0], before[2] - before[0]);
    const FloatVec3 normalAfter = cross(after[1] - after[0], after[2] - after[0]);
    return 0.0F > dot(normalAfter, normalBefore);
}

/// Whether the collapse flips a triangle that has `moved` but not `other`; triangles with both are
/// removed.
bool turnsOverAt(const DMesh& mesh, std::int32_t triangle, std::int32_t moved, std::int32_t other,
                 const Move& move) {
    const auto vertices = triangleVertices(mesh, triangle);
    return holds(vertices, moved) && !holds(vertices, other) && turnsOver(mesh, vertices, move);
}

/// A single flipped triangle is enough. Around a hub, the same few triangles make one collapse
/// after another fail, so these are tested before the hundreds of others.
bool anyNormalTurnsOver(const DMesh& mesh, const IndexList& cornersOfV, const Move& move,
                        CollapseScratch& scratch) {
    const auto turnsOverAtV = [&](std::int32_t corner) {
        return turnsOverAt(mesh, corner / 3, move.v, move.w, move);
    };
    const auto turnsOverAtW = [&](std::int32_t triangle) {
        ++scratch.trianglesTested;
        return turnsOverAt(mesh, triangle, move.w, move.v, move);
    };
    if (std::ranges::any_of(cornersOfV, turnsOverAtV)) return true;

    const auto recent = scratch.turnedOver.triangles();
    const auto again = std::ranges::find_if(recent, turnsOverAtW);
    std::int32_t culprit = again == recent.end() ? kNone : *again;
    if (culprit == kNone) {
        const std::int32_t corner =
            findCorner(mesh, move.w, [&](std::int32_t c) { return turnsOverAtW(c / 3); });
        if (corner == kNone) return false;
        culprit = corner / 3;
    }
    scratch.turnedOver.add(culprit);
    return true;
}

// One implementation for one thread and for many. They differ in their guards, each of which
// protects one small change, and in whether they may use the queue.

struct OneThread : NoGuards {
    static constexpr bool kRemovesOrphans = true;
};

struct ManyThreads : ThreadGuards {
    using ThreadGuards::ThreadGuards;
    // The thread does not hold the queue here, so an orphan stays active and queued.
    static constexpr bool kRemovesOrphans = false;
};

void setActive(BitArray& bits, std::uint32_t& count, std::int32_t index, bool active) {
    bits.Assign(index, active);
    storeRelaxed(count, active ? count + 1 : count - 1);
}

template <typename Threads>
void setVertexActive(DMesh& mesh, std::int32_t vertex, bool active, const Threads& threads) {
    const auto guard = threads.activeVertices();
    setActive(mesh.vertexActive, mesh.numActiveVertices, vertex, active);
}

template <typename Threads>
void setTriangleActive(DMesh& mesh, std::int32_t triangle, bool active, const Threads& threads) {
    const auto guard = threads.activeTriangles();
    setActive(mesh.triangleActive, mesh.numActiveTriangles, triangle, active);
}

void pushCorner(DMesh& mesh, std::int32_t vertex, std::int32_t corner) {
    storeRelaxed(mesh.cornerNext[at(corner)], mesh.vertexTriangleHead[at(vertex)]);
    storeRelaxed(mesh.vertexTriangleHead[at(vertex)], corner);
}

/// Moves all corners of v to w, before w's own corners.
void handOverCorners(DMesh& mesh, const IndexList& cornersOfV, std::int32_t v, std::int32_t w) {
    for (const std::int32_t corner : cornersOfV) {
        storeRelaxed(mesh.triangles[at(corner)], static_cast<std::uint32_t>(w));
    }
    if (cornersOfV.empty()) return;
    storeRelaxed(mesh.cornerNext[at(cornersOfV.back())], mesh.vertexTriangleHead[at(w)]);
    storeRelaxed(mesh.vertexTriangleHead[at(w)], mesh.vertexTriangleHead[at(v)]);
    storeRelaxed(mesh.vertexTriangleHead[at(v)], kNone);
}

void removeOrphan(WorkingMesh& work, std::int32_t vertex) {
    if (!work.mesh.vertexActive.Test(vertex)) return;
    work.costQueue.Remove(vertex);
    setVertexActive(work.mesh, vertex, false, OneThread{});
}

/// Deactivates a degenerate triangle; true if that makes one of its vertices an orphan.
template <typename Threads>
bool removeTriangle(WorkingMesh& work, std::int32_t triangle, const Threads& threads) {
    DMesh& mesh = work.mesh;
    const auto vertices = triangleVertices(mesh, triangle);
    setTriangleActive(mesh, triangle, false, threads);
    for (std::size_t k = 0; k < 3; ++k) {
        unlinkCorner(mesh.vertexTriangleHead[at(vertices[k])], mesh.cornerNext,
                     3 * triangle + static_cast<std::int32_t>(k));
    }
    bool orphan = false;
    for (std::size_t k = 0; k < 3; ++k) {
        const bool seen =
            (k > 0 && vertices[k] == vertices[0]) || (k > 1 && vertices[k] == vertices[1]);
        if (seen || mesh.vertexTriangleHead[at(vertices[k])] != kNone) continue;
        orphan = true;
        if constexpr (Threads::kRemovesOrphans) {
            if (!work.ProtectTopology) removeOrphan(work, vertices[k]);
        }
    }
    return orphan;
}

/// Tests that the triangles around w form a disc or half-disc: a closed fan has as many corners as
/// neighbours, an open one has one corner less. Runs after the collapse, when w's own counts are
/// all it needs.
CollapseResult testLink(const WorkingMesh& work, std::int32_t w, bool borderV, bool borderW,
                        CollapseRecord& record) {
    GetVertexCornersAndNeighbours(work.mesh, w, record.neighbours, record.ringCorners);
    const auto neighbours = static_cast<std::int64_t>(record.neighbours.size());
    const auto corners = static_cast<std::int64_t>(record.ringCorners.size());
    if (borderV && borderW) {
        const std::int64_t openings = neighbours - corners;
        const bool refused = work.inFinishStep ? openings > 1 : openings != 1;
        return refused ? CollapseResult::RefusedBothBorder : CollapseResult::Done;
    }
    const std::int64_t allowed = borderV || borderW ? neighbours - 1 : neighbours;
    return corners > allowed ? CollapseResult::Refused : CollapseResult::Done;
}

template <typename Threads>
void setBorder(DMesh& mesh, std::int32_t vertex, bool isBorder, const Threads& threads) {
    const auto guard = threads.borderVertices();
    mesh.borderVertices.Assign(vertex, isBorder);
}

template <typename Threads>
void undo(DMesh& mesh, std::int32_t v, std::int32_t w, const VSplit& split,
          const CollapseFlags& flags, const Threads& threads) {
    setBorder(mesh, w, flags.survivorWasBorder, threads);
    mesh.vertices[at(w)].setPosition(split.position);
    for (const std::int32_t corner : split.corners) {
        const std::int32_t triangle = corner / 3;
        if (mesh.triangleActive.Test(triangle)) continue;
        setTriangleActive(mesh, triangle, true, threads);
        for (std::int32_t c = 3 * triangle; c < 3 * triangle + 3; ++c) {
            const std::int32_t vertex = vertexAt(mesh, c);
            if (!mesh.vertexActive.Test(vertex)) setVertexActive(mesh, vertex, true, threads);
            pushCorner(mesh, vertex, c);
        }
    }
    for (const std::int32_t corner : split.corners) {
        storeRelaxed(mesh.triangles[at(corner)], static_cast<std::uint32_t>(v));
        unlinkCorner(mesh.vertexTriangleHead[at(w)], mesh.cornerNext, corner);
        pushCorner(mesh, v, corner);
    }
    setVertexActive(mesh, v, true, threads);
}

template <typename Threads>
CollapseResult collapse(WorkingMesh& work, std::int32_t v, std::int32_t w,
                        const FloatVec3& position, CollapseRecord& record, CollapseScratch& scratch,
                        const Threads& threads) {
    DMesh& mesh = work.mesh;
    VSplit& split = record.split;
    GetVertexCorners(mesh, v, split.corners);
    if (work.AvoidNormalReverse &&
        anyNormalTurnsOver(mesh, split.corners, {v, w, position}, scratch)) {
        split.corners.clear();
        return CollapseResult::Refused;
    }
    // In a mirror image, v may have been orphaned and deactivated by the first collapse.
    if (mesh.vertexActive.Test(v)) setVertexActive(mesh, v, false, threads);
    const bool borderV = mesh.borderVertices.Test(v);
    const bool borderW = mesh.borderVertices.Test(w);
    handOverCorners(mesh, split.corners, v, w);

    bool orphan = false;
    for (const std::int32_t corner : split.corners) {
        const std::int32_t triangle = corner / 3;
        // A triangle that had v twice comes up twice, and is inactive the second time.
        if (!mesh.triangleActive.Test(triangle)) continue;
        if (!isDegenerate(triangleVertices(mesh, triangle))) continue;
        if (removeTriangle(work, triangle, threads)) orphan = true;
        split.removedTriangles.push_back(triangle);
    }
    VertexRecord& survivor = mesh.vertices[at(w)];
    split.vertex = v;
    split.position = survivor.position();

    CollapseResult result = CollapseResult::Done;
    if (work.ProtectTopology) {
        result = orphan ? CollapseResult::Refused : testLink(work, w, borderV, borderW, record);
    }
    record.flags = {true, borderW};
    if (borderV) setBorder(mesh, w, true, threads);
    survivor.setPosition(position);
    if (result != CollapseResult::Done) {
        undo(mesh, v, w, split, record.flags, threads);
        record.flags.collapsed = false;
    }
    return result;
}

}  // namespace

CollapseResult CollapseEdge(WorkingMesh& work, std::int32_t v, std::int32_t w,
                            const FloatVec3& position, CollapseRecord& record,
                            CollapseScratch& scratch) {
    return collapse(work, v, w, position, record, scratch, OneThread{});
}

CollapseResult CollapseEdge_MT(WorkingMesh& work, std::int32_t v, std::int32_t w,
                               const FloatVec3& position, CollapseRecord& record,
                               CollapseScratch& scratch, CriticalSections& sections) {
    // v is an orphan that is still queued: it has no edge left to collapse along.
    if (work.mesh.vertexTriangleHead[at(v)] == kNone) return CollapseResult::Refused;
    return collapse(work, v, w, position, record, scratch, ManyThreads(sections));
}

void UndoCollapse(WorkingMesh& work, std::int32_t v, std::int32_t w, const VSplit& split,
                  const CollapseFlags& flags) {
    undo(work.mesh, v, w, split, flags, OneThread{});
}

void UndoCollapse_MT(WorkingMesh& work, std::int32_t v, std::int32_t w, const VSplit& split,
                     const CollapseFlags& flags, CriticalSections& sections) {
    undo(work.mesh, v, w, split, flags, ManyThreads(sections));
}

}  // namespace korvalite
