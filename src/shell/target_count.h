// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

#include <cstdint>

namespace korvalite {

/// The target vertex count of an entry for a mesh with `vertexCount` vertex records: from the
/// percentage if it is set, else the number.
std::int32_t targetVertexCount(const BatchSettings& settings, std::uint32_t vertexCount);

}  // namespace korvalite
