// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

namespace korvalite {

/// Works through the entries of a job in the order of its list, each on a mesh of its own: load,
/// decimate, save, delete the input if the entry says so. An entry that fails shows a message box,
/// and the next one runs. If two inputs have the same name, a box says so and no entry runs.
/// A stop of the whole batch (see ProgressChannel) takes effect before the next entry.
void PerformAllBatch(const JobConfig& job);

}  // namespace korvalite
