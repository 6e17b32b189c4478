// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korva {

/// Rows of sRGB pixels from the top: red, green, blue and, with 4 channels, alpha, by which the
/// colours are not multiplied.
struct Image {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t channels = 3;
    std::vector<std::uint8_t> pixels;

    [[nodiscard]] std::uint8_t* at(std::size_t x, std::size_t y) {
        return &pixels[(y * width + x) * channels];
    }
    [[nodiscard]] const std::uint8_t* at(std::size_t x, std::size_t y) const {
        return &pixels[(y * width + x) * channels];
    }
};

}  // namespace korva
