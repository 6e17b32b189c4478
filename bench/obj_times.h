// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite::bench {

/// Writes a synthetic mesh of about so many triangles as OBJ, with and without UVs, by saveObj and
/// by one fprintf for each line, in turns, into new files in the system's folder for such. Prints a
/// line of NAME=VALUE for each mesh: the bytes of the file, the best wall seconds of both, and
/// those of a copy of the finished file. False if a file failed or the two differ in a byte.
bool printObjTimes(std::int32_t triangles);

}  // namespace korvalite::bench
