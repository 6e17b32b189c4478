// SPDX-License-Identifier: MIT
#include "geometry/linear_algebra.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvalite::core {

namespace {

constexpr double kShortestAxis = 1e-7;
constexpr double kShortestNormalizable = 1e-24;

float length(const FloatVec3& v) {
    return std::sqrt(dot(v, v));
}

}  // namespace

void normalize3f(FloatVec3& out, const FloatVec3& v) {
    const float len = length(v);
    if (len == 0.0F) return;
    out = {v.x / len, v.y / len, v.z / len};
}

double normalize3fInPlace(FloatVec3& v) {
    const DoubleVec3 wide = toDouble(v);
    const double len = std::sqrt(dot(wide, wide));
    if (len == 0.0) return 0.0;
    v = toFloat({wide.x / len, wide.y / len, wide.z / len});
    return len;
}

double normalize3d(DoubleVec3& v) {
    const double len = std::sqrt(dot(v, v));
    if (-kShortestNormalizable < len && len < kShortestNormalizable) return 1.0;
    v = {v.x / len, v.y / len, v.z / len};
    return len;
}

double angleBetween(const FloatVec3& a, const FloatVec3& b) {
    const double lengths = static_cast<double>(length(a)) * static_cast<double>(length(b));
    if (lengths == 0.0) return 0.0;
    const double cosine = static_cast<double>(dot(a, b)) / lengths;
    // Rounding can push the cosine of parallel vectors outside the domain of acos.
    if (cosine <= -1.0) return std::numbers::pi;
    if (cosine >= 1.0) return 0.0;
    return std::acos(cosine);
}

void multiply3(double out[9], const double a[9], const double b[9]) {
    double product[9];
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            product[3 * r + c] =
                b[3 * r] * a[c] + b[3 * r + 1] * a[3 + c] + b[3 * r + 2] * a[6 + c];
        }
    }
    std::copy_n(product, 9, out);
}

bool invert4f(float out[16], const float in[16]) {
    double wide[16];
    std::transform(in, in + 16, wide, [](float e) { return static_cast<double>(e); });
    if (!invert4d(wide, wide)) return false;
    std::transform(wide, wide + 16, out, [](double e) { return static_cast<float>(e); });
    return true;
}

void axisAngleToQuaternion(Quaternion& q, const FloatVec3& axis, double angle) {
    const double len = static_cast<double>(length(axis));
    if (len < kShortestAxis) {
        q = {1.0F, 0.0F, 0.0F, 0.0F};
        return;
    }
    const double half = angle * 0.5;
    const double s = std::sin(half) / len;
    const DoubleVec3 wide = toDouble(axis);
    q = {static_cast<float>(std::cos(half)), static_cast<float>(s * wide.x),
         static_cast<float>(s * wide.y), static_cast<float>(s * wide.z)};
}

void quaternionToMatrix(float m[16], const Quaternion& q) {
    // COMPAT: products are rounded to float, then summed in double; results depend on it.
    const auto product = [](float a, float b) { return static_cast<double>(a * b); };
    const auto diagonal = [&](float e) {
        return static_cast<float>((product(e, e) + product(q.w, q.w)) * 2.0 - 1.0);
    };
    const auto sum = [](double a, double b) { return static_cast<float>((a + b) * 2.0); };
    const double yx = product(q.y, q.x);
    const double zx = product(q.z, q.x);
    const double zy = product(q.z, q.y);
    const double xw = product(q.x, q.w);
    const double yw = product(q.y, q.w);
    const double zw = product(q.z, q.w);

    const float rotation[16] = {diagonal(q.x), sum(yx, zw),   sum(zx, -yw),  0.0F,  //
                                sum(yx, -zw),  diagonal(q.y), sum(zy, xw),   0.0F,  //
                                sum(zx, yw),   sum(zy, -xw),  diagonal(q.z), 0.0F,  //
                                0.0F,          0.0F,          0.0F,          1.0F};
    std::copy_n(rotation, 16, m);
}

}  // namespace korvalite::core
