// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>
#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <string>

namespace korva {

/// Samples on each surface. The bound holds for any number; this many bring it near the truth.
inline constexpr std::uint64_t kErrorSamples = 100'000;

/// How far results are from their inputs, in the unit of the coordinates, in both directions.
struct MeasuredError {
    double largest = 0;   // of all samples
    double atMost = 0;    // no point is farther than this
    double rms = 0;       // over the area
    double diagonal = 0;  // of the largest input
    double area = 0;      // of all surfaces, for the mean

    /// Adds a mesh that has been measured.
    void add(const korvalite::Measurement& measurement);
};

/// "No point is farther than 0.012 from the input (0.4% of its diagonal); the RMS is 0.002."
[[nodiscard]] std::string sentenceOf(const MeasuredError& error);

/// docs/korva.md describes the object.
[[nodiscard]] nlohmann::json jsonOf(const MeasuredError& error);

}  // namespace korva
