// SPDX-License-Identifier: MIT
//
// A side is an edge as one triangle has it: side s leads from corner s to the next corner of
// triangle s / 3. The sides are grouped by their lower vertex, so that the sides of one edge, and
// with them its triangles, come together without a search.
#include "library/check_parts.h"
#include "library/flat_sets.h"

#include <cstddef>
#include <span>
#include <utility>

namespace korvalite {

namespace {

constexpr std::uint32_t nextInTriangle(std::uint32_t corner) {
    return corner % 3 == 2 ? corner - 2 : corner + 1;
}

class EdgeCheck {
public:
    EdgeCheck(const MeshView& mesh, const CheckedTriangles& triangles, MeshCheck& check)
        : mesh_(mesh), triangles_(triangles), check_(check), vertexCount_(mesh.vertexCount()),
          fans_(3 * triangles.vertices.size()), borders_(vertexCount_), isOnBorder_(vertexCount_) {}

    void run() {
        visitEdges();
        countFans();
    }

private:
    struct Side {
        std::uint32_t higherEnd;
        std::uint32_t side;
        bool operator<(const Side& other) const {
            return std::pair(higherEnd, side) < std::pair(other.higherEnd, other.side);
        }
    };
    using Sides = std::span<const Side>;  // of one edge, in ascending order

    [[nodiscard]] std::uint32_t vertexAtCorner(std::uint32_t corner) const {
        return triangles_.vertices[corner / 3][corner % 3];
    }

    /// The corner at `vertex`, which is an end of the side.
    [[nodiscard]] std::uint32_t cornerAt(const Side& side, std::uint32_t vertex) const {
        return vertexAtCorner(side.side) == vertex ? side.side : nextInTriangle(side.side);
    }

    void visitEdges() {
        const VertexGroups groups(vertexCount_, 3 * triangles_.vertices.size(), [&](std::size_t s) {
            const auto side = static_cast<std::uint32_t>(s);
            return std::min(vertexAtCorner(side), vertexAtCorner(nextInTriangle(side)));
        });
        std::vector<Side> sides;
        for (std::uint32_t vertex = 0; vertex < vertexCount_; ++vertex) {
            sides.clear();
            for (const std::uint32_t side : groups.of(vertex)) {
                const std::uint32_t higherEnd =
                    std::max(vertexAtCorner(side), vertexAtCorner(nextInTriangle(side)));
                sides.push_back({higherEnd, side});
            }
            std::sort(sides.begin(), sides.end());
            for (std::size_t begin = 0, end = 0; begin < sides.size(); begin = end) {
                while (end < sides.size() && sides[end].higherEnd == sides[begin].higherEnd)
                    ++end;
                visitEdge(vertex, Sides(sides).subspan(begin, end - begin));
            }
        }
    }

    void visitEdge(std::uint32_t lowerEnd, Sides sides) {
        const std::uint32_t place = sides.front().side / 3;
        if (sides.size() == 1) {
            addFault(check_.borderEdges, check_.places.borderEdges, place);
            addToBorder(lowerEnd, sides.front().higherEnd);
        } else if (sides.size() > 2) {
            addFault(check_.nonManifoldEdges, check_.places.nonManifoldEdges, place);
        } else {
            visitInnerEdge(lowerEnd, sides[0], sides[1]);
        }
    }

    void visitInnerEdge(std::uint32_t lowerEnd, const Side& a, const Side& b) {
        bool isSeam = false;
        for (const std::uint32_t end : {lowerEnd, a.higherEnd}) {
            const std::uint32_t cornerOfA = cornerAt(a, end);
            const std::uint32_t cornerOfB = cornerAt(b, end);
            fans_.unite(cornerOfA, cornerOfB);
            isSeam |= doUVsDiffer(cornerOfA, cornerOfB);
        }
        if (isSeam) ++check_.seamEdges;
        if (vertexAtCorner(a.side) == vertexAtCorner(b.side))
            addFault(check_.flippedEdges, check_.places.flippedEdges, a.side / 3);
    }

    [[nodiscard]] bool doUVsDiffer(std::uint32_t cornerA, std::uint32_t cornerB) const {
        if (triangles_.uvs.empty()) return false;
        const std::size_t a = triangles_.uvs[cornerA / 3][cornerA % 3];
        const std::size_t b = triangles_.uvs[cornerB / 3][cornerB % 3];
        if (a == kNoVertex || b == kNoVertex || a == b) return false;
        return mesh_.uvs[2 * a] != mesh_.uvs[2 * b] || mesh_.uvs[2 * a + 1] != mesh_.uvs[2 * b + 1];
    }

    /// The number of sets is that of their vertices less that of the unions.
    void addToBorder(std::uint32_t a, std::uint32_t b) {
        for (const std::uint32_t end : {a, b}) {
            if (isOnBorder_[end]) continue;
            isOnBorder_[end] = true;
            ++check_.borderLoops;
        }
        if (borders_.unite(a, b)) --check_.borderLoops;
    }

    void countFans() {
        std::vector<bool> hasFan(vertexCount_);
        std::vector<bool> hasSeveral(vertexCount_);
        const auto cornerCount = static_cast<std::uint32_t>(3 * triangles_.vertices.size());
        for (std::uint32_t corner = 0; corner < cornerCount; ++corner) {
            if (!triangles_.isInTopology(corner / 3) || fans_.find(corner) != corner) continue;
            const std::uint32_t vertex = vertexAtCorner(corner);
            if (!hasFan[vertex]) {
                hasFan[vertex] = true;
            } else if (!hasSeveral[vertex]) {
                hasSeveral[vertex] = true;
                addFault(check_.nonManifoldVertices, check_.places.nonManifoldVertices, vertex);
            }
        }
    }

    const MeshView& mesh_;
    const CheckedTriangles& triangles_;
    MeshCheck& check_;
    std::size_t vertexCount_;
    DisjointSets fans_;  // of corners, united across the edges of two triangles
    DisjointSets borders_;
    std::vector<bool> isOnBorder_;
};

}  // namespace

void checkEdges(const MeshView& mesh, const CheckedTriangles& triangles, MeshCheck& check) {
    EdgeCheck(mesh, triangles, check).run();
}

}  // namespace korvalite
