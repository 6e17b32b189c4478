// SPDX-License-Identifier: MIT
#include "shell/target_count.h"

#include "base/numeric.h"

namespace korvalite {

std::int32_t targetVertexCount(const BatchSettings& settings, std::uint32_t vertexCount) {
    if (settings.DecimationTargetPourcent == kNoPercent) return settings.DecimationTargetNum;
    // Computed in single precision, which affects the result.
    const float count = static_cast<float>(vertexCount);
    const float target = count * (settings.DecimationTargetPourcent / 100.0F);
    return truncateToInt32(double{target});
}

}  // namespace korvalite
