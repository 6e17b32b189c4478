// SPDX-License-Identifier: MIT
#include "library/surface_tree.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace korvalite {

namespace {

using core::DoubleVec3;

/// How far a coordinate is outside of an interval.
double outside(double low, double high, double x) {
    return std::max(std::max(low - x, x - high), 0.0);
}

double squareTo(const Box& box, const DoubleVec3& p) {
    const auto side = [&](std::size_t axis, double x) {
        return outside(static_cast<double>(box.low[axis]), static_cast<double>(box.high[axis]), x);
    };
    const DoubleVec3 apart{side(0, p.x), side(1, p.y), side(2, p.z)};
    return dot(apart, apart);
}

double squareToBoxOf(const TriangleCorners& t, const DoubleVec3& p) {
    const auto side = [](double a, double b, double c, double x) {
        return outside(std::min(std::min(a, b), c), std::max(std::max(a, b), c), x);
    };
    const DoubleVec3 apart{side(t[0].x, t[1].x, t[2].x, p.x), side(t[0].y, t[1].y, t[2].y, p.y),
                           side(t[0].z, t[1].z, t[2].z, p.z)};
    return dot(apart, apart);
}

/// Rounding must not bring a triangle nearer than its box, or it would depend on the boxes around
/// it whether it is found.
double keepOutside(double square, double squareOfBox) {
    return std::max(square, squareOfBox);
}

}  // namespace

SurfaceTree::SurfaceTree(std::span<const float> positions, TreeParts parts)
    : positions_(positions), parts_(std::move(parts)) {
    sumUp();
}

void SurfaceTree::sumUp() {
    const auto middleOf = [&](std::size_t axis) {
        return (static_cast<double>(box().low[axis]) + static_cast<double>(box().high[axis])) / 2;
    };
    const DoubleVec3 middle{middleOf(0), middleOf(1), middleOf(2)};
    double six = 0;
    for (std::uint32_t t = 0; t < parts_.triangles.size(); ++t) {
        const auto [a, b, c] = corners(t);
        const DoubleVec3 normal = cross(b - a, c - a);
        area_ += std::sqrt(dot(normal, normal)) / 2;
        six += dot(a - middle, normal);
    }
    volume_ = six / 6;
}

SurfaceTree::Hit SurfaceTree::nearestOn(std::uint32_t triangle, const DoubleVec3& point) const {
    const TriangleCorners t = corners(triangle);
    const NearestPlace place = nearestPlace(point, t);
    return {place.offset, keepOutside(place.square, squareToBoxOf(t, point)), triangle};
}

SurfaceTree::Hit SurfaceTree::nearest(const DoubleVec3& point, std::uint32_t guess) const {
    struct Waiting {
        std::uint32_t node;
        double square;
    };
    std::array<Waiting, kDeepestLeaf + 1> stack;  // NOLINT: filled before it is read
    std::size_t waiting = 0;
    Hit best = nearestOn(guess, point);
    const TreeNode* const nodes = parts_.nodes.data();

    Waiting now{0, squareTo(nodes[0].box, point)};
    while (true) {
        if (now.square < best.square) {
            const TreeNode& node = nodes[now.node];
            if (node.count == 0) {
                Waiting near{now.node + 1, squareTo(nodes[now.node + 1].box, point)};
                Waiting far{node.next, squareTo(nodes[node.next].box, point)};
                if (far.square < near.square) std::swap(near, far);
                if (far.square < best.square) stack[waiting++] = far;
                now = near;
                continue;
            }
            for (std::uint32_t t = node.next; t < node.next + node.count; ++t) {
                const TriangleCorners triangle = corners(t);
                const double boxSquare = squareToBoxOf(triangle, point);
                if (boxSquare >= best.square) continue;
                const NearestPlace place = nearestPlace(point, triangle);
                const double square = keepOutside(place.square, boxSquare);
                if (square < best.square) best = {place.offset, square, t};
            }
        }
        if (waiting == 0) return best;
        now = stack[--waiting];
    }
}

}  // namespace korvalite
