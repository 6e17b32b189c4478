// SPDX-License-Identifier: MIT
#include "metric/metric_rules.h"

namespace korvalite {

const char* borderModeText(std::int32_t value) {
    switch (value) {
    case BORDER_MODE_NONE: return "BORDER_MODE_NONE";
    case BORDERMODE_PROTECT: return "BORDERMODE_PROTECT";
    case BORDERMODE_FREEZE: return "BORDERMODE_FREEZE";
    default: return "BORDER_MODE_UNKNOWN";
    }
}

}  // namespace korvalite
