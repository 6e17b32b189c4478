// SPDX-License-Identifier: MIT
#include "korva/heat_colors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace korva {

namespace {

using Color = std::array<double, 3>;

// The lightness grows evenly up to the yellow, so that the order shows without a legend; from there
// on the hue alone makes the largest values stand out.
constexpr std::array kRamp{
    Color{26, 28, 110},  Color{25, 85, 150},  Color{20, 135, 130}, Color{60, 175, 80},
    Color{160, 205, 50}, Color{250, 225, 50}, Color{245, 150, 30}, Color{205, 20, 25},
};

}  // namespace

std::array<std::uint8_t, 3> heatColor(double share) {
    const double limited = share > 0 ? std::min(share, 1.0) : 0.0;
    const double place = limited * static_cast<double>(kRamp.size() - 1);
    const std::size_t below = std::min(static_cast<std::size_t>(place), kRamp.size() - 2);
    const double part = place - static_cast<double>(below);
    std::array<std::uint8_t, 3> color{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double value = kRamp[below][i] + part * (kRamp[below + 1][i] - kRamp[below][i]);
        color[i] = static_cast<std::uint8_t>(std::lround(value));
    }
    return color;
}

double largestDistance(const korvalite::Mesh& mesh, const std::vector<float>& distances) {
    float largest = 0;
    for (const std::uint32_t vertex : mesh.triangles)
        largest = std::max(largest, distances[vertex]);
    return static_cast<double>(largest);
}

void paintByDistance(korvalite::Mesh& mesh, const std::vector<float>& distances, double most) {
    mesh.colors.clear();
    mesh.colors.reserve(4 * mesh.vertexCount());
    for (const float distance : distances) {
        const auto color = heatColor(most > 0 ? static_cast<double>(distance) / most : 0);
        mesh.colors.insert(mesh.colors.end(), {color[0], color[1], color[2], 255});
    }
}

}  // namespace korva
