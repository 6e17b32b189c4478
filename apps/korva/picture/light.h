// SPDX-License-Identifier: MIT
//
// Colours are computed in linear light, which can be added, and encoded as sRGB at the end.
#pragma once

#include "korva/picture/camera.h"

#include <array>
#include <cstdint>

namespace korva {

/// Red, green and blue in linear light; 1 is white.
using Light = std::array<float, 3>;

/// The light of an sRGB value.
[[nodiscard]] float linearOf(std::uint8_t value);
[[nodiscard]] inline Light linearOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return {linearOf(red), linearOf(green), linearOf(blue)};
}

/// The nearest sRGB value; 0 for less than 0, 255 for more than 1.
[[nodiscard]] std::uint8_t srgbOf(float light);

/// What a matte surface sends to the viewer, lit by a key light at the upper left, a weaker fill
/// light at the right and a rim light from behind. The unit normal has x to the right, y up and z
/// to the viewer.
[[nodiscard]] Light lit(const Vector3& normal, const Light& surface);

}  // namespace korva
