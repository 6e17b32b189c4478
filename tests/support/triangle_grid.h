// SPDX-License-Identifier: MIT
//
// Finds the distance of a point from a surface: a uniform grid over the bounding box, with the
// active triangles that touch each cell.
#pragma once

#include "geometry/vec3.h"
#include "mesh/dmesh.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvalite::core::test {

using Corners = std::array<DoubleVec3, 3>;

// The distance to the nearest point of a triangle, which may have no area.
double squaredDistance(const DoubleVec3& point, const Corners& corners);

// The positions of the triangle that starts at a corner.
Corners cornersAt(const DMesh& mesh, std::size_t corner);

class TriangleGrid {
public:
    // The mesh must outlive the grid and must not change. Its indices must be in range, and its
    // coordinates finite.
    explicit TriangleGrid(const DMesh& mesh);

    // The result is infinite if no triangle is active.
    double distanceTo(const DoubleVec3& point) const;

private:
    using Cell = std::array<std::int32_t, 3>;

    void chooseCells();
    void fillCells();
    double coordinate(std::size_t axis, const DoubleVec3& point) const;
    Cell cellOf(const DoubleVec3& point) const;
    std::size_t indexOf(const Cell& cell) const;
    template <typename Visit>
    void forEachCellOf(const Corners& corners, Visit visit) const;

    void searchShell(const DoubleVec3& point, const Cell& center, std::int32_t radius,
                     double& nearest) const;
    void searchRow(const DoubleVec3& point, const Cell& from, std::int32_t step, std::int32_t end,
                   double& nearest) const;
    double reach(const DoubleVec3& point, const Cell& center, std::int32_t radius) const;

    const DMesh& mesh_;
    DoubleVec3 origin_;
    double cellSize_ = 1;
    Cell size_{1, 1, 1};
    // The first corners of the triangles in cell i: items_[starts_[i]] up to items_[starts_[i +
    // 1]].
    std::vector<std::uint32_t> starts_;
    std::vector<std::uint32_t> items_;
};

}  // namespace korvalite::core::test
