// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

#include <forward_list>
#include <string>

namespace korvalite {

/// One line, "   - NAME", for each entry whose input has the same path as that of an earlier one,
/// letter case ignored. Empty if there is none.
std::string duplicateInputLines(const std::forward_list<BatchEntry>& entries);

}  // namespace korvalite
