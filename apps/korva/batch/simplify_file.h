// SPDX-License-Identifier: MIT
#pragma once

#include "korva/batch/batch_run.h"
#include "korva/batch/work_list.h"
#include "korva/report_text.h"

#include <functional>

namespace korva {

/// Called with how much is done, from 0 to 1. Returns false to cancel.
using FractionMonitor = std::function<bool(double fraction)>;

/// Reads, simplifies and writes one mesh, and makes the folder of the output if it is missing.
/// Throws what these throw, and Error(Cancelled).
[[nodiscard]] Outcome simplifyFile(const WorkItem& item, const BatchOptions& options,
                                   const FractionMonitor& monitor);

}  // namespace korva
