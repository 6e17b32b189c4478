// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>

namespace korva {

/// About how much memory it takes to read, simplify and write a file, in bytes, on the high side.
/// The header of a PLY or binary STL file has the counts; for others the size of the file decides.
/// Reads no more than a header. Never fails: a file that cannot be read needs next to nothing.
[[nodiscard]] std::uint64_t memoryNeedOf(const std::filesystem::path& path, int threads);

}  // namespace korva
