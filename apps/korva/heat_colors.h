// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <array>
#include <cstdint>
#include <vector>

namespace korva {

/// Red, green and blue for a share from 0 to 1: dark blue, green, yellow, red. Clamps a share
/// outside that range; NaN counts as 0.
[[nodiscard]] std::array<std::uint8_t, 3> heatColor(double share);

/// The largest distance of a vertex that a triangle uses. The others can be farther away than any
/// triangle.
[[nodiscard]] double largestDistance(const korvalite::Mesh& mesh,
                                     const std::vector<float>& distances);

/// Gives each vertex the colour of its distance. `most` and more is red.
void paintByDistance(korvalite::Mesh& mesh, const std::vector<float>& distances, double most);

}  // namespace korva
