// SPDX-License-Identifier: MIT
//
// The corners around each vertex (VertexCorners) and around each UV coordinate. The latter are
// singly linked lists in two flat arrays: uvCornerHead[i] is the first corner of record i, and
// uvCornerNext[c] is the corner after c, kNone at the end. Lists are built with the highest corner
// first. Every walk sees that order, and the resulting order of neighbours decides ties between
// equal costs.
//
// Thread safety: only the thread that has reserved a vertex and its neighbours changes the vertex's
// list. Other threads may walk it meanwhile, and may miss or see twice the corners that are being
// moved.
#pragma once

#include "base/indexed_array.h"
#include "mesh/dmesh.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace korvalite::core {

inline std::int32_t triangleOf(std::int32_t corner) {
    return corner / 3;
}
inline std::array<std::int32_t, 3> cornersOf(std::int32_t triangle) {
    return {3 * triangle, 3 * triangle + 1, 3 * triangle + 2};
}

/// The other two corners of a corner's triangle, in cyclic order.
inline std::int32_t nextCorner(std::int32_t corner) {
    return corner % 3 == 2 ? corner - 2 : corner + 1;
}
inline std::int32_t previousCorner(std::int32_t corner) {
    return corner % 3 == 0 ? corner + 2 : corner - 1;
}

inline std::int32_t vertexAt(const DMesh& mesh, std::int32_t corner) {
    return static_cast<std::int32_t>(loadRelaxed(mesh.triangles[corner]));
}
inline std::int32_t uvIndexAt(const DMesh& mesh, std::int32_t corner) {
    return static_cast<std::int32_t>(mesh.indicesUV[corner]);
}

inline bool contains(const IndexList& list, std::int32_t item) {
    return std::find(list.begin(), list.end(), item) != list.end();
}

/// Rebuild the lists from scratch with the corners of all triangles, active or not. REQUIRES: all
/// indices are in range.
void BuildVertexCorners(DMesh& mesh);
void BuildUVCorners(DMesh& mesh);
/// Frees the lists, and this thread's scratch for long rings.
void ReleaseVertexCorners(DMesh& mesh);

/// Whether an earlier run has removed triangles.
bool hasDeadTriangles(const DMesh& mesh);

/// Remove the corners of inactive triangles from the lists, as a collapse does for the triangles it
/// removes. Decimation must not see them: a dead triangle refers to dead vertices.
void dropDeadVertexCorners(DMesh& mesh);
void dropDeadUVCorners(DMesh& mesh);

/// Removes a corner from the list that begins at `head`; no effect if it is not in the list.
void unlinkCorner(std::int32_t& head, IndexList& next, std::int32_t corner);

/// The functions below clear their result lists first. Neighbours are distinct and in order of
/// first occurrence: for each corner, the vertex at the next corner of its triangle, then the
/// vertex at the previous one.
void GetVertexCorners(const DMesh& mesh, std::int32_t vertex, IndexList& corners);
void GetVertexNeighbours(const DMesh& mesh, std::int32_t vertex, IndexList& neighbours);
void GetVertexCornersAndNeighbours(const DMesh& mesh, std::int32_t vertex, IndexList& neighbours,
                                   IndexList& corners);
/// The neighbours at the other ends of up to VertexCorners::kPlaces corners. Returns how many there
/// are; `neighbours` has room for twice kPlaces, and all of it may be written.
std::size_t gatherFewNeighbours(const DMesh& mesh, std::span<const std::int32_t> corners,
                                std::int32_t* neighbours);
void GetUVCorners(const DMesh& mesh, std::int32_t uvIndex, IndexList& corners);
void GetUVCornersAndNeighbours(const DMesh& mesh, std::int32_t uvIndex, IndexList& neighbours,
                               IndexList& corners);

/// Prefetches the corner lists and triangles of several vertices, so that their misses overlap.
/// Only the start of a hub's list is touched. `triangleBits`, if not null, is prefetched for the
/// same triangles.
void warmVertexCorners(const DMesh& mesh, std::span<const std::int32_t> vertices,
                       const BitArray* triangleBits = nullptr);

/// Whether a triangle at `a` also has `b`.
bool AreVerticesAdjacent(const DMesh& mesh, std::int32_t a, std::int32_t b);

/// Calls visit(triangle) for each active triangle, in index order.
template <typename Visit>
void forEachTriangle(const DMesh& mesh, Visit visit) {
    for (std::int32_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
        if (mesh.triangleActive.Test(triangle)) visit(triangle);
    }
}

/// The first corner of a vertex, in list order, for which matches(corner) is true; else kNone.
template <typename Matches>
std::int32_t findCorner(const DMesh& mesh, std::int32_t vertex, Matches matches) {
    CornerCursor cursor(mesh.vertexCorners, vertex);
    std::int32_t corner = cursor.next();
    while (corner != kNone && !matches(corner))
        corner = cursor.next();
    return corner;
}

/// Calls visit(corner) for each corner of a vertex, in list order.
template <typename Visit>
void forEachCorner(const DMesh& mesh, std::int32_t vertex, Visit visit) {
    CornerCursor cursor(mesh.vertexCorners, vertex);
    for (std::int32_t corner = cursor.next(); corner != kNone; corner = cursor.next())
        visit(corner);
}

}  // namespace korvalite::core
