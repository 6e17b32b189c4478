// SPDX-License-Identifier: MIT
#include "library/check_parts.h"

#include "library/flat_sets.h"
#include "library/mesh_view.h"

#include <tuple>

namespace korvalite {

namespace {

constexpr IndexTriple kLeftOut{kNoVertex, kNoVertex, kNoVertex};

bool hasVertexTwice(const IndexTriple& t) {
    return t[0] == t[1] || t[1] == t[2] || t[2] == t[0];
}

/// False if a coordinate is not finite, because NaN differs from 0.
bool hasNoArea(const MeshView& mesh, const IndexTriple& t) {
    const auto side = [&](std::uint32_t to) {
        std::array<double, 3> difference{};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            difference[axis] = static_cast<double>(mesh.positions[std::size_t{3} * to + axis]) -
                               static_cast<double>(mesh.positions[std::size_t{3} * t[0] + axis]);
        }
        return difference;
    };
    const auto a = side(t[1]);
    const auto b = side(t[2]);
    return a[1] * b[2] - a[2] * b[1] == 0 && a[2] * b[0] - a[0] * b[2] == 0 &&
           a[0] * b[1] - a[1] * b[0] == 0;
}

void countUnused(const std::vector<bool>& isUsed, MeshCheck& check) {
    for (std::size_t vertex = 0; vertex < isUsed.size(); ++vertex) {
        if (isUsed[vertex]) continue;
        addFault(check.unusedVertices, check.places.unusedVertices,
                 static_cast<std::uint32_t>(vertex));
    }
}

}  // namespace

CheckedTriangles gatherTriangles(const MeshView& mesh, MeshCheck& check) {
    const std::size_t vertexCount = mesh.vertexCount();
    const std::size_t uvCount = mesh.uvs.size() / 2;
    const bool hasUVs = !mesh.faceUVs.empty();
    CheckedTriangles triangles;
    triangles.vertices.resize(check.triangles);
    if (hasUVs) triangles.uvs.resize(check.triangles);
    std::vector<bool> isUsed(vertexCount);

    forEachTriangle(mesh, [&](std::size_t triangle, const std::array<std::size_t, 3>& corners) {
        const auto place = static_cast<std::uint32_t>(triangle);
        IndexTriple& vertices = triangles.vertices[triangle];
        bool isOutside = false;
        bool isUVOutside = false;
        for (std::size_t i = 0; i < 3; ++i) {
            vertices[i] = mesh.faces[corners[i]];
            isOutside |= vertices[i] >= vertexCount;
            if (!hasUVs) continue;
            const std::uint32_t uv = mesh.faceUVs[corners[i]];
            triangles.uvs[triangle][i] = uv < uvCount ? uv : kNoVertex;
            isUVOutside |= uv >= uvCount;
        }
        if (isOutside || isUVOutside)
            addFault(check.badTriangles, check.places.badTriangles, place);
        if (isOutside) {
            vertices = kLeftOut;
            return;
        }
        for (const std::uint32_t vertex : vertices)
            isUsed[vertex] = true;
        const bool isPinched = hasVertexTwice(vertices);
        if (isPinched || hasNoArea(mesh, vertices))
            addFault(check.degenerateTriangles, check.places.degenerateTriangles, place);
        if (isPinched) vertices = kLeftOut;
    });
    countUnused(isUsed, check);
    return triangles;
}

void checkDuplicates(const CheckedTriangles& triangles, std::size_t vertexCount, MeshCheck& check) {
    const auto lowest = [&](std::size_t triangle) {
        const IndexTriple& t = triangles.vertices[triangle];
        return std::min({t[0], t[1], t[2]});
    };
    const VertexGroups groups(vertexCount, triangles.vertices.size(), lowest);
    struct Entry {
        std::uint32_t middle;
        std::uint32_t highest;
        std::uint32_t triangle;
    };
    std::vector<Entry> entries;
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex) {
        entries.clear();
        for (const std::uint32_t triangle : groups.of(vertex)) {
            IndexTriple t = triangles.vertices[triangle];
            std::sort(t.begin(), t.end());
            entries.push_back({t[1], t[2], triangle});
        }
        std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
            return std::tie(a.middle, a.highest, a.triangle) <
                   std::tie(b.middle, b.highest, b.triangle);
        });
        for (std::size_t i = 1; i < entries.size(); ++i) {
            if (entries[i].middle == entries[i - 1].middle &&
                entries[i].highest == entries[i - 1].highest)
                addFault(check.duplicateTriangles, check.places.duplicateTriangles,
                         entries[i].triangle);
        }
    }
}

void checkComponents(const CheckedTriangles& triangles, std::size_t vertexCount, MeshCheck& check) {
    DisjointSets sets(vertexCount);
    for (const IndexTriple& t : triangles.vertices) {
        if (t == kLeftOut) continue;
        sets.unite(t[0], t[1]);
        sets.unite(t[0], t[2]);
    }
    std::vector<bool> isCounted(vertexCount);
    for (const IndexTriple& t : triangles.vertices) {
        if (t == kLeftOut) continue;
        const std::uint32_t set = sets.find(t[0]);
        if (isCounted[set]) continue;
        isCounted[set] = true;
        ++check.components;
    }
}

}  // namespace korvalite
