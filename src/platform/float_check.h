// SPDX-License-Identifier: MIT
//
// Compile-time checks of what the code assumes about numbers. Output files must be identical byte
// for byte across compilers and systems, so a build that breaks one of these must fail.
#pragma once

#include <bit>
#include <cfloat>
#include <climits>
#include <cstdint>
#include <limits>

namespace korvalite::core::platform {

static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559,
              "floating point must be IEEE 754");
static_assert(sizeof(float) == 4 && std::numeric_limits<float>::digits == 24);
static_assert(sizeof(double) == 8 && std::numeric_limits<double>::digits == 53);
static_assert(FLT_MAX == 3.4028235e38f, "the mark of a vertex that cannot collapse");

static_assert(FLT_EVAL_METHOD == 0,
              "float expressions must be evaluated as float: on 32-bit x86 use -mfpmath=sse");
#ifdef __FAST_MATH__
#error "results depend on the order of arithmetic: build without -ffast-math"
#endif

static_assert(std::endian::native == std::endian::little,
              "numbers are copied to and from little-endian files");
static_assert(CHAR_BIT == 8 && sizeof(int) == 4 && sizeof(std::int64_t) == 8);
static_assert(sizeof(void*) == 8, "meshes of tens of millions of triangles need 64-bit addresses");

}  // namespace korvalite::core::platform
