// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite::core::bench {

/// Writes a synthetic mesh of about `triangles` triangles as OBJ, with and without UVs, alternating
/// between saveObj and one fprintf per line, into new files in the system's temporary folder.
/// Prints a line of NAME=VALUE for each mesh: the size of the file in bytes, the best wall seconds
/// of both, and those of a copy of the finished file. False if a file cannot be read or written or
/// the two differ.
bool printObjTimes(std::int32_t triangles);

}  // namespace korvalite::core::bench
