// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_mesh.h"

#include "korva/files/point_table.h"
#include "korva/files/shared_uvs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>
#include <string>
#include <utility>

namespace korva {

namespace {

constexpr std::size_t kBatch = PointTable::kBatch;
constexpr std::size_t kRowsPerPulse = std::size_t{1} << 18U;

/// NaN becomes 0.
std::uint8_t byteOf(float share) {
    return share > 0 ? static_cast<std::uint8_t>(std::lround(255 * std::min(share, 1.0F))) : 0;
}

class MeshReader {
public:
    MeshReader(const GltfFile& file, const GltfMesh& source, const GltfTransform& transform,
               GltfWeldCounts& counts)
        : file_(file), source_(source), transform_(transform), counts_(counts),
          sharedUVs_(static_cast<std::size_t>(source.vertexCount)) {}

    korvalite::Mesh read() {
        readVertices();
        readTriangles();
        if (isMirroring(transform_)) turnOver();
        return std::move(result_);
    }

private:
    void readVertices() {
        const auto vertices = static_cast<std::size_t>(source_.vertexCount);
        newIndex_.resize(vertices);
        result_.positions.reserve(3 * vertices);
        if (source_.hasColors) result_.colors.reserve(4 * vertices);
        reserveTable(vertices);
        if (source_.hasUVs) uvPoint_.resize(vertices);
        for (const GltfVertices& group : source_.vertices)
            addVertices(group);
        counts_.joined += vertices - table_.size();
        result_.positions.resize(std::size_t{3} * table_.size());
        // Only if it saves much, because it makes a copy.
        if (result_.positions.capacity() > 2 * result_.positions.size())
            result_.positions.shrink_to_fit();
        if (source_.hasUVs) result_.uvs = sharedUVs_.takeUVs();
        table_ = PointTable();
        sharedUVs_ = SharedUVs(0);
    }

    void readTriangles() {
        const auto corners = static_cast<std::size_t>(3 * source_.triangleCount);
        result_.triangles.reserve(corners);
        if (source_.hasUVs) result_.triangleUVs.reserve(corners);
        for (const GltfPrimitive& primitive : source_.primitives)
            addTriangles(primitive);
    }

    void reserveTable(std::size_t vertices) {
        // A closed surface has about half as many different vertices as triangles.
        const auto triangles = static_cast<std::size_t>(source_.triangleCount);
        table_.reserve(std::min(vertices, triangles / 2 + triangles / 32 + kBatch));
    }

    void addVertices(const GltfVertices& vertices) {
        firstVertex_.push_back(done_);
        const std::size_t count = vertices.positions.rows.count;
        for (std::size_t begin = 0; begin < count; begin += kBatch) {
            const std::size_t part = std::min(kBatch, count - begin);
            addPositions(vertices.positions, begin, part);
            if (source_.hasColors) addColors(vertices, begin, part);
            if (source_.hasUVs) addUVs(vertices, begin, part);
            done_ += part;
            pulse(part);
        }
    }

    void addPositions(const GltfAccessor& positions, std::size_t begin, std::size_t count) {
        std::array<float, 3 * kBatch> points{};
        readGltfFloats(positions, begin, count, points.data());
        applyTransform(transform_, points.data(), count);
        result_.positions.resize(3 * (table_.size() + count));
        table_.findOrAdd(result_.positions.data(), {points.data(), 3 * count}, &newIndex_[done_]);
    }

    void addColors(const GltfVertices& vertices, std::size_t begin, std::size_t count) {
        std::array<float, 4 * kBatch> shares{};
        std::size_t columns = 0;
        if (vertices.colors) {
            readGltfFloats(*vertices.colors, begin, count, shares.data());
            columns = vertices.colors->rows.columns;
        }
        for (std::size_t i = 0; i < count; ++i) {
            std::array<std::uint8_t, 4> color{255, 255, 255, 255};
            for (std::size_t c = 0; c < columns; ++c)
                color[c] = byteOf(shares[columns * i + c]);
            const std::size_t vertex = newIndex_[done_ + i];
            if (4 * vertex == result_.colors.size())
                result_.colors.insert(result_.colors.end(), color.begin(), color.end());
            else if (std::memcmp(&result_.colors[4 * vertex], color.data(), 4) != 0)
                ++counts_.differing;
        }
    }

    void addUVs(const GltfVertices& vertices, std::size_t begin, std::size_t count) {
        std::array<float, 2 * kBatch> uvs{};
        if (vertices.uvs) readGltfFloats(*vertices.uvs, begin, count, uvs.data());
        for (std::size_t i = 0; i < count; ++i) {
            // The origin of textures is at the top in glTF and at the bottom elsewhere.
            const float v = vertices.uvs ? 1 - uvs[2 * i + 1] : 0;
            uvPoint_[done_ + i] = sharedUVs_.pointFor(newIndex_[done_ + i], uvs[2 * i], v);
        }
    }

    void addTriangles(const GltfPrimitive& primitive) {
        if (primitive.triangles == 0) return;
        const std::size_t used =
            primitive.mode == GltfMode::Triangles ? 3 * primitive.triangles : primitive.corners;
        std::array<std::uint32_t, 3 * kBatch> corners{};
        std::array<std::uint32_t, 2> previous{};
        for (std::size_t begin = 0; begin < used; begin += corners.size()) {
            const std::size_t part = std::min(corners.size(), used - begin);
            readCorners(primitive, begin, part, corners.data());
            if (primitive.mode == GltfMode::Triangles) {
                addCorners({corners.data(), part});
            } else {
                for (std::size_t i = 0; i < part; ++i)
                    addConnected(primitive.mode, begin + i, corners[i], previous);
            }
            pulse(part);
        }
    }

    /// Reads the vertices of some corners, as indices into all vertices of the mesh.
    void readCorners(const GltfPrimitive& primitive, std::size_t begin, std::size_t count,
                     std::uint32_t* to) const {
        const auto first = static_cast<std::uint32_t>(firstVertex_[primitive.vertices]);
        if (!primitive.indices) {
            for (std::size_t i = 0; i < count; ++i)
                to[i] = static_cast<std::uint32_t>(first + begin + i);
            return;
        }
        const std::size_t vertices = source_.vertices[primitive.vertices].positions.rows.count;
        readGltfIndices(*primitive.indices, begin, count, to);
        for (std::size_t i = 0; i < count; ++i) {
            if (to[i] >= vertices)
                failToRead(file_.path(), primitive.indices->place + ": its element " +
                                             std::to_string(begin + i) + " is the index " +
                                             std::to_string(to[i]) + ", but there are only " +
                                             std::to_string(vertices) + " vertices.");
            to[i] += first;
        }
    }

    void addCorners(std::span<const std::uint32_t> vertices) {
        const auto add = [vertices](std::vector<std::uint32_t>& to,
                                    const std::vector<std::uint32_t>& from) {
            const std::size_t done = to.size();
            to.resize(done + vertices.size());
            for (std::size_t i = 0; i < vertices.size(); ++i)
                to[done + i] = from[vertices[i]];
        };
        add(result_.triangles, newIndex_);
        if (source_.hasUVs) add(result_.triangleUVs, uvPoint_);
    }

    void addCorner(std::uint32_t vertex) {
        result_.triangles.push_back(newIndex_[vertex]);
        if (source_.hasUVs) result_.triangleUVs.push_back(uvPoint_[vertex]);
    }

    /// Each corner of a strip or a fan makes a triangle with two earlier ones.
    void addConnected(GltfMode mode, std::size_t corner, std::uint32_t vertex,
                      std::array<std::uint32_t, 2>& previous) {
        if (corner < 2) {
            previous[corner] = vertex;
            return;
        }
        const bool isOdd = mode == GltfMode::Strip && corner % 2 != 0;
        addCorner(previous[0]);
        addCorner(isOdd ? vertex : previous[1]);
        addCorner(isOdd ? previous[1] : vertex);
        if (mode == GltfMode::Strip) previous[0] = previous[1];
        previous[1] = vertex;
    }

    void turnOver() {
        for (std::size_t i = 0; i < result_.triangles.size(); i += 3)
            std::swap(result_.triangles[i + 1], result_.triangles[i + 2]);
        for (std::size_t i = 0; i < result_.triangleUVs.size(); i += 3)
            std::swap(result_.triangleUVs[i + 1], result_.triangleUVs[i + 2]);
    }

    void pulse(std::size_t rows) {
        sincePulse_ += rows;
        if (sincePulse_ < kRowsPerPulse) return;
        sincePulse_ = 0;
        file_.pulse();
    }

    const GltfFile& file_;
    const GltfMesh& source_;
    const GltfTransform& transform_;
    GltfWeldCounts& counts_;
    korvalite::Mesh result_;
    PointTable table_;
    SharedUVs sharedUVs_;
    std::vector<std::uint32_t> newIndex_;  // of each vertex of the file
    std::vector<std::uint32_t> uvPoint_;   // of each vertex of the file
    std::vector<std::size_t> firstVertex_;
    std::size_t done_ = 0;  // vertices
    std::size_t sincePulse_ = 0;
};

}  // namespace

korvalite::Mesh readGltfMesh(const GltfFile& file, const GltfMesh& mesh,
                             const GltfTransform& transform, GltfWeldCounts& counts) {
    return MeshReader(file, mesh, transform, counts).read();
}

}  // namespace korva
