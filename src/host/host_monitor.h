// SPDX-License-Identifier: MIT
#pragma once

#include "base/run_monitor.h"

namespace korvalite::core {

/// Passes everything but the steps on to the progress channel of this process. Main thread, except
/// as RunMonitor says.
RunMonitor& hostMonitor();

}  // namespace korvalite::core
