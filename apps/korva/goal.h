// SPDX-License-Identifier: MIT
//
// What a user asks a simplification for: a size, or a largest error.
#pragma once

#include <korvalite/korvalite.h>

#include <optional>
#include <string_view>

namespace korva {

/// How far a result may be from its input.
struct ErrorLimit {
    enum class Unit { Coordinates, Millimetres, PercentOfDiagonal };
    double value = 0;
    Unit unit = Unit::Coordinates;

    /// The limit in the unit of the coordinates. `millimetre` is the length of one in that unit.
    [[nodiscard]] double forMesh(double diagonal, double millimetre) const;
};

/// A target, or a limit in its place.
struct Goal {
    korvalite::Target target = korvalite::Target::percent(0);
    std::optional<ErrorLimit> limit;
};

/// Reads a target: "10%" of the vertices, "50000v" vertices, "100000t" triangles. Blanks and
/// underscores are ignored, and k and m mean thousand and million: "50kv". Throws Error(BadOption)
/// with a sentence that says what to write instead.
[[nodiscard]] korvalite::Target parseTarget(std::string_view text);

/// Reads a limit: "0.2" or "0.2u" in the unit of the coordinates, "0.2mm", or "0.1%" of the
/// diagonal. Throws like parseTarget.
[[nodiscard]] ErrorLimit parseErrorLimit(std::string_view text);

/// Reads a target, or a limit that ends in "u" or "mm". Throws like parseTarget.
[[nodiscard]] Goal parseGoal(std::string_view text);

}  // namespace korva
