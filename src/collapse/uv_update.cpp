// SPDX-License-Identifier: MIT
#include "collapse/uv_update.h"

#include "collapse/thread_guards.h"

#include <optional>

namespace korvalite {

namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

/// The UV indices of the removed vertex: all distinct ones if it is on a seam, else the first.
void collectUVIndices(const DMesh& mesh, const VSplit& split, bool onSeam, IndexList& indices) {
    indices.clear();
    for (const std::int32_t corner : split.corners) {
        const std::int32_t index = uvIndexAt(mesh, corner);
        if (!contains(indices, index)) indices.push_back(index);
        if (!onSeam) return;
    }
}

/// The UV index of the kept vertex in a triangle with `uvIndex`, one that the collapse has made
/// degenerate.
std::optional<std::int32_t> findCounterpart(const DMesh& mesh, std::int32_t uvIndex,
                                            std::int32_t kept) {
    for (std::int32_t corner = mesh.uvCornerHead[at(uvIndex)]; corner != kNone;
         corner = mesh.uvCornerNext[at(corner)]) {
        for (const std::int32_t other : {nextCorner(corner), previousCorner(corner)}) {
            if (vertexAt(mesh, other) == kept) return uvIndexAt(mesh, other);
        }
    }
    return std::nullopt;
}

/// Moves all corners of the old index to the new one, before its own corners. After a mirrored pair
/// both may be the same index, which is then left without corners.
void mergeUVIndex(DMesh& mesh, const UVIndexPair& pair, IndexList& corners) {
    GetUVCorners(mesh, pair.oldIndex, corners);
    for (const std::int32_t corner : corners) {
        mesh.indicesUV[at(corner)] = static_cast<std::uint32_t>(pair.newIndex);
    }
    if (corners.empty()) return;
    mesh.uvCornerNext[at(corners.back())] = mesh.uvCornerHead[at(pair.newIndex)];
    mesh.uvCornerHead[at(pair.newIndex)] = mesh.uvCornerHead[at(pair.oldIndex)];
    mesh.uvCornerHead[at(pair.oldIndex)] = kNone;
}

void unlinkRemovedTriangles(DMesh& mesh, const VSplit& split) {
    for (const std::int32_t triangle : split.removedTriangles) {
        for (std::int32_t corner = 3 * triangle; corner < 3 * triangle + 3; ++corner) {
            unlinkCorner(mesh.uvCornerHead[at(uvIndexAt(mesh, corner))], mesh.uvCornerNext, corner);
        }
    }
}

/// The UV at the kept vertex's new position, which is projected onto the collapsed edge.
UVCoord interpolatedUV(const DMesh& mesh, const UVIndexPair& pair, std::int32_t removed,
                       std::int32_t kept, const FloatVec3& keptBefore) {
    const FloatVec3 from = mesh.vertices[at(removed)].position();
    const FloatVec3 edge = keptBefore - from;
    const FloatVec3 moved = mesh.vertices[at(kept)].position() - from;
    const float t = dot(moved, edge) / dot(edge, edge);
    const UVCoord a = mesh.coordsUV[at(pair.oldIndex)];
    const UVCoord b = mesh.coordsUV[at(pair.newIndex)];
    if (0.0F > t) return a;
    if (1.0F > t) {
        const float s = 1.0F - t;
        return {s * a.u + t * b.u, s * a.v + t * b.v};
    }
    return b;  // also for an edge of length 0, where t is NaN
}

struct OneThread : NoGuards {
    // Even though the kept vertex may not be on a seam.
    static constexpr bool kCornerMarkNeedsSeam = false;
};

struct ManyThreads : ThreadGuards {
    using ThreadGuards::ThreadGuards;
    static constexpr bool kCornerMarkNeedsSeam = true;
};

struct SeamEnds {
    bool removed;
    bool kept;
};

template <typename Threads>
SeamEnds seamEnds(const DMesh& mesh, std::int32_t removed, std::int32_t kept,
                  const Threads& threads) {
    const auto guard = threads.uvSeams();
    return {mesh.uvSeamVertices.Test(removed), mesh.uvSeamVertices.Test(kept)};
}

template <typename Threads>
void moveSeamMarks(DMesh& mesh, std::int32_t removed, std::int32_t kept, bool seamRemoved,
                   const Threads& threads) {
    if (Threads::kCornerMarkNeedsSeam && !seamRemoved) return;
    const auto guard = threads.uvSeams();
    if (seamRemoved) mesh.uvSeamVertices.Set(kept);
    if (mesh.uvSeamCorners.Test(removed)) mesh.uvSeamCorners.Set(kept);
}

template <typename Threads>
void updateUVs(DMesh& mesh, std::int32_t removed, std::int32_t kept, VSplit& split,
               IndexList& scratch, const Threads& threads) {
    const auto [seamRemoved, seamKept] = seamEnds(mesh, removed, kept, threads);
    collectUVIndices(mesh, split, seamRemoved, scratch);
    for (const std::int32_t index : scratch) {
        if (const auto counterpart = findCounterpart(mesh, index, kept)) {
            split.uvIndexPairs.push_back({index, *counterpart});
        }
    }
    for (const std::int32_t corner : split.corners) {
        split.cornerUVIndices.push_back(uvIndexAt(mesh, corner));
    }
    for (const UVIndexPair& pair : split.uvIndexPairs) {
        mergeUVIndex(mesh, pair, scratch);
        unlinkRemovedTriangles(mesh, split);
        UVCoord& survivor = mesh.coordsUV[at(pair.newIndex)];
        split.savedUVs.push_back(survivor);
        if (seamRemoved) {
            survivor = mesh.coordsUV[at(pair.oldIndex)];
        } else if (!seamKept) {
            survivor = interpolatedUV(mesh, pair, removed, kept, split.position);
        }
    }
    moveSeamMarks(mesh, removed, kept, seamRemoved, threads);
}

}  // namespace

void UpdateUVsAfterCollapse(DMesh& mesh, std::int32_t removed, std::int32_t kept, VSplit& split,
                            IndexList& scratch) {
    updateUVs(mesh, removed, kept, split, scratch, OneThread{});
}

void UpdateUVsAfterCollapse_MT(DMesh& mesh, std::int32_t removed, std::int32_t kept, VSplit& split,
                               IndexList& scratch, CriticalSections& sections) {
    updateUVs(mesh, removed, kept, split, scratch, ManyThreads(sections));
}

}  // namespace korvalite
