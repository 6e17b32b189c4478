// SPDX-License-Identifier: MIT
#include "collapse/carry_attributes.h"

#include <optional>

namespace korvalite::core {

namespace {

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
    for (std::int32_t corner = mesh.uvCornerHead[uvIndex]; corner != kNone;
         corner = mesh.uvCornerNext[corner]) {
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
        mesh.indicesUV[corner] = static_cast<std::uint32_t>(pair.newIndex);
    }
    if (corners.empty()) return;
    mesh.uvCornerNext[corners.back()] = mesh.uvCornerHead[pair.newIndex];
    mesh.uvCornerHead[pair.newIndex] = mesh.uvCornerHead[pair.oldIndex];
    mesh.uvCornerHead[pair.oldIndex] = kNone;
}

void unlinkRemovedTriangles(DMesh& mesh, const VSplit& split) {
    for (const std::int32_t triangle : split.removedTriangles) {
        for (const std::int32_t corner : cornersOf(triangle)) {
            unlinkCorner(mesh.uvCornerHead[uvIndexAt(mesh, corner)], mesh.uvCornerNext, corner);
        }
    }
}

/// The UV at the kept vertex's new position, which is projected onto the collapsed edge.
UVCoord interpolatedUV(const DMesh& mesh, const UVIndexPair& pair, std::int32_t removed,
                       std::int32_t kept, const FloatVec3& keptBefore) {
    const FloatVec3 from = mesh.vertices[removed].position();
    const FloatVec3 edge = keptBefore - from;
    const FloatVec3 moved = mesh.vertices[kept].position() - from;
    const float t = dot(moved, edge) / dot(edge, edge);
    const UVCoord a = mesh.coordsUV[pair.oldIndex];
    const UVCoord b = mesh.coordsUV[pair.newIndex];
    if (0.0F > t) return a;
    if (1.0F > t) {
        const float s = 1.0F - t;
        return {s * a.u + t * b.u, s * a.v + t * b.v};
    }
    return b;  // also for an edge of length 0, where t is NaN
}

struct SeamEnds {
    bool removed;
    bool kept;
};

template <SharingPolicy Sharing>
SeamEnds seamEnds(const DMesh& mesh, std::int32_t removed, std::int32_t kept,
                  const Sharing& sharing) {
    const auto guard = sharing.uvSeams();
    return {mesh.uvSeamVertices.Test(removed), mesh.uvSeamVertices.Test(kept)};
}

template <SharingPolicy Sharing>
void moveSeamMarks(DMesh& mesh, std::int32_t removed, std::int32_t kept, bool seamRemoved,
                   const Sharing& sharing) {
    // COMPAT: alone, the mark moves even without a seam; later costs depend on it.
    if (Sharing::kIsShared && !seamRemoved) return;
    const auto guard = sharing.uvSeams();
    if (seamRemoved) mesh.uvSeamVertices.Set(kept);
    if (mesh.uvSeamCorners.Test(removed)) mesh.uvSeamCorners.Set(kept);
}

}  // namespace

template <SharingPolicy Sharing>
void UpdateUVsAfterCollapse(DMesh& mesh, std::int32_t removed, std::int32_t kept, VSplit& split,
                            IndexList& scratch, const Sharing& sharing) {
    const auto [seamRemoved, seamKept] = seamEnds(mesh, removed, kept, sharing);
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
        UVCoord& survivor = mesh.coordsUV[pair.newIndex];
        split.savedUVs.push_back(survivor);
        if (seamRemoved) {
            survivor = mesh.coordsUV[pair.oldIndex];
        } else if (!seamKept) {
            survivor = interpolatedUV(mesh, pair, removed, kept, split.position);
        }
    }
    moveSeamMarks(mesh, removed, kept, seamRemoved, sharing);
}

template void UpdateUVsAfterCollapse(DMesh&, std::int32_t, std::int32_t, VSplit&, IndexList&,
                                     const Alone&);
template void UpdateUVsAfterCollapse(DMesh&, std::int32_t, std::int32_t, VSplit&, IndexList&,
                                     const Shared&);

}  // namespace korvalite::core
