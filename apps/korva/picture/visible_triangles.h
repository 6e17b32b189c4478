// SPDX-License-Identifier: MIT
#pragma once

#include "korva/picture/screen_triangle.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

namespace korva {

/// Which triangle is seen at each sample of a rectangle of the picture. Threads may draw different
/// triangles at once: the nearest wins, and the lower index among equals, in whatever order they
/// come.
class VisibleTriangles {
public:
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

    VisibleTriangles(std::size_t width, std::size_t mostRows);

    /// Forgets everything; the rows from `firstRow` are drawn next.
    void start(std::size_t firstRow, std::size_t rowCount);

    void draw(const ScreenTriangle& triangle, std::uint32_t index);

    /// The triangle at a sample, or kNone.
    [[nodiscard]] std::uint32_t at(std::size_t x, std::size_t y) const {
        const Sample& sample = samples_[(y - firstRow_) * width_ + x];
        return static_cast<std::uint32_t>(sample.load(std::memory_order_relaxed));
    }

private:
    /// Depth in the upper half, in an order that compares like the depth, and the index in the
    /// lower half.
    using Sample = std::atomic<std::uint64_t>;

    struct Setup;
    void drawRow(const ScreenTriangle& triangle, const Setup& setup, std::uint32_t index,
                 std::size_t y, std::size_t begin, std::size_t end);

    std::size_t width_;
    std::size_t firstRow_ = 0;
    std::size_t rowCount_ = 0;
    std::unique_ptr<Sample[]> samples_;
};

}  // namespace korva
