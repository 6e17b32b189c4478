// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace korvalite::bench {

/// Writes a synthetic mesh of about so many triangles as OBJ, with and without UVs, by saveObj and
/// by one fprintf for each line, in turns, and prints a table of the seconds and their ratios.
/// False if a file failed or the two differ in a byte.
bool printObjTimes(std::int32_t triangles);

}  // namespace korvalite::bench
