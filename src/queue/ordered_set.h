// SPDX-License-Identifier: MIT
//
// Vertices in exact order of cost; among equals the lower index comes first.
//
// Two levels of sorted arrays (a B+ tree that never grows taller), with the cheapest vertices at
// the end of both. The set is nearly always small, and then occupies a few consecutive cache lines,
// which matters most when several threads take turns using it. Even if a flat mesh puts all its
// vertices into the set, an insertion moves only a few kilobytes on average.
//
// Thread safety: none.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace korvalite::core {

class OrderedSet {
public:
    /// The cost in the high bits and the vertex in the low bits, so comparing keys compares
    /// vertices.
    // As in a radix sort of floats, flips all bits of negative costs and the sign bit of the
    // others; adding zero turns -0 into +0.
    using Key = std::uint64_t;
    static Key keyOf(std::int32_t vertex, float cost) {
        // COMPAT: -0 equals +0, and among equals the lower index comes first; outputs depend on it.
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

    /// The first vertex in order for which accept(vertex) is true; -1 if there is none.
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

    /// Empties the set and frees its storage.
    void clear() { runs_.clear(); }

private:
    static constexpr std::size_t kRunCapacity = 256;
    using Keys = std::array<Key, kRunCapacity>;

    // Consecutive keys in descending order. None is above `bound`; all keys of the previous run
    // are.
    struct Run {
        Key bound = 0;
        std::size_t count = 0;
        std::unique_ptr<Keys> keys;
    };

    [[nodiscard]] Run& runOf(Key key);
    void split(Run& run);

    std::vector<Run> runs_;  // a run may be empty only if it is the only one
};

}  // namespace korvalite::core
