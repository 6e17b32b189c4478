// SPDX-License-Identifier: MIT
#include "collapse/collapse.h"

#include <algorithm>
#include <array>

namespace korvalite::core {

namespace {

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

/// A collapse of `removed` onto `kept`, which moves both to `position`.
struct Move {
    std::int32_t removed = kNone;
    std::int32_t kept = kNone;
    FloatVec3 position;
};

bool turnsOver(const DMesh& mesh, const std::array<std::int32_t, 3>& triangle, const Move& move) {
    std::array<FloatVec3, 3> before;
    std::array<FloatVec3, 3> after;
    for (std::size_t k = 0; k < 3; ++k) {
        before[k] = mesh.vertices[triangle[k]].position();
        after[k] =
            triangle[k] == move.removed || triangle[k] == move.kept ? move.position : before[k];
    }
    const FloatVec3 normalBefore = cross(before[1] - before[0], before[2] - before[0]);
    const FloatVec3 normalAfter = cross(after[1] - after[0], after[2] - after[0]);
    // COMPAT: a triangle without area, before or after, passes; it decides what collapses.
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
bool anyNormalTurnsOver(const DMesh& mesh, const IndexList& cornersOfRemoved, const Move& move,
                        CollapseScratch& scratch) {
    const auto turnsOverAtRemoved = [&](std::int32_t corner) {
        return turnsOverAt(mesh, triangleOf(corner), move.removed, move.kept, move);
    };
    const auto turnsOverAtKept = [&](std::int32_t triangle) {
        ++scratch.trianglesTested;
        return turnsOverAt(mesh, triangle, move.kept, move.removed, move);
    };
    if (std::ranges::any_of(cornersOfRemoved, turnsOverAtRemoved)) return true;

    const auto recent = scratch.turnedOver.triangles();
    const auto again = std::ranges::find_if(recent, turnsOverAtKept);
    std::int32_t culprit = again == recent.end() ? kNone : *again;
    if (culprit == kNone) {
        const std::int32_t corner = findCorner(
            mesh, move.kept, [&](std::int32_t c) { return turnsOverAtKept(triangleOf(c)); });
        if (corner == kNone) return false;
        culprit = triangleOf(corner);
    }
    scratch.turnedOver.add(culprit);
    return true;
}

void setActive(BitArray& bits, std::uint32_t& count, std::int32_t index, bool active) {
    bits.Assign(index, active);
    storeRelaxed(count, active ? count + 1 : count - 1);
}

template <SharingPolicy Sharing>
void setVertexActive(DMesh& mesh, std::int32_t vertex, bool active, const Sharing& sharing) {
    const auto guard = sharing.activeVertices();
    setActive(mesh.vertexActive, mesh.numActiveVertices, vertex, active);
}

template <SharingPolicy Sharing>
void setTriangleActive(DMesh& mesh, std::int32_t triangle, bool active, const Sharing& sharing) {
    const auto guard = sharing.activeTriangles();
    setActive(mesh.triangleActive, mesh.numActiveTriangles, triangle, active);
}

template <SharingPolicy Sharing>
void setCorners(DMesh& mesh, std::int32_t vertex, const IndexList& corners,
                const Sharing& sharing) {
    if (!mesh.vertexCorners.changesBlocks(vertex, corners.size()))
        return mesh.vertexCorners.assign(vertex, corners);
    const auto guard = sharing.cornerBlocks();
    mesh.vertexCorners.assign(vertex, corners);
}

template <SharingPolicy Sharing>
void pushCorner(DMesh& mesh, std::int32_t vertex, std::int32_t corner, IndexList& corners,
                const Sharing& sharing) {
    GetVertexCorners(mesh, vertex, corners);
    corners.insert(corners.begin(), corner);
    setCorners(mesh, vertex, corners, sharing);
}

template <SharingPolicy Sharing>
void unlinkCorner(DMesh& mesh, std::int32_t vertex, std::int32_t corner, IndexList& corners,
                  const Sharing& sharing) {
    if (mesh.vertexCorners.eraseFromRun(vertex, corner)) return;
    GetVertexCorners(mesh, vertex, corners);
    std::erase(corners, corner);
    setCorners(mesh, vertex, corners, sharing);
}

/// The corners of the removed vertex, followed by those of the kept one.
// COMPAT: that order of the list decides between equal costs.
void gatherAllCorners(const DMesh& mesh, const IndexList& cornersOfRemoved, std::int32_t kept,
                      IndexList& all) {
    all = cornersOfRemoved;
    forEachCorner(mesh, kept, [&](std::int32_t corner) { all.push_back(corner); });
}

template <SharingPolicy Sharing>
void removeOrphan(WorkingMesh& work, std::int32_t vertex, const Sharing& sharing) {
    if (!work.mesh.vertexActive.Test(vertex)) return;
    work.costQueue.Remove(vertex);
    setVertexActive(work.mesh, vertex, false, sharing);
}

/// The kept vertex while its triangles become degenerate. Its list is not in the mesh yet.
struct KeptVertex {
    std::int32_t index = kNone;
    std::size_t cornersLeft = 0;
};

/// Deactivates a degenerate triangle; true if that makes one of its vertices an orphan.
template <SharingPolicy Sharing>
bool removeTriangle(WorkingMesh& work, std::int32_t triangle, KeptVertex& kept, IndexList& corners,
                    const Sharing& sharing) {
    DMesh& mesh = work.mesh;
    const auto vertices = triangleVertices(mesh, triangle);
    setTriangleActive(mesh, triangle, false, sharing);
    for (std::size_t k = 0; k < 3; ++k) {
        if (vertices[k] == kept.index) {
            --kept.cornersLeft;
        } else {
            unlinkCorner(mesh, vertices[k], 3 * triangle + static_cast<std::int32_t>(k), corners,
                         sharing);
        }
    }
    bool orphan = false;
    for (std::size_t k = 0; k < 3; ++k) {
        const bool seen =
            (k > 0 && vertices[k] == vertices[0]) || (k > 1 && vertices[k] == vertices[1]);
        const bool hasCorners = vertices[k] == kept.index
                                    ? kept.cornersLeft > 0
                                    : !mesh.vertexCorners.isEmpty(vertices[k]);
        if (seen || hasCorners) continue;
        orphan = true;
        // A thread does not hold the queue here, so an orphan stays active and queued.
        if constexpr (!Sharing::kIsShared) {
            if (!work.ProtectTopology) removeOrphan(work, vertices[k], sharing);
        }
    }
    return orphan;
}

/// Tests that the triangles around the kept vertex form a disc or half-disc: a closed fan has as
/// many corners as neighbours, an open one has one corner less. Runs after the collapse.
// COMPAT: only counts, not the full link condition; it decides what collapses.
CollapseResult testLink(const WorkingMesh& work, std::int32_t kept, bool removedWasBorder,
                        bool keptWasBorder, CollapseRecord& record) {
    GetVertexCornersAndNeighbours(work.mesh, kept, record.neighbours, record.ringCorners);
    const auto neighbours = static_cast<std::int64_t>(record.neighbours.size());
    const auto corners = static_cast<std::int64_t>(record.ringCorners.size());
    if (removedWasBorder && keptWasBorder) {
        const std::int64_t openings = neighbours - corners;
        const bool refused = work.inFinishStep ? openings > 1 : openings != 1;
        return refused ? CollapseResult::RefusedBothBorder : CollapseResult::Done;
    }
    const std::int64_t allowed = removedWasBorder || keptWasBorder ? neighbours - 1 : neighbours;
    return corners > allowed ? CollapseResult::Refused : CollapseResult::Done;
}

template <SharingPolicy Sharing>
void setBorder(DMesh& mesh, std::int32_t vertex, bool isBorder, const Sharing& sharing) {
    const auto guard = sharing.borderVertices();
    mesh.borderVertices.Assign(vertex, isBorder);
}

}  // namespace

template <SharingPolicy Sharing>
void UndoCollapse(DMesh& mesh, std::int32_t removed, std::int32_t kept,
                  const CollapseRecord& record, CollapseScratch& scratch, const Sharing& sharing) {
    const VSplit& split = record.split;
    IndexList& keptCorners = scratch.keptCorners;
    keptCorners.clear();
    setBorder(mesh, kept, record.flags.survivorWasBorder, sharing);
    mesh.vertices[kept].setPosition(split.position);
    for (const std::int32_t corner : split.corners) {
        const std::int32_t triangle = triangleOf(corner);
        if (mesh.triangleActive.Test(triangle)) continue;
        setTriangleActive(mesh, triangle, true, sharing);
        for (const std::int32_t c : cornersOf(triangle)) {
            const std::int32_t vertex = vertexAt(mesh, c);
            if (!mesh.vertexActive.Test(vertex)) setVertexActive(mesh, vertex, true, sharing);
            if (vertex == kept) {
                keptCorners.push_back(c);
            } else {
                pushCorner(mesh, vertex, c, scratch.corners, sharing);
            }
        }
    }
    // COMPAT: the lists end up in another order, which decides between equal costs: corners come
    // back at the front, one by one.
    for (const std::int32_t corner : split.corners)
        storeRelaxed(mesh.triangles[corner], static_cast<std::uint32_t>(removed));
    std::ranges::reverse(keptCorners);
    forEachCorner(mesh, kept, [&](std::int32_t corner) { keptCorners.push_back(corner); });
    std::erase_if(keptCorners, [&](std::int32_t c) { return vertexAt(mesh, c) == removed; });
    setCorners(mesh, kept, keptCorners, sharing);
    scratch.corners.assign(split.corners.rbegin(), split.corners.rend());
    setCorners(mesh, removed, scratch.corners, sharing);
    setVertexActive(mesh, removed, true, sharing);
}

template <SharingPolicy Sharing>
CollapseResult CollapseEdge(WorkingMesh& work, std::int32_t removed, std::int32_t kept,
                            const FloatVec3& position, CollapseRecord& record,
                            CollapseScratch& scratch, const Sharing& sharing) {
    DMesh& mesh = work.mesh;
    // An orphan that is still queued has no edge left to collapse along.
    if (Sharing::kIsShared && mesh.vertexCorners.isEmpty(removed)) return CollapseResult::Refused;
    VSplit& split = record.split;
    GetVertexCorners(mesh, removed, split.corners);
    if (work.AvoidNormalReverse &&
        anyNormalTurnsOver(mesh, split.corners, {removed, kept, position}, scratch)) {
        split.corners.clear();
        return CollapseResult::Refused;
    }
    // In a mirror image, the removed vertex may have been orphaned and deactivated by the first
    // collapse.
    if (mesh.vertexActive.Test(removed)) setVertexActive(mesh, removed, false, sharing);
    const bool removedWasBorder = mesh.borderVertices.Test(removed);
    const bool keptWasBorder = mesh.borderVertices.Test(kept);
    IndexList& keptCorners = scratch.keptCorners;
    gatherAllCorners(mesh, split.corners, kept, keptCorners);
    for (const std::int32_t corner : split.corners)
        storeRelaxed(mesh.triangles[corner], static_cast<std::uint32_t>(kept));

    bool orphan = false;
    KeptVertex keptVertex{kept, keptCorners.size()};
    for (const std::int32_t corner : split.corners) {
        const std::int32_t triangle = triangleOf(corner);
        // A triangle that had the removed vertex twice comes up twice, and is inactive the second
        // time.
        if (!mesh.triangleActive.Test(triangle)) continue;
        if (!isDegenerate(triangleVertices(mesh, triangle))) continue;
        if (removeTriangle(work, triangle, keptVertex, scratch.corners, sharing)) orphan = true;
        split.removedTriangles.push_back(triangle);
    }
    std::erase_if(keptCorners, [&](std::int32_t corner) {
        return !mesh.triangleActive.Test(triangleOf(corner));
    });
    setCorners(mesh, kept, keptCorners, sharing);
    scratch.corners.clear();
    setCorners(mesh, removed, scratch.corners, sharing);
    VertexRecord& survivor = mesh.vertices[kept];
    split.vertex = removed;
    split.position = survivor.position();

    CollapseResult result = CollapseResult::Done;
    if (work.ProtectTopology) {
        result = orphan ? CollapseResult::Refused
                        : testLink(work, kept, removedWasBorder, keptWasBorder, record);
    }
    record.flags = {true, keptWasBorder};
    if (removedWasBorder) setBorder(mesh, kept, true, sharing);
    survivor.setPosition(position);
    if (result != CollapseResult::Done) {
        UndoCollapse(mesh, removed, kept, record, scratch, sharing);
        record.flags.collapsed = false;
    }
    return result;
}

template CollapseResult CollapseEdge(WorkingMesh&, std::int32_t, std::int32_t, const FloatVec3&,
                                     CollapseRecord&, CollapseScratch&, const Alone&);
template void UndoCollapse(DMesh&, std::int32_t, std::int32_t, const CollapseRecord&,
                           CollapseScratch&, const Alone&);
template CollapseResult CollapseEdge(WorkingMesh&, std::int32_t, std::int32_t, const FloatVec3&,
                                     CollapseRecord&, CollapseScratch&, const Shared&);
template void UndoCollapse(DMesh&, std::int32_t, std::int32_t, const CollapseRecord&,
                           CollapseScratch&, const Shared&);

}  // namespace korvalite::core
