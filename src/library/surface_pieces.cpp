// SPDX-License-Identifier: MIT
#include "library/surface_pieces.h"

#include <algorithm>
#include <cmath>

namespace korvalite {

LongestEdge longestEdgeOf(const TriangleCorners& corners) {
    const auto squareOpposite = [&](std::size_t corner) {
        const core::DoubleVec3 edge = corners[(corner + 2) % 3] - corners[(corner + 1) % 3];
        return dot(edge, edge);
    };
    LongestEdge longest{squareOpposite(0), 0};
    for (std::size_t corner = 1; corner < 3; ++corner) {
        const double square = squareOpposite(corner);
        if (square > longest.square) longest = {square, corner};
    }
    return longest;
}

Piece pieceOf(const TriangleCorners& corners) {
    const core::DoubleVec3 normal = cross(corners[1] - corners[0], corners[2] - corners[0]);
    return {corners, std::sqrt(dot(normal, normal)) / 2};
}

std::array<Piece, 2> halvesOf(const Piece& piece) {
    const std::size_t opposite = longestEdgeOf(piece.corners).opposite;
    const core::DoubleVec3& top = piece.corners[opposite];
    const core::DoubleVec3& from = piece.corners[(opposite + 1) % 3];
    const core::DoubleVec3& to = piece.corners[(opposite + 2) % 3];
    const core::DoubleVec3 middle = 0.5 * from + 0.5 * to;
    return {{{{top, from, middle}, piece.area / 2}, {{top, middle, to}, piece.area / 2}}};
}

Pieces::Pieces(const SurfaceTree& surface, std::uint64_t count)
    : surface_(surface), count_(std::max<std::uint64_t>(count, surface.triangles().size())) {
    constexpr double kSquarePerArea = 5;
    const auto triangles = static_cast<std::uint32_t>(surface.triangles().size());
    double edges = 0;
    for (std::uint32_t t = 0; t < triangles; ++t)
        edges += std::sqrt(longestEdgeOf(surface.corners(t)).square);
    spacing_ = std::sqrt(kSquarePerArea * surface.area() / static_cast<double>(count));
    if (edges > 0) countPerEdge_ = static_cast<double>(count) / edges;

    for (std::uint32_t t = 0; t < triangles; ++t) {
        const Piece whole = pieceOf(surface.corners(t));
        const Cut cut = cutOf(whole.corners);
        if (!cut.hasPatches) continue;
        forEachPiece(whole, kPatchWidth * cut.spacing, [&](const Piece& patch) {
            patches_.push_back({patch, cut.spacing});
        });
    }
}

/// Halving its edges cuts a needle whose edge is n spacings long into n^1.6 pieces, however small
/// its area is. So its spacing is at least the one that gives it its share of all pieces.
Pieces::Cut Pieces::cutOf(const TriangleCorners& corners) const {
    const double edge = std::sqrt(longestEdgeOf(corners).square);
    const double share = countPerEdge_ * edge;
    const double most = std::sqrt(share) * std::sqrt(std::sqrt(std::sqrt(share)));  // share^(1/1.6)
    const double spacing = most > 0 ? std::max(spacing_, edge / most) : edge;
    return {spacing, edge > kPatchWidth * spacing};
}

}  // namespace korvalite
