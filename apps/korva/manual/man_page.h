// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace korva {

/// The manual page of the program or of one of its commands, for man(7).
[[nodiscard]] std::string manPage(const CLI::App& command);

/// The name of that page without its section: korva-simplify.
[[nodiscard]] std::string manPageName(const CLI::App& command);

/// Escapes text for a manual page, so that nothing in it is a request or an escape sequence.
[[nodiscard]] std::string roffText(const std::string& text);

}  // namespace korva
