// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_file.h"
#include "korva/files/number_type.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace korva {

/// The number that means a type in a file. glTF has neither Int32 nor Float64.
[[nodiscard]] constexpr std::uint32_t gltfCodeOf(NumberType type) {
    return 5120 + static_cast<std::uint32_t>(type);
}

/// Rows of numbers in a buffer, in range of it.
struct GltfRows {
    const char* bytes = nullptr;  // null: all are 0
    std::size_t stride = 0;
    std::size_t count = 0;
    std::size_t columns = 0;
    NumberType type = NumberType::Float32;
    bool isNormalised = false;
};

/// An accessor: rows, some of which may have other values in a second place.
struct GltfAccessor {
    std::string place;  // for messages
    GltfRows rows;
    GltfRows changed;  // indices, ascending and below rows.count
    GltfRows changes;  // the values of these rows
};

/// Throws korvalite::Error(CannotRead) if anything is out of range.
[[nodiscard]] GltfAccessor openGltfAccessor(GltfFile& file, std::uint64_t index);

/// Reads some rows as floats. Normalised types become 0 to 1, or -1 to 1.
void readGltfFloats(const GltfAccessor& accessor, std::size_t begin, std::size_t count, float* to);

/// Reads some rows of an accessor with one column of a whole type that is not negative.
void readGltfIndices(const GltfAccessor& accessor, std::size_t begin, std::size_t count,
                     std::uint32_t* to);

}  // namespace korva
