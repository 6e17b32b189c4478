// SPDX-License-Identifier: MIT
//
// Sets of vertices, corners and triangles in flat arrays, for meshes with many millions of them.
#pragma once

#include <korvalite/korvalite.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

namespace korvalite {

/// Items that are united to sets. Takes 4 bytes for each item.
class DisjointSets {
public:
    explicit DisjointSets(std::size_t count) : parent_(count) {
        std::iota(parent_.begin(), parent_.end(), 0U);
    }

    /// The item that stands for the whole set.
    [[nodiscard]] std::uint32_t find(std::uint32_t item) {
        while (parent_[item] != item) {
            parent_[item] = parent_[parent_[item]];
            item = parent_[item];
        }
        return item;
    }

    /// Returns whether the two were in different sets.
    bool unite(std::uint32_t a, std::uint32_t b) {
        a = find(a);
        b = find(b);
        if (a == b) return false;
        parent_[std::max(a, b)] = std::min(a, b);
        return true;
    }

private:
    std::vector<std::uint32_t> parent_;
};

/// Items sorted by a vertex that each has. Takes 4 bytes for each item and 4 for each vertex.
class VertexGroups {
public:
    /// vertexOf(item) is kNoVertex for an item that is left out.
    template <typename VertexOf>
    VertexGroups(std::size_t vertexCount, std::size_t itemCount, VertexOf vertexOf)
        : end_(vertexCount, 0) {
        std::uint32_t grouped = 0;
        for (std::size_t item = 0; item < itemCount; ++item) {
            const std::uint32_t vertex = vertexOf(item);
            if (vertex == kNoVertex) continue;
            ++end_[vertex];
            ++grouped;
        }
        items_.resize(grouped);
        // Where each group starts, until its items are in.
        std::uint32_t start = 0;
        for (std::uint32_t& end : end_)
            start += std::exchange(end, start);
        for (std::size_t item = 0; item < itemCount; ++item) {
            const std::uint32_t vertex = vertexOf(item);
            if (vertex != kNoVertex) items_[end_[vertex]++] = static_cast<std::uint32_t>(item);
        }
    }

    /// The items of a vertex, in ascending order.
    [[nodiscard]] std::span<const std::uint32_t> of(std::size_t vertex) const {
        const std::size_t begin = vertex == 0 ? 0 : end_[vertex - 1];
        return std::span(items_).subspan(begin, end_[vertex] - begin);
    }

private:
    std::vector<std::uint32_t> end_;
    std::vector<std::uint32_t> items_;
};

}  // namespace korvalite
