// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <array>
#include <cstdint>
#include <vector>

namespace korva {

/// Red, green and blue for a share from 0 to 1: dark blue, green, yellow, red. Limits what is
/// outside; NaN counts as 0.
[[nodiscard]] std::array<std::uint8_t, 3> heatColor(double share);

/// Of the vertices that triangles use. The others can be farther away than any triangle.
[[nodiscard]] double largestDistance(const korvalite::Mesh& mesh,
                                     const std::vector<float>& distances);

/// Gives each vertex the colour of its distance, where `most` is red.
void paintByDistance(korvalite::Mesh& mesh, const std::vector<float>& distances, double most);

}  // namespace korva
