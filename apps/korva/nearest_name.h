// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>

namespace korva {

/// The name with the fewest edits from `word`, the first among equals; empty if even that is too
/// far off to be what was meant.
[[nodiscard]] std::string nearestName(const std::string& word, std::span<const std::string> names);

}  // namespace korva
