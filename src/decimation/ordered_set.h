// SPDX-License-Identifier: MIT
//
// Vertices in exact order of cost, the lower index first among equals.
//
// Two levels of sorted arrays (a B+ tree that never grows higher), the cheapest at the very end of
// both: the set is small nearly always, and then it is a few cache lines in a row, which matters
// most where several threads take turns at it. Where a flat mesh puts all its vertices into it, an
// insertion still moves no more than some kilobytes on average.
//
// Thread safety: none.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace korvalite {

class OrderedSet {
public:
    /// The cost above the vertex, so that integers in order are vertices in order.
    // All bits of a negative float are turned over and the sign of the others, as in a radix sort;
    // minus zero is made the zero that it equals.
    using Key = std::uint64_t;
    static Key keyOf(std::int32_t vertex, float cost) {
        const auto bits = std::bit_cast<std::uint32_t>(cost + 0.0F);
        const std::uint32_t ordered = bits ^ ((bits >> 31U) != 0 ? 0xFFFFFFFFU : 0x80000000U);
        return Key{ordered} << 32U | static_cast<std::uint32_t>(vertex);
    }
    static std::int32_t vertexOf(Key key) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(key));
    }

    [[nodiscard]] bool empty() const { return runs_.empty() || runs_.back().count == 0; }

    /// REQUIRES: not empty.
    [[nodiscard]] std::int32_t first() const {
        return vertexOf((*runs_.back().keys)[runs_.back().count - 1]);
    }

    /// REQUIRES: the vertex is not in the set. Throws std::bad_alloc and leaves the set as it was.
    void insert(std::int32_t vertex, float cost);

    /// REQUIRES: the vertex is in the set with this cost.
    void erase(std::int32_t vertex, float cost);

    /// The first vertex in order that accept(vertex) takes; -1 if it takes none.
    template <typename Accept>
    std::int32_t firstAccepted(Accept accept) const {
        for (std::size_t r = runs_.size(); r-- > 0;) {
            for (std::size_t i = runs_[r].count; i-- > 0;) {
                const std::int32_t vertex = vertexOf((*runs_[r].keys)[i]);
                if (accept(vertex)) return vertex;
            }
        }
        return -1;
    }

    /// Empties the set and returns its storage.
    void clear() { runs_.clear(); }

private:
    static constexpr std::size_t kRunCapacity = 256;
    using Keys = std::array<Key, kRunCapacity>;

    // Some keys that follow each other, the greatest in front. None is above `bound`, and all of
    // the run in front of this one are.
    struct Run {
        Key bound = 0;
        std::size_t count = 0;
        std::unique_ptr<Keys> keys;
    };

    [[nodiscard]] Run& runOf(Key key);
    void split(Run& run);

    std::vector<Run> runs_;  // only a single one may be empty
};

}  // namespace korvalite
