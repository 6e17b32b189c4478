// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korva {

/// What an OBJ file can have that a mesh has no place for, or that is changed to fit.
enum class ObjLoss {
    Material,
    Group,
    Smoothing,
    Polyline,
    Point,
    FreeForm,
    UnknownKeyword,
    ShortFace,
    Weight,
    SurplusNumber,
    UVDepth,
    UnusedUV,
    CornerWithoutUV,
    VertexWithoutColor,
    ClampedColor,
    DarkColor,
};

inline constexpr std::size_t kObjLosses = static_cast<std::size_t>(ObjLoss::DarkColor) + 1;

/// Counts what is lost and where it was first.
class ObjLosses {
public:
    void add(ObjLoss loss, std::uint64_t line, std::uint64_t count = 1);

    /// A sentence for each loss.
    [[nodiscard]] std::vector<std::string> notes() const;

private:
    std::array<std::uint64_t, kObjLosses> counts_{};
    std::array<std::uint64_t, kObjLosses> firstLines_{};  // 0 if it concerns the whole file
};

}  // namespace korva
