// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_file.h"
#include "korva/files/number_type.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace korva {

/// The "componentType" in a file. glTF has neither Int32 nor Float64.
[[nodiscard]] constexpr std::uint32_t gltfCodeOf(NumberType type) {
    return 5120 + static_cast<std::uint32_t>(type);
}

/// Rows of numbers, all within one buffer.
struct GltfRows {
    const char* bytes = nullptr;  // null if all numbers are 0
    std::size_t stride = 0;
    std::size_t count = 0;
    std::size_t columns = 0;
    NumberType type = NumberType::Float32;
    bool isNormalised = false;
};

/// An accessor. If it is sparse, `changes` has new values for some of its rows.
struct GltfAccessor {
    std::string place;  // for messages
    GltfRows rows;
    GltfRows changed;  // the indices of these rows, ascending and below rows.count
    GltfRows changes;  // their values
};

/// Throws korvalite::Error(CannotRead) if anything is out of range.
[[nodiscard]] GltfAccessor openGltfAccessor(GltfFile& file, std::uint64_t index);

/// Reads `count` rows as floats. Normalised integers are scaled to 0 to 1, or -1 to 1 if signed.
void readGltfFloats(const GltfAccessor& accessor, std::size_t begin, std::size_t count, float* to);

/// Reads `count` rows of an accessor with one column of unsigned integers.
void readGltfIndices(const GltfAccessor& accessor, std::size_t begin, std::size_t count,
                     std::uint32_t* to);

}  // namespace korva
