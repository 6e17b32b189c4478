// SPDX-License-Identifier: MIT
//
// What shells need to complete the program's commands, options and values.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace korva {

[[nodiscard]] std::string bashCompletion(const CLI::App& app);
[[nodiscard]] std::string zshCompletion(const CLI::App& app);
[[nodiscard]] std::string fishCompletion(const CLI::App& app);

}  // namespace korva
