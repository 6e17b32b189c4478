// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

#include <cstdint>

namespace korvalite {

/// The vertex count that an entry asks for, of a mesh with `vertexCount` vertex records: the
/// percentage if one is given, else the number.
std::int32_t targetVertexCount(const BatchSettings& settings, std::uint32_t vertexCount);

}  // namespace korvalite
