// SPDX-License-Identifier: MIT
#include "metric/color_quadric.h"

#include "geometry/linear_algebra.h"

#include <algorithm>

namespace korvalite::core {

namespace {

/// a . b; each element is summed from left to right.
Matrix3 product(const Matrix3& a, const Matrix3& b) {
    Matrix3 result;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            result[3 * r + c] = a[3 * r] * b[c] + a[3 * r + 1] * b[3 + c] + a[3 * r + 2] * b[6 + c];
        }
    }
    return result;
}

Matrix3 transposed(const Matrix3& m) {
    return {m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]};
}

}  // namespace

ColorQuadric::ColorQuadric(const Quadric3D& plane)
    : C(1.0), b1{plane.q[6], plane.q[7], plane.q[8]}, c(plane.q[9]) {
    std::copy_n(plane.q.begin(), A.size(), A.begin());
}

ColorQuadric& ColorQuadric::operator+=(const ColorQuadric& other) {
    for (std::size_t i = 0; i < A.size(); ++i)
        A[i] += other.A[i];
    for (std::size_t i = 0; i < G.size(); ++i)
        G[i] += other.G[i];
    C += other.C;
    for (std::size_t i = 0; i < 3; ++i)
        b1[i] += other.b1[i];
    for (std::size_t i = 0; i < 3; ++i)
        b2[i] += other.b2[i];
    c += other.c;
    return *this;
}

ColorQuadric& ColorQuadric::operator*=(double factor) {
    for (double& value : A)
        value *= factor;
    for (double& value : G)
        value *= factor;
    C *= factor;
    for (double& value : b1)
        value *= factor;
    for (double& value : b2)
        value *= factor;
    c *= factor;
    return *this;
}

bool ColorQuadric::InvertBlocks(Matrix3& P, Matrix3& R, Matrix3& T) const {
    const Matrix3 a{A[0], A[1], A[2], A[1], A[3], A[4], A[2], A[4], A[5]};
    Matrix3 inverseA;
    if (!invert3(inverseA.data(), a.data())) return false;

    const Matrix3 gTransposed = G;  // G is column-major, so read row-major it is G'
    const Matrix3 B = product(inverseA, transposed(gTransposed));
    Matrix3 S = product(gTransposed, B);
    for (std::size_t i = 0; i < S.size(); ++i)
        S[i] = (i % 4 == 0 ? C : 0.0) - S[i];
    if (!invert3(T.data(), S.data())) return false;

    const Matrix3 BT = product(B, T);
    for (std::size_t i = 0; i < R.size(); ++i)
        R[i] = -BT[i];
    P = product(product(BT, gTransposed), inverseA);
    for (std::size_t i = 0; i < P.size(); ++i)
        P[i] = inverseA[i] + P[i];
    return true;
}

double ColorQuadric::Evaluate(const DoubleVec3& x, const DoubleVec3& s) const {
    const DoubleVec3 Ax{A[0] * x.x + A[1] * x.y + A[2] * x.z, A[1] * x.x + A[3] * x.y + A[4] * x.z,
                        A[2] * x.x + A[4] * x.y + A[5] * x.z};
    const DoubleVec3 Gs{G[0] * s.x + G[3] * s.y + G[6] * s.z, G[1] * s.x + G[4] * s.y + G[7] * s.z,
                        G[2] * s.x + G[5] * s.y + G[8] * s.z};
    const DoubleVec3 linear1{b1[0], b1[1], b1[2]};
    const DoubleVec3 linear2{b2[0], b2[1], b2[2]};
    return dot(x, Ax) + 2 * dot(x, Gs) + C * dot(s, s) + 2 * (dot(linear1, x) + dot(linear2, s)) +
           c;
}

}  // namespace korvalite::core
