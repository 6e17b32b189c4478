// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_colors.h"

#include <cmath>
#include <utility>

namespace korva {

namespace {

constexpr float kLeastOfBytes = 2;
constexpr std::uint8_t kFull = 255;

}  // namespace

ObjColors::Oddities ObjColors::add(std::size_t vertex, std::span<const float> channels) {
    Oddities oddities;
    bytes_.resize(4 * vertex, kFull);
    for (const float channel : channels) {
        isScaleWrong_ =
            isScaleWrong_ || (scale_ == ObjColorScale::Unit && channel >= kLeastOfBytes);
        oddities.hasFraction = oddities.hasFraction || (channel > 0 && channel < 1);
        const float byte = std::round(scale_ == ObjColorScale::Unit ? 255 * channel : channel);
        const bool isByte = byte >= 0 && byte <= 255;  // not NaN
        oddities.isClamped = oddities.isClamped || !isByte;
        const std::uint8_t nearest = byte > 255 ? kFull : std::uint8_t{0};
        bytes_.push_back(isByte ? static_cast<std::uint8_t>(byte) : nearest);
    }
    if (channels.size() == 3) bytes_.push_back(kFull);
    ++count_;
    return oddities;
}

std::vector<std::uint8_t> ObjColors::take(std::size_t vertexCount) {
    if (count_ > 0) bytes_.resize(4 * vertexCount, kFull);
    return std::exchange(bytes_, {});
}

}  // namespace korva
