// SPDX-License-Identifier: MIT
//
// Renumbers arrays in place: new[map[i]] = old[i]. Follows the cycles of the map instead of copying
// the data, because a mesh may fill most of the memory; only the map itself is extra.
#pragma once

#include "base/bit_array.h"
#include "base/indexed_array.h"
#include "mesh/dmesh.h"

#include <cstdint>
#include <span>

namespace korvalite::core {

/// The new index of each item. REQUIRES: a permutation. The routines mark moved items by the
/// bitwise complement of their entries and restore the map before they return.
using IndexMap = IndexedArray<std::int32_t>;

/// Three words per item of the map: the corners of a triangle.
void PermuteTriples(IndexedArray<std::uint32_t>& words, IndexMap& map);
/// Makes a copy, which is small for bits.
void PermuteBits(BitArray& bits, IndexMap& map);
void PermuteVertexRecords(VertexRecords& records, IndexMap& map);
void PermuteWords(IndexedArray<std::uint32_t>& words, IndexMap& map);
void PermuteBytes(IndexedArray<std::uint8_t>& bytes, IndexMap& map);

}  // namespace korvalite::core
