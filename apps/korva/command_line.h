// SPDX-License-Identifier: MIT
#pragma once

#include "korva/exit_code.h"

#include <string>
#include <vector>

namespace korva {

/// Runs the program with `words`, what comes after its name. Results go to standard output,
/// failures to standard error. Throws nothing.
[[nodiscard]] ExitCode runCommandLine(const std::vector<std::string>& words);

}  // namespace korva
