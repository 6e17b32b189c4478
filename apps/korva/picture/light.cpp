// SPDX-License-Identifier: MIT
#include "korva/picture/light.h"

#include <algorithm>
#include <cmath>

namespace korva {

namespace {

/// A light that is far away.
struct Lamp {
    Vector3 direction;  // to it, a unit vector
    Light light;
    double wrap;  // how far it reaches around, which makes it soft: 0 is a point
};

constexpr std::array kLamps{
    Lamp{{-0.4540, 0.6437, 0.6160}, {0.94F, 0.90F, 0.84F}, 0.10},  // key
    Lamp{{0.8443, 0.1583, 0.5118}, {0.11F, 0.13F, 0.17F}, 0.40},   // fill
};
constexpr Vector3 kRim{0.5774, 0.5774, -0.5774};
constexpr Light kRimLight{0.30F, 0.32F, 0.36F};
constexpr Light kSky{0.17F, 0.18F, 0.20F};
constexpr Light kGround{0.060F, 0.052F, 0.048F};

/// From the table of the standard (IEC 61966-2-1).
double decode(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// The light at which each sRGB value begins to be the nearest.
std::array<float, 256> makeBounds() {
    std::array<float, 256> bounds{};
    for (std::size_t i = 1; i < bounds.size(); ++i)
        bounds[i] = static_cast<float>(decode((static_cast<double>(i) - 0.5) / 255));
    return bounds;
}

std::array<float, 256> makeLinear() {
    std::array<float, 256> linear{};
    for (std::size_t i = 0; i < linear.size(); ++i)
        linear[i] = static_cast<float>(decode(static_cast<double>(i) / 255));
    return linear;
}

}  // namespace

float linearOf(std::uint8_t value) {
    static const std::array<float, 256> linear = makeLinear();
    return linear[value];
}

std::uint8_t srgbOf(float light) {
    static const std::array<float, 256> bounds = makeBounds();
    const auto above = std::upper_bound(bounds.begin() + 1, bounds.end(), light);
    return static_cast<std::uint8_t>(above - bounds.begin() - 1);
}

Light lit(const Vector3& normal, const Light& surface) {
    const auto up = static_cast<float>(0.5 + 0.5 * normal[1]);
    const double grazing = 1 - std::clamp(normal[2], 0.0, 1.0);
    const auto rim = static_cast<float>(grazing * grazing * std::max(dot(normal, kRim) + 0.3, 0.0));
    Light sum{};
    for (std::size_t k = 0; k < 3; ++k)
        sum[k] = kGround[k] + (kSky[k] - kGround[k]) * up + kRimLight[k] * rim;
    for (const Lamp& lamp : kLamps) {
        const double reach = (dot(normal, lamp.direction) + lamp.wrap) / (1 + lamp.wrap);
        const auto strength = static_cast<float>(std::max(reach, 0.0));
        for (std::size_t k = 0; k < 3; ++k)
            sum[k] += lamp.light[k] * strength;
    }
    for (std::size_t k = 0; k < 3; ++k)
        sum[k] *= surface[k];
    return sum;
}

}  // namespace korva
