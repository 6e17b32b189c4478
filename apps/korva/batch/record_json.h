// SPDX-License-Identifier: MIT
#pragma once

#include "korva/batch/summary.h"

#include <nlohmann/json.hpp>

namespace korva {

/// docs/korva.md describes the object.
[[nodiscard]] nlohmann::json jsonOf(const MeshRecord& record);

/// Throws nlohmann::json::exception if anything is missing or wrong.
[[nodiscard]] MeshRecord recordOf(const nlohmann::json& json);

}  // namespace korva
