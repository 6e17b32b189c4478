// SPDX-License-Identifier: MIT
#pragma once

// Three-component vectors in single and double precision, with the few operations needed here. The
// two types never mix implicitly: every change of precision is an explicit toDouble or toFloat,
// because results depend on where a sum is rounded.

#include <cmath>

namespace korvalite::core {

struct FloatVec3 {
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
};

struct DoubleVec3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

constexpr FloatVec3 operator+(const FloatVec3& a, const FloatVec3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

constexpr DoubleVec3 operator+(const DoubleVec3& a, const DoubleVec3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

constexpr FloatVec3 operator-(const FloatVec3& a, const FloatVec3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

constexpr DoubleVec3 operator-(const DoubleVec3& a, const DoubleVec3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline bool isFinite(const FloatVec3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

// Products are summed in the order x, y, z.
constexpr float dot(const FloatVec3& a, const FloatVec3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

constexpr double dot(const DoubleVec3& a, const DoubleVec3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

constexpr FloatVec3 cross(const FloatVec3& a, const FloatVec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

constexpr DoubleVec3 cross(const DoubleVec3& a, const DoubleVec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

constexpr DoubleVec3 toDouble(const FloatVec3& v) {
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

constexpr FloatVec3 toFloat(const DoubleVec3& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

// Axis 0, 1, 2 is x, y, z; any other axis reads (or writes) z.
constexpr float component(const FloatVec3& v, int axis) {
    return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

constexpr double component(const DoubleVec3& v, int axis) {
    return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

constexpr void setComponent(FloatVec3& v, int axis, float value) {
    (axis == 0 ? v.x : axis == 1 ? v.y : v.z) = value;
}

constexpr void setComponent(DoubleVec3& v, int axis, double value) {
    (axis == 0 ? v.x : axis == 1 ? v.y : v.z) = value;
}

}  // namespace korvalite::core
