// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korva {

/// OBJ does not say which of the two a file has. It is Bytes if any channel is 2 or more; values
/// between 1 and 2 also come from files that overshoot the range of 0 to 1.
enum class ObjColorScale {
    Unit,   // 0 to 1
    Bytes,  // 0 to 255
};

/// Gathers the colours of vertices.
class ObjColors {
public:
    explicit ObjColors(ObjColorScale scale) : scale_(scale) {}

    struct Oddities {
        bool isClamped = false;    // a channel was out of range or NaN
        bool hasFraction = false;  // a channel was between 0 and 1
    };

    /// `channels` are red, green, blue and maybe alpha. Vertices come in ascending order; those
    /// left out become white.
    Oddities add(std::size_t vertex, std::span<const float> channels);

    /// The bytes of all vertices, or none if no vertex has a colour. Leaves nothing here.
    [[nodiscard]] std::vector<std::uint8_t> take(std::size_t vertexCount);

    /// Whether the scale is Unit, but a channel is so far above 1 that it must be Bytes.
    [[nodiscard]] bool isScaleWrong() const { return isScaleWrong_; }

    [[nodiscard]] ObjColorScale scale() const { return scale_; }

    /// The vertices that have a colour of their own.
    [[nodiscard]] std::size_t count() const { return count_; }

private:
    ObjColorScale scale_;
    bool isScaleWrong_ = false;
    std::size_t count_ = 0;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace korva
