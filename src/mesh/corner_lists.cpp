// SPDX-License-Identifier: MIT
#include "mesh/corner_lists.h"

namespace korvalite {

namespace {

void buildLists(std::vector<std::int32_t>& head, std::vector<std::int32_t>& next,
                std::size_t itemCount, const std::vector<std::uint32_t>& itemOfCorner) {
    head.assign(itemCount, kNone);
    next.assign(itemOfCorner.size(), kNone);
    for (std::size_t corner = 0; corner < itemOfCorner.size(); ++corner) {
        std::int32_t& first = head[itemOfCorner[corner]];
        next[corner] = first;
        first = static_cast<std::int32_t>(corner);
    }
}

template <typename Visit>
void walk(const std::vector<std::int32_t>& head, const std::vector<std::int32_t>& next,
          std::int32_t item, Visit visit) {
    for (std::int32_t corner = head[static_cast<std::size_t>(item)]; corner != kNone;
         corner = next[static_cast<std::size_t>(corner)]) {
        visit(corner);
    }
}

void appendIfAbsent(IndexList& list, std::uint32_t item) {
    const auto index = static_cast<std::int32_t>(item);
    if (!contains(list, index)) list.push_back(index);
}

void appendRing(const std::vector<std::uint32_t>& itemOfCorner, std::int32_t corner,
                IndexList& neighbours) {
    appendIfAbsent(neighbours, itemOfCorner[static_cast<std::size_t>(nextCorner(corner))]);
    appendIfAbsent(neighbours, itemOfCorner[static_cast<std::size_t>(previousCorner(corner))]);
}

}  // namespace

void BuildVertexCorners(DMesh& mesh) {
    buildLists(mesh.vertexTriangleHead, mesh.cornerNext, mesh.vertices.size(), mesh.triangles);
}

void BuildUVCorners(DMesh& mesh) {
    buildLists(mesh.uvCornerHead, mesh.uvCornerNext, mesh.coordsUV.size(), mesh.indicesUV);
}

void ReleaseVertexCorners(DMesh& mesh) {
    std::vector<std::int32_t>().swap(mesh.vertexTriangleHead);
    std::vector<std::int32_t>().swap(mesh.cornerNext);
}

void unlinkCorner(std::int32_t& head, std::vector<std::int32_t>& next, std::int32_t corner) {
    std::int32_t* link = &head;
    while (*link != kNone && *link != corner)
        link = &next[static_cast<std::size_t>(*link)];
    if (*link == corner) *link = next[static_cast<std::size_t>(corner)];
}

void GetVertexCorners(const DMesh& mesh, std::int32_t vertex, IndexList& corners) {
    corners.clear();
    walk(mesh.vertexTriangleHead, mesh.cornerNext, vertex,
         [&](std::int32_t corner) { corners.push_back(corner); });
}

void GetVertexNeighbours(const DMesh& mesh, std::int32_t vertex, IndexList& neighbours) {
    neighbours.clear();
    walk(mesh.vertexTriangleHead, mesh.cornerNext, vertex,
         [&](std::int32_t corner) { appendRing(mesh.triangles, corner, neighbours); });
}

void GetVertexCornersAndNeighbours(const DMesh& mesh, std::int32_t vertex, IndexList& neighbours,
                                   IndexList& corners) {
    GetVertexCorners(mesh, vertex, corners);
    neighbours.clear();
    for (const std::int32_t corner : corners)
        appendRing(mesh.triangles, corner, neighbours);
}

void GetUVCorners(const DMesh& mesh, std::int32_t uvIndex, IndexList& corners) {
    corners.clear();
    walk(mesh.uvCornerHead, mesh.uvCornerNext, uvIndex,
         [&](std::int32_t corner) { corners.push_back(corner); });
}

void GetUVCornersAndNeighbours(const DMesh& mesh, std::int32_t uvIndex, IndexList& neighbours,
                               IndexList& corners) {
    GetUVCorners(mesh, uvIndex, corners);
    neighbours.clear();
    for (const std::int32_t corner : corners)
        appendRing(mesh.indicesUV, corner, neighbours);
}

bool AreVerticesAdjacent(const DMesh& mesh, std::int32_t a, std::int32_t b) {
    bool adjacent = false;
    forEachCorner(mesh, a, [&](std::int32_t corner) {
        adjacent = adjacent || vertexAt(mesh, nextCorner(corner)) == b ||
                   vertexAt(mesh, previousCorner(corner)) == b;
    });
    return adjacent;
}

}  // namespace korvalite
