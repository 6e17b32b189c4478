// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace korva {

/// Gathers colours as RGBA bytes. They range from 0 to 1 until a value is above 1; then all are
/// taken to range from 0 to 255.
class OffColors {
public:
    void reserve(std::size_t count) { bytes_.reserve(4 * count); }

    /// Three or four channels, the same number for each colour.
    void add(const float* channels, std::size_t count);

    [[nodiscard]] std::vector<std::uint8_t> take() { return std::move(bytes_); }
    /// Channels that were below 0, above 255 or not a number.
    [[nodiscard]] std::uint64_t outOfRange() const { return outOfRange_; }

private:
    void changeToBytes(std::size_t channels);

    std::vector<std::uint8_t> bytes_;
    float scale_ = 255;
    std::uint64_t outOfRange_ = 0;
};

}  // namespace korva
