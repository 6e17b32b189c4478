// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace korva {

/// Indented. Bytes that are not UTF-8, as a path may have, are replaced.
[[nodiscard]] std::string jsonText(const nlohmann::json& value);

}  // namespace korva
