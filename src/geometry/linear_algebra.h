// SPDX-License-Identifier: MIT
//
// Small vectors and matrices: normalisation, rotations as quaternions, products and inverses.
//
// Matrices are row-major: element (r, c) is m[3 * r + c] in a 3x3 matrix and m[4 * r + c] in a 4x4
// matrix. Points are row vectors, so the translation of a 4x4 matrix is its last row. Angles are in
// radians. Nothing here allocates, and every function may run on any thread.
#pragma once

#include "geometry/matrix_inverse.h"
#include "geometry/vec3.h"

namespace korvalite::core {

struct Quaternion {
    float w = 1.0F;
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
};

/// out = v / length; leaves `out` unchanged if the length is exactly 0.
void normalize3f(FloatVec3& out, const FloatVec3& v);

/// Divides by the length, which is computed in double, and returns it. Leaves a vector of length 0
/// unchanged and returns 0.
double normalize3fInPlace(FloatVec3& v);

/// Divides by the length and returns it. Leaves a vector shorter than 1e-24 unchanged and returns
/// 1.
double normalize3d(DoubleVec3& v);

/// In 0..pi; 0 if either vector is zero.
[[nodiscard]] double angleBetween(const FloatVec3& a, const FloatVec3& b);

/// out = b . a: with row vectors b acts first. `out` may be one of the operands.
void multiply3(double out[9], const double a[9], const double b[9]);

/// The identity if the axis is shorter than 1e-7.
void axisAngleToQuaternion(Quaternion& q, const FloatVec3& axis, double angle);

/// A 4x4 rotation without translation. Does not normalise `q`.
void quaternionToMatrix(float m[16], const Quaternion& q);

}  // namespace korvalite::core
