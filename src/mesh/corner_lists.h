// SPDX-License-Identifier: MIT
//
// The corners around each vertex and around each UV coordinate, as singly linked lists in two flat
// arrays: head[v] is the first corner of v and next[c] the one behind corner c, kNone at the end.
// Built from the highest corner to the lowest; every walk of the system sees that order, and the
// order of neighbours that follows from it decides between equal costs.
//
// Thread safety: a vertex's list is changed only by the thread that holds the vertex and its
// neighbours. Others may walk it meanwhile, and may miss or meet twice what is being changed: every
// link leads to another corner of the same vertex at any moment.
#pragma once

#include "mesh/dmesh.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace korvalite {

using IndexList = std::vector<std::int32_t>;

/// The other two corners of a corner's triangle, in cyclic order.
inline std::int32_t nextCorner(std::int32_t corner) {
    return corner % 3 == 2 ? corner - 2 : corner + 1;
}
inline std::int32_t previousCorner(std::int32_t corner) {
    return corner % 3 == 0 ? corner + 2 : corner - 1;
}

inline std::int32_t vertexAt(const DMesh& mesh, std::int32_t corner) {
    return static_cast<std::int32_t>(loadRelaxed(mesh.triangles[static_cast<std::size_t>(corner)]));
}
inline std::int32_t uvIndexAt(const DMesh& mesh, std::int32_t corner) {
    return static_cast<std::int32_t>(mesh.indicesUV[static_cast<std::size_t>(corner)]);
}

inline bool contains(const IndexList& list, std::int32_t item) {
    return std::find(list.begin(), list.end(), item) != list.end();
}

/// Both rebuild from scratch, with the corners of all triangles, active or not; indices must be in
/// range.
void BuildVertexCorners(DMesh& mesh);
void BuildUVCorners(DMesh& mesh);
/// Returns the lists, and the scratch that this thread has gathered long rings with.
void ReleaseVertexCorners(DMesh& mesh);

/// Whether an earlier run has removed triangles.
bool hasDeadTriangles(const DMesh& mesh);

/// Take the corners of inactive triangles out of the lists, as a collapse does with those of the
/// triangles it removes. Decimation works on what is left: a dead triangle names dead vertices.
void dropDeadVertexCorners(DMesh& mesh);
void dropDeadUVCorners(DMesh& mesh);

/// Removes a corner from the list that begins at `head`; no effect if it is not there.
void unlinkCorner(std::int32_t& head, std::vector<std::int32_t>& next, std::int32_t corner);

/// The result lists below are cleared on entry. Neighbours are distinct and in order of first
/// sight: for each corner, the vertex at the next corner of its triangle, then the one after it.
void GetVertexCorners(const DMesh& mesh, std::int32_t vertex, IndexList& corners);
void GetVertexNeighbours(const DMesh& mesh, std::int32_t vertex, IndexList& neighbours);
void GetVertexCornersAndNeighbours(const DMesh& mesh, std::int32_t vertex, IndexList& neighbours,
                                   IndexList& corners);
void GetUVCorners(const DMesh& mesh, std::int32_t uvIndex, IndexList& corners);
void GetUVCornersAndNeighbours(const DMesh& mesh, std::int32_t uvIndex, IndexList& neighbours,
                               IndexList& corners);

/// Touches the corner lists and triangles of several vertices ahead of their use. A list is a chain
/// of loads that wait for each other, and in a large mesh nearly every one misses the cache; walked
/// side by side, the misses of different lists overlap. Of a hub only the start of the list is
/// touched. `cursors` is scratch; the bits of the triangles in `triangleBits`, unless null, come
/// along.
void warmVertexCorners(const DMesh& mesh, std::span<const std::int32_t> vertices,
                       IndexList& cursors, const BitArray* triangleBits = nullptr);

/// True if a triangle at `a` also holds `b`.
bool AreVerticesAdjacent(const DMesh& mesh, std::int32_t a, std::int32_t b);

/// Calls visit(triangle) for each active triangle, in index order.
template <typename Visit>
void forEachTriangle(const DMesh& mesh, Visit visit) {
    for (std::int32_t triangle = 0; triangle < mesh.triangleCount(); ++triangle) {
        if (mesh.triangleActive.Test(triangle)) visit(triangle);
    }
}

/// The first corner of a vertex, in list order, that matches(corner); kNone if none does.
template <typename Matches>
std::int32_t findCorner(const DMesh& mesh, std::int32_t vertex, Matches matches) {
    std::int32_t corner = loadRelaxed(mesh.vertexTriangleHead[static_cast<std::size_t>(vertex)]);
    while (corner != kNone && !matches(corner))
        corner = loadRelaxed(mesh.cornerNext[static_cast<std::size_t>(corner)]);
    return corner;
}

/// Calls visit(corner) for each corner of a vertex, in list order.
template <typename Visit>
void forEachCorner(const DMesh& mesh, std::int32_t vertex, Visit visit) {
    for (std::int32_t corner =
             loadRelaxed(mesh.vertexTriangleHead[static_cast<std::size_t>(vertex)]);
         corner != kNone; corner = loadRelaxed(mesh.cornerNext[static_cast<std::size_t>(corner)])) {
        visit(corner);
    }
}

}  // namespace korvalite
