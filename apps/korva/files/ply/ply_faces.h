// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "korva/files/ply/ply_rows.h"
#include "korva/files/shared_uvs.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korva {

/// Where the properties of an element "face" or "tristrips" go. Throws korvalite::Error if it has
/// no list of vertices.
[[nodiscard]] std::vector<int> plyFaceColumns(const InputFile& file, const PlyElement& element,
                                              ImportedMesh& imported);

/// Collects the triangles of all elements that have some. Elements may come before the vertices.
class PlyFaces {
public:
    PlyFaces(std::size_t vertexCount, ImportedMesh& imported)
        : vertexCount_(vertexCount), mesh_(imported.mesh), notes_(imported.notes),
          cornerUVs_(vertexCount) {}

    /// `expected` is an estimate of the number of triangles.
    void readFaces(PlyRows& rows, const PlyElement& element, const std::vector<int>& goesTo,
                   std::size_t expected);
    void readStrips(PlyRows& rows, const PlyElement& element, const std::vector<int>& goesTo);

    /// Once all elements are read: settles the UVs, and notes what was left out.
    void finish();

private:
    void addPolygon(const PlyRows& rows, const PlyRow& row);
    void addPolygonUVs(const PlyRows& rows, const PlyRow& row);
    void addStrip(const PlyRows& rows, const std::vector<std::int64_t>& indices);
    std::uint32_t* addTriangles(const PlyRows& rows, std::size_t count);
    [[nodiscard]] std::uint32_t vertexOf(const PlyRows& rows, std::int64_t index) const {
        if (static_cast<std::uint64_t>(index) >= vertexCount_) failOutOfRange(rows, index);
        return static_cast<std::uint32_t>(index);
    }
    [[noreturn]] void failOutOfRange(const PlyRows& rows, std::int64_t index) const;
    void finishCornerUVs();

    std::size_t vertexCount_;
    korvalite::Mesh& mesh_;
    std::vector<std::string>& notes_;
    SharedUVs cornerUVs_;
    std::uint64_t skippedPolygons_ = 0;
    std::vector<std::uint32_t> polygonUVs_;  // of the corners of one polygon
};

}  // namespace korva
