// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstdint>

namespace korva {

static_assert(std::endian::native == std::endian::little, "GLB is little-endian");

inline constexpr std::uint32_t kGlbMagic = 0x46546C67;  // "glTF"
inline constexpr std::uint32_t kGlbVersion = 2;
inline constexpr std::uint32_t kGlbJsonChunk = 0x4E4F534A;    // "JSON"
inline constexpr std::uint32_t kGlbBinaryChunk = 0x004E4942;  // "BIN"

/// Follows the magic number. The length is that of the whole file.
struct GlbHeader {
    std::uint32_t version;
    std::uint32_t length;
};
inline constexpr std::uint32_t kGlbHeaderBytes = 12;

struct GlbChunk {
    std::uint32_t length;
    std::uint32_t kind;
};

}  // namespace korva
