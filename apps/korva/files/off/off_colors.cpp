// SPDX-License-Identifier: MIT
#include "korva/files/off/off_colors.h"

#include <algorithm>

namespace korva {

void OffColors::add(const float* channels, std::size_t count) {
    if (scale_ > 1 && std::any_of(channels, channels + count, [](float c) { return c > 1; }))
        changeToBytes(count);
    for (std::size_t i = 0; i < 4; ++i) {
        if (i >= count) {
            bytes_.push_back(255);
            continue;
        }
        const float value = channels[i] * scale_;
        const bool isInRange = value >= 0 && value <= 255;
        if (!isInRange) ++outOfRange_;
        const float clamped = isInRange ? value : value > 255 ? 255.0F : 0.0F;
        bytes_.push_back(static_cast<std::uint8_t>(clamped + 0.5F));
    }
}

/// What was taken for 0 to 1 so far was from 0 to 255, where it rounds to 0 or 1.
void OffColors::changeToBytes(std::size_t channels) {
    scale_ = 1;
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        if (i % 4 < channels) bytes_[i] = bytes_[i] >= 128 ? 1 : 0;
    }
}

}  // namespace korva
