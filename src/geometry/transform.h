// SPDX-License-Identifier: MIT
//
// A 4x4 map of points in single precision that remembers what kind of map it is.
#pragma once

#include "geometry/vec3.h"

#include <cstdint>

namespace korvalite::core {

/// What is known about a Transform's matrix.
enum TransformKind : std::int32_t {
    TRANSFORM_IDENTITY = 0,
    TRANSFORM_TRANSLATION = 1,
    TRANSFORM_ROTATION = 2,  // with at most a translation
    TRANSFORM_AFFINE = 4,
    TRANSFORM_GENERAL = 6,
};

/// Row-major; points are row vectors, p' = p . M, so the translation is in m[12], m[13], m[14].
/// Constructed as the identity.
struct Transform {
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    std::int32_t kind = TRANSFORM_IDENTITY;

    void setIdentity();

    /// Takes any matrix: the kind is affine if the last column is that of an affine map, else
    /// general.
    void setElements(const float elements[16]);

    /// Applies the scale after the current map. A kind below 5 becomes affine.
    void scale(const FloatVec3& s);

    /// Replaces the map by the scale about `point`.
    void scaleAbout(const FloatVec3& s, const FloatVec3& point);

    /// Replaces the map by a rotation about the origin; the angle is in radians.
    void rotationFromAxisAngle(const FloatVec3& axis, double angle);

    /// The shortest rotation that turns `from` into the direction of `to`. If both already point
    /// the same way, the matrix is left unchanged.
    /// REQUIRES: the matrix is the identity.
    void rotationBetween(const FloatVec3& from, const FloatVec3& to);

    /// Replaces the map by one that turns `from` into the direction of `to` about `pivot` and moves
    /// `pivot` to `offset`.
    void rotationBetweenAbout(const FloatVec3& from, const FloatVec3& to, const FloatVec3& pivot,
                              const FloatVec3& offset);
};

/// out = b . a: with row vectors b acts first. `out` may be one of the operands.
void multiply4(float out[16], const float a[16], const float b[16]);

/// False, with `out` untouched, if `transform` has no inverse. `out` may be `transform`.
[[nodiscard]] bool invertTransform(Transform& out, const Transform& transform);

/// out = p . M divided by its fourth component, computed in double; the origin if that component is
/// 0. `out` may be `p`.
void transformPoint(FloatVec3& out, const Transform& transform, const FloatVec3& p);

}  // namespace korvalite::core
