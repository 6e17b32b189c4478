// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

#include <forward_list>
#include <string>

namespace korvalite {

/// One line, "   - NAME", for each entry with the same input path as an earlier entry, ignoring
/// case. Empty if there is none.
std::string duplicateInputLines(const std::forward_list<BatchEntry>& entries);

}  // namespace korvalite
