// SPDX-License-Identifier: MIT
//
// Binary STL: 80 bytes of any kind, the number of facets in 32 bits, and the facets. Little-endian.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace korva {

static_assert(std::endian::native == std::endian::little, "facets are copied as they are");

inline constexpr std::size_t kStlNoteBytes = 80;
inline constexpr std::size_t kStlHeaderBytes = 84;
inline constexpr std::size_t kStlFacetBytes = 50;  // without the padding of the struct

struct StlFacet {
    float normal[3];
    float corners[9];
    std::uint16_t attributes;
};

inline StlFacet unpackStlFacet(const char* bytes) {
    StlFacet facet;
    std::memcpy(&facet, bytes, kStlFacetBytes);
    return facet;
}

inline void packStlFacet(const StlFacet& facet, char* bytes) {
    std::memcpy(bytes, &facet, kStlFacetBytes);
}

}  // namespace korva
