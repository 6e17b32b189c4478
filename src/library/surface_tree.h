// SPDX-License-Identifier: MIT
//
// A tree of boxes around the triangles of a mesh.
#pragma once

#include "library/closest_point.h"
#include "library/work_report.h"
#include <korvalite/korvalite.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace korvalite {

using IndexTriple = std::array<std::uint32_t, 3>;

/// Its corners are floats, so it needs no rounding.
struct Box {
    std::array<float, 3> low;
    std::array<float, 3> high;
};

/// The children of an inner node are the next one and `next`.
struct TreeNode {
    Box box;
    std::uint32_t next;   // the first triangle of a leaf
    std::uint32_t count;  // of its triangles; 0 in an inner node
};
static_assert(sizeof(TreeNode) == 32);

struct TreeParts {
    std::vector<TreeNode> nodes;
    std::vector<IndexTriple> triangles;  // in the order of the leaves
};

/// No leaf is deeper than kDeepestLeaf. REQUIRES: indices and coordinates have been checked, and
/// there are triangles.
[[nodiscard]] TreeParts buildTree(const MeshView& mesh, WorkReport& report);

inline constexpr std::size_t kDeepestLeaf = 100;

class SurfaceTree {
public:
    SurfaceTree(std::span<const float> positions, TreeParts parts);

    struct Hit {
        core::DoubleVec3 offset;     // from the point
        double square = 0;           // of the distance
        std::uint32_t triangle = 0;  // its place among triangles()
    };

    /// The nearest place on the surface. The square is that of the nearest triangle to the last
    /// bit, whatever the guess; a guess near the truth makes it faster.
    [[nodiscard]] Hit nearest(const core::DoubleVec3& point, std::uint32_t guess = 0) const;

    /// The same for one triangle.
    [[nodiscard]] Hit nearestOn(std::uint32_t triangle, const core::DoubleVec3& point) const;

    /// In an order in which neighbours are mostly near each other.
    [[nodiscard]] std::span<const IndexTriple> triangles() const { return parts_.triangles; }
    [[nodiscard]] core::DoubleVec3 vertex(std::size_t index) const {
        const float* place = &positions_[3 * index];
        return {static_cast<double>(place[0]), static_cast<double>(place[1]),
                static_cast<double>(place[2])};
    }
    [[nodiscard]] TriangleCorners corners(std::uint32_t triangle) const {
        const IndexTriple& t = parts_.triangles[triangle];
        return {vertex(t[0]), vertex(t[1]), vertex(t[2])};
    }
    [[nodiscard]] std::size_t vertexCount() const { return positions_.size() / 3; }
    [[nodiscard]] const Box& box() const { return parts_.nodes.front().box; }
    [[nodiscard]] double area() const { return area_; }
    [[nodiscard]] double volume() const { return volume_; }

private:
    void sumUp();

    std::span<const float> positions_;
    TreeParts parts_;
    double area_ = 0;
    double volume_ = 0;
};

struct SurfaceInside {
    [[nodiscard]] static const SurfaceTree& treeOf(const Surface& surface) {
        return *surface.tree_;
    }
};

}  // namespace korvalite
