// SPDX-License-Identifier: MIT
#include "support/triangle_grid.h"

#include "formats/active_items.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace korvalite::core::test {

namespace {

constexpr double kFar = std::numeric_limits<double>::infinity();
constexpr double kMostCells = 32e6;

DoubleVec3 scaled(const DoubleVec3& v, double factor) {
    return {v.x * factor, v.y * factor, v.z * factor};
}

double squaredDistanceToEdge(const DoubleVec3& point, const DoubleVec3& a, const DoubleVec3& b) {
    const DoubleVec3 edge = b - a;
    const double length = dot(edge, edge);
    const double along = length > 0 ? std::clamp(dot(point - a, edge) / length, 0.0, 1.0) : 0.0;
    const DoubleVec3 apart = point - (a + scaled(edge, along));
    return dot(apart, apart);
}

}  // namespace

double squaredDistance(const DoubleVec3& point, const Corners& corners) {
    const auto& [a, b, c] = corners;
    const DoubleVec3 normal = cross(b - a, c - a);
    const auto isInside = [&](const DoubleVec3& from, const DoubleVec3& to) {
        return dot(cross(to - from, point - from), normal) >= 0;
    };
    const double square = dot(normal, normal);
    if (square > 0 && isInside(a, b) && isInside(b, c) && isInside(c, a)) {
        const double height = dot(point - a, normal);
        return height * height / square;
    }
    return std::min({squaredDistanceToEdge(point, a, b), squaredDistanceToEdge(point, b, c),
                     squaredDistanceToEdge(point, c, a)});
}

Corners cornersAt(const DMesh& mesh, std::size_t corner) {
    Corners corners;
    for (std::size_t k = 0; k < 3; ++k)
        corners[k] = toDouble(mesh.vertices[mesh.triangles[corner + k]].position());
    return corners;
}

TriangleGrid::TriangleGrid(const DMesh& mesh) : mesh_(mesh) {
    chooseCells();
    fillCells();
}

// Cells are about twice as wide as a triangle, so that most points find their triangle in the first
// cells.
void TriangleGrid::chooseCells() {
    double area = 0;
    double count = 0;
    BoundingBox box;
    forEachActiveTriangle(mesh_, [&](std::size_t corner) {
        const auto [a, b, c] = cornersAt(mesh_, corner);
        const DoubleVec3 normal = cross(b - a, c - a);
        area += std::sqrt(dot(normal, normal)) / 2;
        count += 1;
        for (const DoubleVec3& point : {a, b, c})
            extendBoundingBox(box, toFloat(point));
    });
    if (count == 0) return;
    origin_ = toDouble(box.min);
    const DoubleVec3 extent = toDouble(box.max) - origin_;
    cellSize_ = 2 * std::sqrt(area / count);
    if (!(cellSize_ > 0)) cellSize_ = std::max({extent.x, extent.y, extent.z, 1e-30});
    const auto cells = [&](std::size_t axis) {
        return std::floor(component(extent, static_cast<int>(axis)) / cellSize_) + 1;
    };
    while (cells(0) * cells(1) * cells(2) > kMostCells)
        cellSize_ *= 1.25;
    for (std::size_t axis = 0; axis < 3; ++axis)
        size_[axis] = static_cast<std::int32_t>(cells(axis));
}

// Counts first, then stores each triangle at its place.
void TriangleGrid::fillCells() {
    const auto cellCount = static_cast<std::size_t>(size_[0]) * static_cast<std::size_t>(size_[1]) *
                           static_cast<std::size_t>(size_[2]);
    starts_.assign(cellCount + 1, 0);
    forEachActiveTriangle(mesh_, [&](std::size_t corner) {
        forEachCellOf(cornersAt(mesh_, corner), [&](std::size_t cell) { ++starts_[cell + 1]; });
    });
    for (std::size_t cell = 0; cell < cellCount; ++cell)
        starts_[cell + 1] += starts_[cell];
    items_.resize(starts_.back());
    std::vector<std::uint32_t> next(starts_.begin(), starts_.end() - 1);
    forEachActiveTriangle(mesh_, [&](std::size_t corner) {
        forEachCellOf(cornersAt(mesh_, corner), [&](std::size_t cell) {
            items_[next[cell]++] = static_cast<std::uint32_t>(corner);
        });
    });
}

// The coordinate in units of cells.
double TriangleGrid::coordinate(std::size_t axis, const DoubleVec3& point) const {
    return component(point - origin_, static_cast<int>(axis)) / cellSize_;
}

// The nearest cell, for a point outside the grid.
TriangleGrid::Cell TriangleGrid::cellOf(const DoubleVec3& point) const {
    Cell cell{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double last = size_[axis] - 1;
        cell[axis] = static_cast<std::int32_t>(std::clamp(coordinate(axis, point), 0.0, last));
    }
    return cell;
}

std::size_t TriangleGrid::indexOf(const Cell& cell) const {
    return (static_cast<std::size_t>(cell[2]) * static_cast<std::size_t>(size_[1]) +
            static_cast<std::size_t>(cell[1])) *
               static_cast<std::size_t>(size_[0]) +
           static_cast<std::size_t>(cell[0]);
}

// Visits all cells that the bounding box of a triangle touches.
template <typename Visit>
void TriangleGrid::forEachCellOf(const Corners& corners, Visit visit) const {
    Cell low = cellOf(corners[0]);
    Cell high = low;
    for (std::size_t k = 1; k < 3; ++k) {
        const Cell cell = cellOf(corners[k]);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], cell[axis]);
            high[axis] = std::max(high[axis], cell[axis]);
        }
    }
    for (std::int32_t z = low[2]; z <= high[2]; ++z) {
        for (std::int32_t y = low[1]; y <= high[1]; ++y) {
            for (std::int32_t x = low[0]; x <= high[0]; ++x)
                visit(indexOf({x, y, z}));
        }
    }
}

double TriangleGrid::distanceTo(const DoubleVec3& point) const {
    double nearest = kFar;  // squared
    const Cell center = cellOf(point);
    for (std::int32_t radius = 0;; ++radius) {
        searchShell(point, center, radius, nearest);
        const double reached = reach(point, center, radius);
        if (reached == kFar || nearest <= reached * reached) return std::sqrt(nearest);
    }
}

// Searches the cells that are `radius` steps away from the center along one axis, and at most that
// along the others.
void TriangleGrid::searchShell(const DoubleVec3& point, const Cell& center, std::int32_t radius,
                               double& nearest) const {
    const auto first = [&](std::size_t axis) { return std::max(center[axis] - radius, 0); };
    const auto last = [&](std::size_t axis) {
        return std::min(center[axis] + radius, size_[axis] - 1);
    };
    for (std::int32_t z = first(2); z <= last(2); ++z) {
        for (std::int32_t y = first(1); y <= last(1); ++y) {
            const bool isFace =
                std::abs(z - center[2]) == radius || std::abs(y - center[1]) == radius;
            // Except on a face, only the two ends of a row belong to the shell.
            const std::int32_t step = isFace ? 1 : 2 * radius;
            std::int32_t x = isFace ? first(0) : center[0] - radius;
            if (x < 0) x += step;
            searchRow(point, {x, y, z}, step, last(0), nearest);
        }
    }
}

void TriangleGrid::searchRow(const DoubleVec3& point, const Cell& from, std::int32_t step,
                             std::int32_t end, double& nearest) const {
    for (Cell cell = from; cell[0] <= end; cell[0] += step) {
        const std::size_t index = indexOf(cell);
        for (std::uint32_t i = starts_[index]; i < starts_[index + 1]; ++i)
            nearest = std::min(nearest, squaredDistance(point, cornersAt(mesh_, items_[i])));
    }
}

// A lower bound for the distance of everything outside the cells searched so far.
double TriangleGrid::reach(const DoubleVec3& point, const Cell& center, std::int32_t radius) const {
    double least = kFar;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double at = coordinate(axis, point);
        const std::int32_t low = center[axis] - radius;
        const std::int32_t high = center[axis] + radius + 1;
        if (low > 0) least = std::min(least, at - low);
        if (high < size_[axis]) least = std::min(least, high - at);
    }
    return least * cellSize_;
}

}  // namespace korvalite::core::test
