// SPDX-License-Identifier: MIT
//
// The quadric error of M. Garland and P. Heckbert, "Surface Simplification Using Quadric Error
// Metrics" (1997): the symmetric form (n.x + d)^2 of a plane with normal n = (a, b, c).
#pragma once

#include "geometry/vec3.h"

#include <array>
#include <cstddef>

namespace korvalite::core {

/// Ten coefficients in the order a2, ab, ac, b2, bc, c2, ad, bd, cd, d2.
template <typename Real>
struct PlaneQuadric {
    std::array<Real, 10> q{};

    PlaneQuadric& operator+=(const PlaneQuadric& other) {
        for (std::size_t i = 0; i < q.size(); ++i)
            q[i] += other.q[i];
        return *this;
    }
    PlaneQuadric& operator*=(Real factor) {
        for (Real& coefficient : q)
            coefficient *= factor;
        return *this;
    }
    friend PlaneQuadric operator+(PlaneQuadric left, const PlaneQuadric& right) {
        return left += right;
    }
};

using Quadric3D = PlaneQuadric<double>;

/// The storage form, half the size; its rounding is part of the result.
using Quadric3DFloat = PlaneQuadric<float>;

inline Quadric3D widened(const Quadric3DFloat& narrow) {
    Quadric3D wide;
    for (std::size_t i = 0; i < wide.q.size(); ++i)
        wide.q[i] = static_cast<double>(narrow.q[i]);
    return wide;
}

inline Quadric3DFloat narrowed(const Quadric3D& wide) {
    Quadric3DFloat narrow;
    for (std::size_t i = 0; i < wide.q.size(); ++i)
        narrow.q[i] = static_cast<float>(wide.q[i]);
    return narrow;
}

/// The quadric of the plane with normal (a, b, c) and offset d.
template <typename Real>
PlaneQuadric<Real> planeQuadric(Real a, Real b, Real c, Real d) {
    return {{a * a, a * b, a * c, b * b, b * c, c * c, a * d, b * d, c * d, d * d}};
}

/// The error at a point.
// COMPAT: the order of summation; the last bit of a cost can decide what collapses first.
inline double evaluateQuadric(const Quadric3D& quadric, const DoubleVec3& p) {
    const auto& q = quadric.q;
    return q[0] * p.x * p.x + 2 * q[1] * p.x * p.y + 2 * q[2] * p.x * p.z + q[3] * p.y * p.y +
           2 * q[4] * p.y * p.z + q[5] * p.z * p.z + 2 * q[6] * p.x + 2 * q[7] * p.y +
           2 * q[8] * p.z + q[9];
}

}  // namespace korvalite::core
