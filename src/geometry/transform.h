// SPDX-License-Identifier: MIT
//
// A 4x4 map of points in single precision that remembers what kind of map it is.
#pragma once

#include "geometry/vec3.h"

#include <cstdint>

namespace korvalite {

/// What is known of a Transform's matrix.
enum TransformKind : std::int32_t {
    TRANSFORM_IDENTITY = 0,
    TRANSFORM_TRANSLATION = 1,
    TRANSFORM_ROTATION = 2,  // with at most a translation
    TRANSFORM_AFFINE = 4,
    TRANSFORM_GENERAL = 6,
};

/// Row-major; points are row vectors, p' = p . M, so the translation stands in m[12], m[13], m[14].
/// Constructed as the identity.
struct Transform {
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    std::int32_t kind = TRANSFORM_IDENTITY;

    void setIdentity();

    /// Takes a matrix of which nothing is known: affine if its last column says so, else general.
    void setElements(const float elements[16]);

    /// Scales after the map. A kind below 5 becomes affine.
    void scale(const FloatVec3& s);

    /// From scratch: the scale that leaves `point` where it is.
    void scaleAbout(const FloatVec3& s, const FloatVec3& point);

    /// From scratch: the rotation about the origin, by radians.
    void rotationFromAxisAngle(const FloatVec3& axis, double angle);

    /// The shortest rotation that turns `from` into the direction of `to`. Vectors that already
    /// point the same way leave the matrix as it is.
    /// REQUIRES: the matrix is the identity.
    void rotationBetween(const FloatVec3& from, const FloatVec3& to);

    /// From scratch: turns `from` into the direction of `to` about `pivot`, which goes to `offset`.
    void rotationBetweenAbout(const FloatVec3& from, const FloatVec3& to, const FloatVec3& pivot,
                              const FloatVec3& offset);
};

/// out = b . a: with row vectors b acts first. `out` may be one of the operands.
void multiply4(float out[16], const float a[16], const float b[16]);

/// False, with `out` untouched, if `transform` has no inverse. `out` may be `transform`.
[[nodiscard]] bool invertTransform(Transform& out, const Transform& transform);

/// out = p . M over its fourth component, worked in double; the origin if that component is 0.
/// `out` may be `p`.
void transformPoint(FloatVec3& out, const Transform& transform, const FloatVec3& p);

}  // namespace korvalite
