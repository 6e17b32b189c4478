// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_faces.h"

#include "korva/files/words.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace korva {

namespace {

bool isColor(std::string_view name) {
    return name == "red" || name == "green" || name == "blue" || name == "alpha" ||
           name.starts_with("diffuse_");
}

}  // namespace

std::vector<int> plyFaceColumns(const InputFile& file, const PlyElement& element,
                                ImportedMesh& imported) {
    std::vector<int> goesTo(element.properties.size(), kPlyIgnored);
    bool hasIndices = false;
    bool hasUVs = false;
    bool hasColors = false;
    for (std::size_t i = 0; i < goesTo.size(); ++i) {
        const PlyProperty& property = element.properties[i];
        const bool isIndices = property.name == "vertex_indices" || property.name == "vertex_index";
        if (property.isList && isIndices && !hasIndices) {
            goesTo[i] = kPlyIndices;
            hasIndices = true;
        } else if (property.isList && property.name == "texcoord" && !hasUVs) {
            goesTo[i] = kPlyUVs;
            hasUVs = true;
        } else if (!property.isList && isColor(property.name)) {
            goesTo[i] = kPlyExpected;
            hasColors = true;
        }
    }
    if (!hasIndices)
        failToRead(file.path(), "its element " + printable(element.name) +
                                    " has no list vertex_indices or vertex_index.");
    if (hasColors) imported.notes.emplace_back("Colours of faces are ignored.");
    return goesTo;
}

void PlyFaces::readFaces(PlyRows& rows, const PlyElement& element, const std::vector<int>& goesTo,
                         std::size_t expected) {
    const bool hasUVs = std::find(goesTo.begin(), goesTo.end(), kPlyUVs) != goesTo.end();
    mesh_.triangles.reserve(mesh_.triangles.size() + 3 * expected);
    if (hasUVs) mesh_.triangleUVs.reserve(mesh_.triangles.size() + 3 * expected);
    rows.start(element, goesTo);
    PlyRow row;
    for (std::uint64_t i = 0; i < element.count; ++i) {
        rows.readRow(row);
        addPolygon(rows, row);
    }
}

void PlyFaces::readStrips(PlyRows& rows, const PlyElement& element,
                          const std::vector<int>& goesTo) {
    rows.start(element, goesTo);
    PlyRow row;
    for (std::uint64_t i = 0; i < element.count; ++i) {
        rows.readRow(row);
        addStrip(rows, row.indices);
    }
}

void PlyFaces::finish() {
    if (skippedPolygons_ == 1)
        notes_.emplace_back("1 face with fewer than 3 corners is skipped.");
    else if (skippedPolygons_ > 1)
        notes_.push_back(std::to_string(skippedPolygons_) +
                         " faces with fewer than 3 corners are skipped.");
    if (mesh_.triangles.empty()) {
        notes_.emplace_back("There are no faces: the file is a point cloud.");
        mesh_.uvs = {};
    } else if (!cornerUVs_.isEmpty()) {
        finishCornerUVs();
    } else if (!mesh_.uvs.empty()) {
        mesh_.triangleUVs = mesh_.triangles;
    }
}

void PlyFaces::finishCornerUVs() {
    if (!mesh_.uvs.empty())
        notes_.emplace_back("The UVs of vertices are ignored, as the faces have their own.");
    mesh_.uvs = cornerUVs_.takeUVs();
    std::vector<std::uint32_t>& points = mesh_.triangleUVs;
    points.resize(mesh_.triangles.size(), kNoPoint);
    const auto missing = std::count(points.begin(), points.end(), kNoPoint);
    if (missing == 0) return;
    std::replace(points.begin(), points.end(), kNoPoint,
                 static_cast<std::uint32_t>(mesh_.uvs.size() / 2));
    mesh_.uvs.insert(mesh_.uvs.end(), {0.0F, 0.0F});
    notes_.push_back(std::to_string(missing / 3) +
                     (missing == 3 ? " triangle has" : " triangles have") +
                     " no UVs, unlike others; they get 0, 0.");
}

void PlyFaces::addPolygon(const PlyRows& rows, const PlyRow& row) {
    const std::size_t corners = row.indices.size();
    if (corners < 3) {
        ++skippedPolygons_;
        return;
    }
    if (!row.uvs.empty()) addPolygonUVs(rows, row);
    std::uint32_t* to = addTriangles(rows, corners - 2);
    const std::uint32_t first = vertexOf(rows, row.indices[0]);
    std::uint32_t second = vertexOf(rows, row.indices[1]);
    for (std::size_t i = 2; i < corners; ++i) {
        const std::uint32_t third = vertexOf(rows, row.indices[i]);
        *to++ = first;
        *to++ = second;
        *to++ = third;
        second = third;
    }
}

void PlyFaces::addPolygonUVs(const PlyRows& rows, const PlyRow& row) {
    const std::size_t corners = row.indices.size();
    if (row.uvs.size() != 2 * corners)
        rows.fail("a face with " + std::to_string(corners) + " corners has " +
                  std::to_string(row.uvs.size()) +
                  " numbers in its list texcoord, not 2 for each.");
    mesh_.triangleUVs.resize(mesh_.triangles.size(), kNoPoint);
    polygonUVs_.resize(corners);
    for (std::size_t i = 0; i < corners; ++i)
        polygonUVs_[i] =
            cornerUVs_.pointFor(vertexOf(rows, row.indices[i]), row.uvs[2 * i], row.uvs[2 * i + 1]);
    for (std::size_t i = 2; i < corners; ++i) {
        mesh_.triangleUVs.push_back(polygonUVs_[0]);
        mesh_.triangleUVs.push_back(polygonUVs_[i - 1]);
        mesh_.triangleUVs.push_back(polygonUVs_[i]);
    }
}

/// Every other triangle of a strip is turned around; those with a vertex twice only link others.
void PlyFaces::addStrip(const PlyRows& rows, const std::vector<std::int64_t>& indices) {
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    std::size_t length = 0;  // since the start or a -1
    for (const std::int64_t index : indices) {
        if (index == -1 || index == 0xFFFFFFFF) {  // an unsigned type has no other -1
            length = 0;
            continue;
        }
        const std::uint32_t c = vertexOf(rows, index);
        ++length;
        if (length >= 3 && a != b && b != c && c != a) {
            const bool isTurned = length % 2 == 0;
            std::uint32_t* to = addTriangles(rows, 1);
            to[0] = isTurned ? b : a;
            to[1] = isTurned ? a : b;
            to[2] = c;
        }
        a = b;
        b = c;
    }
}

/// Returns where their vertices go.
std::uint32_t* PlyFaces::addTriangles(const PlyRows& rows, std::size_t count) {
    std::vector<std::uint32_t>& triangles = mesh_.triangles;
    const std::size_t before = triangles.size();
    if (count > (kMostElements - before) / 3) rows.fail("there are too many triangles.");
    triangles.resize(before + 3 * count);
    return triangles.data() + before;
}

void PlyFaces::failOutOfRange(const PlyRows& rows, std::int64_t index) const {
    rows.fail(index == kPlyNotWhole
                  ? "an index of a vertex is not a whole number."
                  : "it uses vertex " + std::to_string(index) + ", but there are only " +
                        std::to_string(vertexCount_) + " (counted from 0).");
}

}  // namespace korva
