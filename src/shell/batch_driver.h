// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

namespace korvalite::core {

/// Works through the entries of a job in the order of its list, each with its own mesh: loads,
/// decimates, saves, and deletes the input if the entry says so. If an entry fails, shows a message
/// box and continues with the next. If two inputs have the same name, only shows a message box.
/// A stop of the whole batch (see ProgressChannel) takes effect before the next entry.
void PerformAllBatch(const JobConfig& job);

}  // namespace korvalite::core
