// SPDX-License-Identifier: MIT
#include "korva/picture/visible_triangles.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

namespace korva {

namespace {

/// A range of samples, `end` excluded.
struct Range {
    std::size_t begin;
    std::size_t end;
};

/// The samples from `first`, `count` of them, whose middles are between the lowest and the highest
/// of three coordinates.
Range samplesBetween(const std::array<double, 3>& corners, std::size_t first, std::size_t count) {
    const auto begin = static_cast<double>(first);
    const auto end = static_cast<double>(first + count);
    const double low = std::min({corners[0], corners[1], corners[2]}) - 0.5;
    const double high = std::max({corners[0], corners[1], corners[2]}) - 0.5;
    if (!(high >= begin && low < end)) return {first, first};
    Range range{first, first + count};
    if (low > begin) {
        range.begin = static_cast<std::size_t>(low);
        if (static_cast<double>(range.begin) < low) ++range.begin;
    }
    if (high < end - 1) range.end = static_cast<std::size_t>(high) + 1;
    return range;
}

/// Unsigned numbers in the order of the depths.
std::uint64_t keyOf(double depth, std::uint32_t index) {
    constexpr double kMost = std::numeric_limits<float>::max();
    const auto bits =
        std::bit_cast<std::uint32_t>(static_cast<float>(std::clamp(depth, -kMost, kMost)));
    constexpr std::uint32_t kSign = 0x80000000;
    const std::uint32_t ordered = (bits & kSign) != 0 ? ~bits : bits | kSign;
    return std::uint64_t{ordered} << 32U | index;
}

}  // namespace

VisibleTriangles::VisibleTriangles(std::size_t width, std::size_t mostRows)
    : width_(width), samples_(std::make_unique<Sample[]>(width * mostRows)) {}

void VisibleTriangles::start(std::size_t firstRow, std::size_t rowCount) {
    firstRow_ = firstRow;
    rowCount_ = rowCount;
    for (std::size_t i = 0; i < width_ * rowCount; ++i)
        samples_[i].store(std::numeric_limits<std::uint64_t>::max(), std::memory_order_relaxed);
}

/// What all rows of a triangle have in common.
struct VisibleTriangles::Setup {
    std::array<double, 3> steps;   // of the edge functions, to the next sample in a row
    std::array<double, 3> lowest;  // values inside: 0, or a little more if not on the edge itself
    double toSecond;               // depth for each unit of the second edge function
    double toThird;

    explicit Setup(const ScreenTriangle& triangle) {
        for (std::size_t k = 0; k < 3; ++k) {
            steps[k] = triangle.y[(k + 2) % 3] - triangle.y[(k + 1) % 3];
            lowest[k] = triangle.ownsEdge(k) ? 0 : std::numeric_limits<double>::min();
        }
        const double perArea = 1 / triangle.area;
        toSecond = (triangle.z[1] - triangle.z[0]) * perArea;
        toThird = (triangle.z[2] - triangle.z[0]) * perArea;
    }
};

void VisibleTriangles::draw(const ScreenTriangle& triangle, std::uint32_t index) {
    const Range columns = samplesBetween(triangle.x, 0, width_);
    if (columns.begin >= columns.end) return;
    const Range rows = samplesBetween(triangle.y, firstRow_, rowCount_);
    if (rows.begin >= rows.end) return;
    const Setup setup(triangle);
    for (std::size_t y = rows.begin; y < rows.end; ++y)
        drawRow(triangle, setup, index, y, columns.begin, columns.end);
}

void VisibleTriangles::drawRow(const ScreenTriangle& triangle, const Setup& setup,
                               std::uint32_t index, std::size_t y, std::size_t begin,
                               std::size_t end) {
    const double middleX = static_cast<double>(begin) + 0.5;
    const double middleY = static_cast<double>(y) + 0.5;
    std::array<double, 3> edges{triangle.edge(0, middleX, middleY),
                                triangle.edge(1, middleX, middleY),
                                triangle.edge(2, middleX, middleY)};
    Sample* row = &samples_[(y - firstRow_) * width_];
    bool wasInside = false;
    for (std::size_t x = begin; x < end; ++x) {
        if (edges[0] >= setup.lowest[0] && edges[1] >= setup.lowest[1] &&
            edges[2] >= setup.lowest[2]) {
            wasInside = true;
            const double depth =
                triangle.z[0] + edges[1] * setup.toSecond + edges[2] * setup.toThird;
            const std::uint64_t key = keyOf(depth, index);
            std::uint64_t nearest = row[x].load(std::memory_order_relaxed);
            while (key < nearest &&
                   !row[x].compare_exchange_weak(nearest, key, std::memory_order_relaxed)) {
            }
        } else if (wasInside) {
            return;
        }
        for (std::size_t k = 0; k < 3; ++k)
            edges[k] += setup.steps[k];
    }
}

}  // namespace korva
