// SPDX-License-Identifier: MIT
#include "geometry/transform.h"

#include "geometry/linear_algebra.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvalite::core {

namespace {

constexpr double kParallelSquared = 1e-7;
constexpr double kShortestPerpendicular = 1e-7;
constexpr int kFirstKindThatScaleKeeps = 5;

// COMPAT: rounded to float, then passed to sine and cosine as a double; results depend on it.
constexpr double kQuarterTurn = static_cast<double>(1.57079637F);

void markScaledOrMoved(Transform& transform) {
    if (transform.kind < kFirstKindThatScaleKeeps) transform.kind = TRANSFORM_AFFINE;
}

FloatVec3 translation(const Transform& transform) {
    return {transform.m[12], transform.m[13], transform.m[14]};
}

void setTranslation(Transform& transform, const FloatVec3& t) {
    transform.m[12] = t.x;
    transform.m[13] = t.y;
    transform.m[14] = t.z;
}

FloatVec3 negated(const FloatVec3& v) {
    return {-v.x, -v.y, -v.z};
}

/// v times the 3x3 block, without the translation.
FloatVec3 turned(const Transform& transform, const FloatVec3& v) {
    const float* m = transform.m;
    return {v.x * m[0] + v.y * m[4] + v.z * m[8], v.x * m[1] + v.y * m[5] + v.z * m[9],
            v.x * m[2] + v.y * m[6] + v.z * m[10]};
}

/// Crosses v with the axis farthest from its direction, so the result is zero only if v is.
FloatVec3 perpendicular(const FloatVec3& v) {
    const float x = std::fabs(v.x);
    const float y = std::fabs(v.y);
    const float z = std::fabs(v.z);
    if (x <= y && x <= z) return cross(v, {1, 0, 0});
    if (y <= z) return cross(v, {0, 1, 0});
    return cross(v, {0, 0, 1});
}

Quaternion halfTurnAbout(const FloatVec3& axis) {
    const double length = static_cast<double>(std::sqrt(dot(axis, axis)));
    if (length < kShortestPerpendicular) return {1, 0, 0, 0};
    const DoubleVec3 wide = toDouble(axis);
    const double s = std::sin(kQuarterTurn) / length;
    return {static_cast<float>(std::cos(kQuarterTurn)), static_cast<float>(s * wide.x),
            static_cast<float>(s * wide.y), static_cast<float>(s * wide.z)};
}

}  // namespace

void Transform::setIdentity() {
    *this = Transform{};
}

void Transform::setElements(const float elements[16]) {
    std::copy_n(elements, 16, m);
    const bool affine = m[3] == 0.0F && m[7] == 0.0F && m[11] == 0.0F && m[15] == 1.0F;
    kind = affine ? TRANSFORM_AFFINE : TRANSFORM_GENERAL;
}

void Transform::scale(const FloatVec3& s) {
    for (int row = 0; row < 4; ++row) {
        m[4 * row] *= s.x;
        m[4 * row + 1] *= s.y;
        m[4 * row + 2] *= s.z;
    }
    markScaledOrMoved(*this);
}

void Transform::scaleAbout(const FloatVec3& s, const FloatVec3& point) {
    setIdentity();
    setTranslation(*this, negated(point));
    kind = TRANSFORM_TRANSLATION;
    scale(s);
    setTranslation(*this, translation(*this) + point);
    markScaledOrMoved(*this);
}

void Transform::rotationFromAxisAngle(const FloatVec3& axis, double angle) {
    Quaternion q;
    axisAngleToQuaternion(q, axis, angle);
    quaternionToMatrix(m, q);
    kind = TRANSFORM_ROTATION;
}

void Transform::rotationBetween(const FloatVec3& from, const FloatVec3& to) {
    const FloatVec3 axis = cross(from, to);
    const double angle = angleBetween(from, to);
    const bool parallel = static_cast<double>(dot(axis, axis)) < kParallelSquared;
    if (!parallel) {
        rotationFromAxisAngle(axis, angle);
        return;
    }
    const bool opposite = angle > std::numbers::pi / 2;
    if (!opposite) return;
    quaternionToMatrix(m, halfTurnAbout(perpendicular(from)));
    kind = TRANSFORM_ROTATION;
}

void Transform::rotationBetweenAbout(const FloatVec3& from, const FloatVec3& to,
                                     const FloatVec3& pivot, const FloatVec3& offset) {
    setIdentity();
    rotationBetween(from, to);
    setTranslation(*this, negated(turned(*this, pivot)) + offset);
    kind = TRANSFORM_ROTATION;
}

void multiply4(float out[16], const float a[16], const float b[16]) {
    float product[16];
    for (int r = 0; r < 4; ++r) {
        const float* row = b + 4 * r;
        for (int c = 0; c < 4; ++c) {
            product[4 * r + c] =
                row[0] * a[c] + row[1] * a[4 + c] + row[2] * a[8 + c] + row[3] * a[12 + c];
        }
    }
    std::copy_n(product, 16, out);
}

bool invertTransform(Transform& out, const Transform& transform) {
    if (transform.kind != TRANSFORM_TRANSLATION && transform.kind != TRANSFORM_ROTATION) {
        float elements[16];
        if (!invert4f(elements, transform.m)) return false;
        out.setElements(elements);
        return true;
    }
    const Transform source = transform;
    out.setIdentity();
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c)
            out.m[4 * r + c] = source.m[4 * c + r];
    }
    setTranslation(out, negated(turned(out, translation(source))));
    out.kind = source.kind;
    return true;
}

void transformPoint(FloatVec3& out, const Transform& transform, const FloatVec3& p) {
    const DoubleVec3 v = toDouble(p);
    const float* m = transform.m;
    const auto column = [&](int k) {
        return v.x * static_cast<double>(m[k]) + v.y * static_cast<double>(m[4 + k]) +
               v.z * static_cast<double>(m[8 + k]) + static_cast<double>(m[12 + k]);
    };
    const double w = column(3);
    if (w == 0.0) {
        out = {0, 0, 0};
        return;
    }
    out = toFloat({column(0) / w, column(1) / w, column(2) / w});
}

}  // namespace korvalite::core
