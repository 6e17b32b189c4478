// SPDX-License-Identifier: MIT
//
// The result of a simplification, for people and for programs.
#pragma once

#include "korva/console.h"
#include "korva/measured_error.h"

#include <korvalite/korvalite.h>
#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korva {

struct Outcome {
    std::filesystem::path input;
    std::filesystem::path output;
    std::uint64_t vertices = 0;  // of the output
    std::uint64_t triangles = 0;
    bool countsTriangles = false;  // whether the target does
    std::string limit;             // as the user wrote it; empty if there is a target
    korvalite::Report report;
    std::optional<MeasuredError> error;  // if it was measured
    std::vector<std::string> notes;
    double seconds = 0;
};

/// One line, and another with the reason if the target was missed.
[[nodiscard]] std::string sentenceOf(const Outcome& outcome);

/// Says the notes, and prints the outcome as a sentence or as JSON.
void show(const Console& console, const Outcome& outcome);

/// docs/korva.md describes the object.
[[nodiscard]] nlohmann::json jsonOf(const Outcome& outcome);

}  // namespace korva
