// SPDX-License-Identifier: MIT
//
// Definitions that the .kvm reader and writer share besides the header.
#pragma once

#include <cstddef>
#include <cstdint>

namespace korvalite {

/// A vertex on disk: `cost` is not stored.
struct KvmVertex {
    float x = 0;
    float y = 0;
    float z = 0;
    std::int32_t partner = 0;
};
static_assert(sizeof(KvmVertex) == 16);

/// The number of vertices in the conversion buffer.
inline constexpr std::size_t kKvmVerticesAtOnce = 4096;

}  // namespace korvalite
