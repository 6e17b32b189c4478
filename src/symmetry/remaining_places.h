// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

namespace korvalite::core {

/// A set that starts with all places 0..n-1 and only shrinks. It finds the nearest remaining place
/// at or below another in nearly constant time, however many have been removed in between.
class RemainingPlaces {
public:
    explicit RemainingPlaces(std::size_t n) : below_(n + 1) {
        std::iota(below_.begin(), below_.end(), 0U);
    }

    /// The highest remaining place not above `place`, or -1. REQUIRES: -1 <= place < n.
    [[nodiscard]] std::int32_t atOrBelow(std::int32_t place) {
        auto slot = static_cast<std::uint32_t>(place + 1);
        while (below_[slot] != slot) {
            below_[slot] = below_[below_[slot]];
            slot = below_[slot];
        }
        return static_cast<std::int32_t>(slot) - 1;
    }

    /// REQUIRES: 0 <= place < n.
    void remove(std::int32_t place) {
        below_[static_cast<std::size_t>(place) + 1] = static_cast<std::uint32_t>(place);
    }

private:
    // Slot place + 1 refers to itself if the place remains, else to a lower slot; slot 0 is the
    // end.
    std::vector<std::uint32_t> below_;
};

}  // namespace korvalite::core
