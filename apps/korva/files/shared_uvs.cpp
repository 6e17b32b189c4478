// SPDX-License-Identifier: MIT
#include "korva/files/shared_uvs.h"

#include <bit>

namespace korva {

namespace {

// A vertex with a million different UVs around it must not take a million steps for each.
constexpr int kMostSteps = 32;

bool isSameBits(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

}  // namespace

std::uint32_t SharedUVs::pointFor(std::uint32_t vertex, float u, float v) {
    if (latest_.empty()) latest_.assign(vertexCount_, kNoPoint);
    std::uint32_t point = latest_[vertex];
    for (int step = 0; step < kMostSteps && point != kNoPoint; ++step) {
        const float* uv = &uvs_[2 * std::size_t{point}];
        if (isSameBits(uv[0], u) && isSameBits(uv[1], v)) return point;
        point = earlier_[point];
    }
    const auto added = static_cast<std::uint32_t>(earlier_.size());
    uvs_.push_back(u);
    uvs_.push_back(v);
    earlier_.push_back(latest_[vertex]);
    latest_[vertex] = added;
    return added;
}

}  // namespace korva
