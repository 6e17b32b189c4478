// SPDX-License-Identifier: MIT
//
// A measurement for people and for programs.
#pragma once

#include <korvalite/korvalite.h>
#include <nlohmann/json_fwd.hpp>

#include <string>

namespace korva {

/// A table of several lines.
[[nodiscard]] std::string tableOf(const korvalite::Measurement& measurement);

/// docs/korva.md describes the object.
[[nodiscard]] nlohmann::json jsonOf(const korvalite::Measurement& measurement);

}  // namespace korva
