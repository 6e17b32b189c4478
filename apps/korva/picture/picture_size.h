// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace korva {

struct PictureSize {
    std::size_t width;
    std::size_t height;
};

/// Reads "1600x900", with both numbers from 16 to 16384. Throws Error(BadOption).
[[nodiscard]] PictureSize parsePictureSize(const std::string& text);

}  // namespace korva
