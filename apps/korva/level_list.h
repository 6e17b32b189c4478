// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

#include <string_view>
#include <vector>

namespace korva {

/// Reads targets separated by commas, "50%,25%,10%", and sorts them from fine to coarse. All must
/// have the same unit. Throws Error(BadOption) with a sentence.
[[nodiscard]] std::vector<korvalite::Target> parseLevels(std::string_view text);

/// `count` levels, each with half the vertices of the one before.
[[nodiscard]] std::vector<korvalite::Target> halvedLevels(int count);

}  // namespace korva
