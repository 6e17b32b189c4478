// SPDX-License-Identifier: MIT
//
// A surface cut into pieces of nearly equal size, whose middles are samples.
#pragma once

#include "library/surface_tree.h"

#include <array>
#include <cstdint>
#include <vector>

namespace korvalite {

struct Piece {
    TriangleCorners corners;
    double area = 0;
};

/// The square of the longest edge, and the corner that it is opposite to.
struct LongestEdge {
    double square;
    std::size_t opposite;
};
[[nodiscard]] LongestEdge longestEdgeOf(const TriangleCorners& corners);
[[nodiscard]] Piece pieceOf(const TriangleCorners& corners);

/// Cuts a piece from the middle of its longest edge.
[[nodiscard]] std::array<Piece, 2> halvesOf(const Piece& piece);

/// Calls visit(piece) for pieces without an edge longer than `spacing`: halves the longest edge
/// until they are (Rivara, "Algorithms for Refining Triangular Grids Suitable for Adaptive and
/// Multigrid Techniques", 1984).
template <typename Visit>
void forEachPiece(const Piece& piece, double spacing, Visit&& visit) {
    const LongestEdge edge = longestEdgeOf(piece.corners);
    if (!(edge.square > spacing * spacing)) {
        visit(piece);
        return;
    }
    for (const Piece& half : halvesOf(piece))
        forEachPiece(half, spacing, visit);
}

/// How the triangles of a surface are cut. Those with many pieces are cut to patches first, so that
/// no thread has to work on one for long. Items are the triangles and then the patches.
class Pieces {
public:
    /// Cuts the surface into about `count` pieces, at least one for each triangle.
    Pieces(const SurfaceTree& surface, std::uint64_t count);

    /// About how many pieces there are.
    [[nodiscard]] std::uint64_t count() const { return count_; }
    [[nodiscard]] std::size_t itemCount() const {
        return surface_.triangles().size() + patches_.size();
    }
    [[nodiscard]] TriangleCorners cornersOf(std::size_t item) const {
        const std::size_t triangles = surface_.triangles().size();
        return item < triangles ? surface_.corners(static_cast<std::uint32_t>(item))
                                : patches_[item - triangles].piece.corners;
    }
    /// Calls visit(piece) for each piece of an item; a triangle with patches has none itself.
    template <typename Visit>
    void forEachOf(std::size_t item, Visit&& visit) const {
        const std::size_t triangles = surface_.triangles().size();
        if (item >= triangles) {
            const Patch& patch = patches_[item - triangles];
            forEachPiece(patch.piece, patch.spacing, visit);
            return;
        }
        const Piece whole = pieceOf(surface_.corners(static_cast<std::uint32_t>(item)));
        const Cut cut = cutOf(whole.corners);
        if (!cut.hasPatches) forEachPiece(whole, cut.spacing, visit);
    }

private:
    struct Cut {
        double spacing;
        bool hasPatches;
    };
    struct Patch {
        Piece piece;
        double spacing = 0;
    };
    static constexpr double kPatchWidth = 16;

    [[nodiscard]] Cut cutOf(const TriangleCorners& corners) const;

    const SurfaceTree& surface_;
    std::uint64_t count_;
    double spacing_ = 0;       // of well-shaped triangles
    double countPerEdge_ = 0;  // pieces per length of the longest edge
    std::vector<Patch> patches_;
};

}  // namespace korvalite
