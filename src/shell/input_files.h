// SPDX-License-Identifier: MIT
//
// The files that entries read.
#pragma once

#include "formats/file_formats.h"
#include "shell/job_config.h"

#include <forward_list>
#include <string>

namespace korvalite::core {

/// One line, "   - NAME", for each entry with the same input path as an earlier entry, ignoring
/// case. Empty if there is none.
std::string duplicateInputLines(const std::forward_list<BatchEntry>& entries);

/// Reads the entry's input into a fresh `pm`, of a progressive mesh only what the target needs, and
/// applies the entry's settings to it, even if the load fails. Returns what was loaded; None if the
/// load failed.
FileContent LoadInputInProgMesh(const BatchSettings& settings, ProgressiveMesh& pm);

}  // namespace korvalite::core
