// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <random>

namespace korvalite::core::test {

// Numbers that a seed reproduces on every platform, unlike the distributions of the library.
class Random {
public:
    explicit Random(std::uint32_t seed) : engine_(seed) {}

    std::uint32_t word() { return static_cast<std::uint32_t>(engine_()); }
    // From 0 to limit - 1.
    std::uint32_t below(std::uint32_t limit) { return word() % limit; }
    // From low to high, inclusive.
    std::int32_t between(std::int32_t low, std::int32_t high) {
        return low + static_cast<std::int32_t>(below(static_cast<std::uint32_t>(high - low + 1)));
    }
    // True once in `times` on average.
    bool onceIn(std::uint32_t times) { return below(times) == 0; }
    // From 0 up to but not including 1.
    float unit() { return static_cast<float>(word() >> 8U) / 16777216.0F; }
    // From -most to most.
    float around(float most) { return most * (2.0F * unit() - 1.0F); }

private:
    std::mt19937 engine_;
};

}  // namespace korvalite::core::test
