// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace korva {

inline constexpr std::uint32_t kNoPoint = 0xFFFFFFFF;  // of UV points

/// The UV points of a file that has UVs for each corner: corners at the same vertex share a point
/// where their UVs are the same bits. At a vertex with very many points, some can repeat.
class SharedUVs {
public:
    explicit SharedUVs(std::size_t vertexCount) : vertexCount_(vertexCount) {}

    /// The index of a point with these UVs.
    std::uint32_t pointFor(std::uint32_t vertex, float u, float v);

    [[nodiscard]] bool isEmpty() const { return uvs_.empty(); }

    /// u and v of each point.
    [[nodiscard]] std::vector<float> takeUVs() { return std::move(uvs_); }

private:
    std::size_t vertexCount_;
    std::vector<float> uvs_;
    std::vector<std::uint32_t> latest_;   // point of each vertex
    std::vector<std::uint32_t> earlier_;  // point of the same vertex, for each point
};

}  // namespace korva
