// SPDX-License-Identifier: MIT
#include "korva/files/weld.h"

#include "korva/files/index_table.h"
#include "korva/files/point_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

namespace korva {

namespace {

using korvalite::Mesh;

constexpr std::uint32_t kUnused = 0xFFFFFFFF;

bool haveSameAttributes(const Mesh& mesh, std::size_t a, std::size_t b) {
    if (!mesh.mask.empty() && mesh.mask[a] != mesh.mask[b]) return false;
    return mesh.colors.empty() || std::memcmp(&mesh.colors[4 * a], &mesh.colors[4 * b], 4) == 0;
}

void moveAttributes(Mesh& mesh, std::size_t from, std::size_t to) {
    if (!mesh.mask.empty()) mesh.mask[to] = mesh.mask[from];
    if (!mesh.colors.empty()) std::memmove(&mesh.colors[4 * to], &mesh.colors[4 * from], 4);
}

void cutVertices(Mesh& mesh, std::size_t count) {
    mesh.positions.resize(3 * count);
    if (!mesh.colors.empty()) mesh.colors.resize(4 * count);
    if (!mesh.mask.empty()) mesh.mask.resize(count);
}

void renumber(std::vector<std::uint32_t>& triangles, const std::vector<std::uint32_t>& newIndex) {
    for (std::uint32_t& corner : triangles)
        corner = newIndex[corner];
}

/// A triangle turned so that its lowest vertex comes first.
std::array<std::uint32_t, 3> turned(const std::uint32_t* triangle) {
    const auto [a, b, c] = std::array{triangle[0], triangle[1], triangle[2]};
    if (b < a && b < c) return {b, c, a};
    if (c < a && c < b) return {c, a, b};
    return {a, b, c};
}

std::uint32_t hashOf(const std::array<std::uint32_t, 3>& triangle) {
    return hashOfWords(triangle[0], triangle[1], triangle[2]);
}

void removeTriangles(Mesh& mesh, UnusableCounts& counts) {
    IndexTable table;
    const auto triangleAt = [&](std::size_t i) { return turned(&mesh.triangles[3 * i]); };
    const std::size_t count = mesh.triangleCount();
    for (std::size_t i = 0; i < count; ++i) {
        const std::array<std::uint32_t, 3> triangle = triangleAt(i);
        if (triangle[0] == triangle[1] || triangle[1] == triangle[2] ||
            triangle[2] == triangle[0]) {
            ++counts.degenerateTriangles;
            continue;
        }
        const std::uint32_t kept = table.size();
        table.makeRoom(1, [&](std::uint32_t other) { return hashOf(triangleAt(other)); });
        const auto isSame = [&](std::uint32_t other) { return triangleAt(other) == triangle; };
        if (table.findOrAdd(hashOf(triangle), isSame) != kept) {
            ++counts.duplicateTriangles;
            continue;
        }
        std::memmove(&mesh.triangles[std::size_t{3} * kept], &mesh.triangles[3 * i],
                     3 * sizeof(std::uint32_t));
        if (!mesh.triangleUVs.empty())
            std::memmove(&mesh.triangleUVs[std::size_t{3} * kept], &mesh.triangleUVs[3 * i],
                         3 * sizeof(std::uint32_t));
    }
    mesh.triangles.resize(std::size_t{3} * table.size());
    if (!mesh.triangleUVs.empty()) mesh.triangleUVs.resize(mesh.triangles.size());
}

std::uint64_t removeUnusedVertices(Mesh& mesh) {
    const std::size_t count = mesh.vertexCount();
    std::vector<std::uint32_t> newIndex(count, kUnused);
    for (const std::uint32_t corner : mesh.triangles)
        newIndex[corner] = 0;
    std::uint32_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (newIndex[i] == kUnused) continue;
        std::memmove(&mesh.positions[std::size_t{3} * kept], &mesh.positions[3 * i],
                     3 * sizeof(float));
        moveAttributes(mesh, i, kept);
        newIndex[i] = kept++;
    }
    if (kept == count) return 0;
    cutVertices(mesh, kept);
    renumber(mesh.triangles, newIndex);
    return count - kept;
}

}  // namespace

WeldCounts weld(Mesh& mesh) {
    WeldCounts counts;
    PointTable table;
    const std::size_t count = mesh.vertexCount();
    std::vector<std::uint32_t> newIndex(count);
    std::array<float, 3 * PointTable::kBatch> points{};
    std::uint32_t kept = 0;
    for (std::size_t begin = 0; begin < count; begin += PointTable::kBatch) {
        const std::size_t end = std::min(begin + PointTable::kBatch, count);
        // A copy, because the points that are kept move down over those that come.
        std::copy_n(&mesh.positions[3 * begin], 3 * (end - begin), points.begin());
        table.findOrAdd(mesh.positions.data(), {points.data(), 3 * (end - begin)},
                        &newIndex[begin]);
        for (std::size_t i = begin; i < end; ++i) {
            if (newIndex[i] == kept)
                moveAttributes(mesh, i, kept++);
            else if (!haveSameAttributes(mesh, i, newIndex[i]))
                ++counts.differing;
        }
    }
    counts.joined = count - kept;
    if (counts.joined == 0) return counts;
    cutVertices(mesh, kept);
    renumber(mesh.triangles, newIndex);
    return counts;
}

UnusableCounts removeUnusable(Mesh& mesh) {
    UnusableCounts counts;
    removeTriangles(mesh, counts);
    counts.unusedVertices = removeUnusedVertices(mesh);
    return counts;
}

}  // namespace korva
