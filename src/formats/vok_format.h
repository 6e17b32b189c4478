// SPDX-License-Identifier: MIT
//
// The host's binary interchange file, extension .Vok: a 32-byte header, then contiguous blocks,
// each with a 16-byte header and its payload. All integers are little-endian, floats are IEEE
// single precision. docs/file-formats.md has every byte.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace korvalite::core {

static_assert(std::endian::native == std::endian::little,
              "arrays go to and from little-endian files as they stand in memory");

inline constexpr std::array<char, 4> kVokMagic{'V', 'o', 'k', 'b'};
inline constexpr std::uint32_t kVokFileHeaderBytes = 32;
inline constexpr std::uint32_t kVokBlockHeaderBytes = 16;

/// As fourth vertex index, marks a face that is a triangle.
inline constexpr std::uint32_t kVokNoFourthVertex = 0xFFFFFFFF;

enum VokTag : std::uint32_t {
    Vok_TAG_END = 0,
    Vok_TAG_FLAGS_GROUP = 5000,
    Vok_TAG_FLAGS = 5001,
    Vok_TAG_POINT_GROUP = 10000,
    Vok_TAG_POINT_LIST = 10001,  // 3 floats
    Vok_TAG_POINT_LIST_DOUBLE = 10002,
    Vok_TAG_FACE_GROUP = 20000,
    Vok_TAG_FACE4_LIST = 20001,  // 4 vertex indices
    Vok_TAG_FACE_OTHER = 20002,
    Vok_TAG_FACE3_LIST = 20003,  // 3 vertex indices
    Vok_TAG_UV_GROUP = 25000,    // a marker: no payload, whatever its Size field says
    Vok_TAG_UV4_LIST = 25001,    // 4 x (u, v), per face of the preceding Vok_TAG_FACE4_LIST
    Vok_TAG_UV3_LIST = 25002,    // 3 x (u, v), per triangle
    Vok_TAG_MASK_GROUP = 30000,  // a marker
    Vok_TAG_MASK_LIST = 30001,   // 1 byte per vertex
    Vok_TAG_MASK16_LIST = 30002,
    Vok_TAG_COLOR_GROUP = 35000,  // a marker
    Vok_TAG_MRGB_LIST = 35001,    // bytes B, G, R, M per vertex
};

struct VokFileHeader {
    std::array<char, 4> magic = kVokMagic;
    std::array<std::uint8_t, 28> reserved{};
};

struct VokBlockHeader {
    std::uint32_t Tag = Vok_TAG_END;
    std::uint32_t Size = kVokBlockHeaderBytes;  // of the whole block, including these 16 bytes
    std::uint32_t Count = 0;                    // elements in the payload
    std::uint32_t reserved = 0;
};

}  // namespace korvalite::core
