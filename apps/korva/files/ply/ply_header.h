// SPDX-License-Identifier: MIT
//
// The header of a PLY file: which elements follow, how many of each, and what their rows hold.
#pragma once

#include "korva/files/number_type.h"
#include "korva/io/input_file.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korva {

enum class PlyEncoding { Ascii, LittleEndian, BigEndian };

using PlyType = NumberType;

[[nodiscard]] constexpr bool isFloat(PlyType type) {
    return type == PlyType::Float32 || type == PlyType::Float64;
}

struct PlyProperty {
    std::string name;
    PlyType type = PlyType::Int8;
    bool isList = false;
    PlyType countType = PlyType::Int8;  // of a list
};

struct PlyElement {
    std::string name;
    std::uint64_t count = 0;
    std::vector<PlyProperty> properties;
};

struct PlyHeader {
    PlyEncoding encoding = PlyEncoding::Ascii;
    std::vector<PlyElement> elements;
    std::uint64_t lineCount = 0;
    std::uint64_t textureCount = 0;  // comments that name a texture
};

/// Reads up to the end of the header. Throws korvalite::Error(CannotRead) if something is wrong
/// with it, or if the file is too short for the rows it announces.
[[nodiscard]] PlyHeader readPlyHeader(InputFile& file);

/// The fewest bytes that a row of the element can take; 0 if it has no properties.
[[nodiscard]] std::uint64_t fewestRowBytes(const PlyElement& element, PlyEncoding encoding);

}  // namespace korva
