// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/index_table.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace korva {

/// Finds points that are equal bit for bit; -0 equals 0. The points are in an array of the caller,
/// each three floats, in the order of their first occurrence.
class PointTable {
public:
    /// The most points that one call takes.
    static constexpr std::size_t kBatch = 192;

    /// Takes the memory for `count` different points at once; that is not a limit. To be called
    /// before the first point is added.
    void reserve(std::size_t count) {
        table_.makeRoom(count, [](std::uint32_t) { return 0U; });
    }

    /// The number of different points so far.
    [[nodiscard]] std::uint32_t size() const { return table_.size(); }

    /// Sets `indices` to the index of each of `points` in `positions`, and stores new ones there.
    /// `positions` has room for all; `points` is outside it.
    void findOrAdd(float* positions, std::span<const float> points, std::uint32_t* indices);

private:
    IndexTable table_;
    std::array<std::uint32_t, kBatch> hashes_{};
};

}  // namespace korva
