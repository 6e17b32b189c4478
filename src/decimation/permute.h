// SPDX-License-Identifier: MIT
//
// Renumbering in place: new[map[i]] = old[i], by following the cycles of the map, with no copy of
// the data. A mesh may fill most of the memory, so that only the map itself is extra.
#pragma once

#include "mesh/bit_array.h"
#include "mesh/dmesh.h"

#include <cstdint>
#include <span>
#include <vector>

namespace korvalite {

/// For each item its new index. REQUIRES: a permutation. It serves as the mark of what has been
/// moved, by bitwise complement, and is as before when a routine returns.
using IndexMap = std::vector<std::int32_t>;

/// Three words per item of the map: a triangle's corners.
void PermuteTriples(std::vector<std::uint32_t>& words, IndexMap& map);
/// By way of a copy: of bits it is small.
void PermuteBits(BitArray& bits, IndexMap& map);
void PermuteVertexRecords(VertexRecords& records, IndexMap& map);
void PermuteWords(std::vector<std::uint32_t>& words, IndexMap& map);
void PermuteBytes(std::vector<std::uint8_t>& bytes, IndexMap& map);

}  // namespace korvalite
